#include "exporter/JpegRowReader.h"

#include "exporter/JpegErrors.h"

#include <algorithm>
#include <cmath>

namespace ko::exporter
{

namespace
{

// Each scan of a progressive file walks over the whole picture, however few
// bytes it has: a small file could keep the program busy for hours.
constexpr int mostScans = 200;

J_COLOR_SPACE decodedSpace(const jpeg_decompress_struct &info)
{
    if (info.jpeg_color_space == JCS_CMYK || info.jpeg_color_space == JCS_YCCK) {
        return JCS_CMYK;
    }
    return info.jpeg_color_space == JCS_GRAYSCALE ? JCS_GRAYSCALE : JCS_EXT_RGBA;
}

unsigned int reduction(const QSize &stored, const QSize &wanted)
{
    for (const int divisor : {8, 4, 2}) {
        if (wanted.isValid() && stored.width() >= 2 * divisor * wanted.width() &&
            stored.height() >= 2 * divisor * wanted.height()) {
            return unsigned(divisor);
        }
    }
    return 1;
}

} // namespace

// Everything in it that calls libjpeg has no object with a destructor of its own: a jump would pass
// it over.
struct JpegRowReader::Decompressor {
    Decompressor()
    {
        info.err = &errors.manager;
        progress.progress_monitor = [](j_common_ptr common) {
            auto *decompress = reinterpret_cast<j_decompress_ptr>(common);
            if (decompress->input_scan_number > mostScans) {
                JpegErrors *all = JpegErrors::of(common);
                all->message = QStringLiteral("it has more than %1 scans").arg(mostScans);
                std::longjmp(all->jump, 1);
            }
        };
    }
    ~Decompressor() { jpeg_destroy_decompress(&info); }

    bool readHeader(const QByteArray &file, const QSize &wanted)
    {
        if (setjmp(errors.jump) != 0) {
            return false;
        }
        jpeg_create_decompress(&info);
        info.progress = &progress;
        jpeg_mem_src(&info, reinterpret_cast<const unsigned char *>(file.constData()),
                     static_cast<unsigned long>(file.size()));
        jpeg_read_header(&info, TRUE);
        info.out_color_space = decodedSpace(info);
        info.scale_num = 1;
        info.scale_denom = reduction(QSize(int(info.image_width), int(info.image_height)), wanted);
        jpeg_calc_output_dimensions(&info);
        return true;
    }

    bool read(uchar *rows, std::ptrdiff_t stride, int count)
    {
        if (setjmp(errors.jump) != 0) {
            return false;
        }
        if (!started) {
            started = true;
            jpeg_start_decompress(&info);
        }
        const JDIMENSION first = info.output_scanline;
        const JDIMENSION end = first + JDIMENSION(count);
        while (info.output_scanline < end) {
            constexpr int mostRows = 4;
            JSAMPROW lines[mostRows];
            const int wanted = std::min(mostRows, int(end - info.output_scanline));
            for (int i = 0; i < wanted; ++i) {
                lines[i] = rows + stride * (std::ptrdiff_t(info.output_scanline - first) + i);
            }
            jpeg_read_scanlines(&info, lines, JDIMENSION(wanted));
        }
        return true;
    }

    bool finish()
    {
        if (info.output_scanline < info.output_height) {
            return true;
        }
        if (setjmp(errors.jump) != 0) {
            return false;
        }
        jpeg_finish_decompress(&info);
        return true;
    }

    JpegErrors errors;
    jpeg_decompress_struct info{};
    jpeg_progress_mgr progress{};
    bool started = false;
    bool failed = false;

private:
    Q_DISABLE_COPY(Decompressor)
};

JpegRowReader::JpegRowReader(const QByteArray &file, const QSize &wanted)
    : m_jpeg(std::make_unique<Decompressor>()), m_readable(m_jpeg->readHeader(file, wanted))
{
    m_jpeg->failed = !m_readable;
}

JpegRowReader::~JpegRowReader() = default;

QSize JpegRowReader::storedSize() const
{
    return {int(m_jpeg->info.image_width), int(m_jpeg->info.image_height)};
}

QSize JpegRowReader::size() const
{
    return {int(m_jpeg->info.output_width), int(m_jpeg->info.output_height)};
}

bool JpegRowReader::isGray() const
{
    return m_jpeg->info.out_color_space == JCS_GRAYSCALE;
}

bool JpegRowReader::isCmyk() const
{
    return m_jpeg->info.out_color_space == JCS_CMYK;
}

// Adobe's files, which are nearly all, store the amount of white instead of
// that of ink.
bool JpegRowReader::isInvertedCmyk() const
{
    return isCmyk() && m_jpeg->info.saw_Adobe_marker != FALSE;
}

void JpegRowReader::expandGray()
{
    if (isGray()) {
        m_jpeg->info.out_color_space = JCS_EXT_RGBA;
    }
}

bool JpegRowReader::read(uchar *rows, std::ptrdiff_t stride, int count)
{
    m_jpeg->failed = m_jpeg->failed || !m_jpeg->read(rows, stride, count);
    return !m_jpeg->failed;
}

QString JpegRowReader::error()
{
    const JpegErrors &errors = m_jpeg->errors;
    if (m_jpeg->failed || !m_jpeg->finish()) {
        m_jpeg->failed = true;
        return errors.message;
    }
    if (errors.endsEarly) {
        return QStringLiteral("its data ends early");
    }
    return errors.isDamaged ? QStringLiteral("its data is damaged") : QString();
}

QString JpegRowReader::warning() const
{
    return m_jpeg->errors.warning;
}

void JpegRowReader::copyResolution(QImage *image) const
{
    constexpr double inchesPerMeter = 1.0 / 0.0254;
    constexpr double centimetersPerMeter = 100.0;
    const jpeg_decompress_struct &info = m_jpeg->info;
    if (info.density_unit == 1 || info.density_unit == 2) {
        const double factor = info.density_unit == 1 ? inchesPerMeter : centimetersPerMeter;
        image->setDotsPerMeterX(int(std::lround(info.X_density * factor)));
        image->setDotsPerMeterY(int(std::lround(info.Y_density * factor)));
    }
}

} // namespace ko::exporter
