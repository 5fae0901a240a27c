#include "exporter/JpegRowWriter.h"

#include "exporter/JpegErrors.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ko::exporter
{

namespace
{

constexpr int smallestStep = 65536;
// Some bytes less than a QByteArray can count, since it keeps a header beside them.
constexpr int largestFile = std::numeric_limits<int>::max() - 64;

UINT16 dotsPerInch(int dotsPerMeter)
{
    constexpr double metersPerInch = 0.0254;
    return UINT16(std::clamp(std::lround(dotsPerMeter * metersPerInch), 1L, 65535L));
}

} // namespace

struct JpegRowWriter::Compressor {
    explicit Compressor(QByteArray *target) : file(target)
    {
        info.err = &errors.manager;
        info.client_data = this;
        destination.init_destination = [](j_compress_ptr common) { of(common)->offer(0); };
        destination.empty_output_buffer = [](j_compress_ptr common) -> boolean {
            Compressor *self = of(common);
            const int used = self->file->size();
            const int room = grownSize(used);
            if (room == used) {
                self->errors.message = QStringLiteral("the file would be larger than 2 GiB");
                std::longjmp(self->errors.jump, 1);
            }
            self->file->resize(room);
            self->offer(used);
            return TRUE;
        };
        destination.term_destination = [](j_compress_ptr common) {
            QByteArray *whole = of(common)->file;
            whole->resize(whole->size() - int(common->dest->free_in_buffer));
        };
    }
    ~Compressor() { jpeg_destroy_compress(&info); }

    static Compressor *of(j_compress_ptr common)
    {
        return static_cast<Compressor *>(common->client_data);
    }

    // Gives libjpeg the file's bytes behind the first `used`.
    void offer(int used)
    {
        destination.next_output_byte = reinterpret_cast<JOCTET *>(file->data()) + used;
        destination.free_in_buffer = std::size_t(file->size() - used);
    }

    JpegErrors errors;
    jpeg_compress_struct info{};
    jpeg_destination_mgr destination{};
    QByteArray *const file;

private:
    Q_DISABLE_COPY(Compressor)
};

JpegRowWriter::JpegRowWriter(const QSize &size, bool isGray, const QImage &resolution, int quality,
                             QByteArray *file)
    : m_jpeg(std::make_unique<Compressor>(file))
{
    constexpr int pixelsPerByte = 3;
    const qint64 likely = qint64(size.width()) * size.height() / pixelsPerByte;
    file->resize(int(std::min<qint64>(likely, 1 << 28)) + smallestStep);
    m_working = start(size, isGray, resolution, quality);
}

JpegRowWriter::~JpegRowWriter() = default;

int JpegRowWriter::grownSize(int size)
{
    return int(std::min<qint64>(qint64(size) + size / 2 + smallestStep, largestFile));
}

bool JpegRowWriter::start(const QSize &size, bool isGray, const QImage &resolution, int quality)
{
    if (setjmp(m_jpeg->errors.jump) != 0) {
        return false;
    }
    jpeg_compress_struct &info = m_jpeg->info;
    jpeg_create_compress(&info);
    info.client_data = m_jpeg.get(); // jpeg_create_compress() keeps it, but does not say so
    info.dest = &m_jpeg->destination;
    info.image_width = JDIMENSION(size.width());
    info.image_height = JDIMENSION(size.height());
    info.input_components = isGray ? 1 : 4;
    info.in_color_space = isGray ? JCS_GRAYSCALE : JCS_EXT_RGBX;
    jpeg_set_defaults(&info);
    if (resolution.dotsPerMeterX() > 0 && resolution.dotsPerMeterY() > 0) {
        info.density_unit = 1;
        info.X_density = dotsPerInch(resolution.dotsPerMeterX());
        info.Y_density = dotsPerInch(resolution.dotsPerMeterY());
    }
    jpeg_set_quality(&info, quality, TRUE);
    jpeg_start_compress(&info, TRUE);
    return true;
}

bool JpegRowWriter::write(const uchar *row)
{
    if (!m_working) {
        return false;
    }
    if (setjmp(m_jpeg->errors.jump) != 0) {
        m_working = false;
        return false;
    }
    auto *line = const_cast<JSAMPLE *>(row);
    jpeg_write_scanlines(&m_jpeg->info, &line, 1);
    return true;
}

QString JpegRowWriter::finish()
{
    if (setjmp(m_jpeg->errors.jump) != 0) {
        m_working = false;
    } else if (m_working) {
        jpeg_finish_compress(&m_jpeg->info);
        return {};
    }
    m_jpeg->file->clear();
    return m_jpeg->errors.message;
}

} // namespace ko::exporter
