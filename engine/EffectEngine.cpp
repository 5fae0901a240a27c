#include "engine/EffectEngine.h"

#include "engine/InstructionSets.h"
#include "engine/StackProgram.h"
#include "engine/ThreadPool.h"
#include "engine/pipeline/Pipeline.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace ko::imagefx
{

namespace
{

constexpr int mostThreads = 256;
// Places beyond the end of a row are numbers, too.
constexpr int widest = std::numeric_limits<int>::max() - 65536;

// Copies rows with all threads, some of them at a time.
template <class Copy>
void copyRows(int threads, int count, size_t rowBytes, const Copy &copyRow)
{
    constexpr size_t taskBytes = 65536;
    const int rows = int(taskBytes / std::min(rowBytes, taskBytes));
    engine::runParallel(threads, (count + rows - 1) / rows, [=, &copyRow](int task) {
        const int end = std::min(count, (task + 1) * rows);
        for (int row = task * rows; row < end; ++row) {
            copyRow(row);
        }
    });
}

// The rows of a picture in memory, copied by all threads.
class ImageSource : public RowSource
{
public:
    ImageSource(const QImage &image, int threads) : m_image(image), m_threads(threads) {}

    bool read(uchar *rows, std::ptrdiff_t stride, int count) override
    {
        const size_t bytes = size_t(m_image.width()) * 4;
        copyRows(m_threads, count, bytes, [=](int i) {
            std::memcpy(rows + i * stride, m_image.constScanLine(m_row + i), bytes);
        });
        m_row += count;
        return true;
    }

private:
    const QImage &m_image;
    const int m_threads;
    int m_row = 0;
};

class ImageSink : public engine::BandSink
{
public:
    ImageSink(QImage *image, int threads)
        : m_bits(image->bits()),
          m_bytesPerLine(image->bytesPerLine()),
          m_rowBytes(size_t(image->width()) * 4),
          m_threads(threads)
    {
    }

    bool write(const uchar *rows, std::ptrdiff_t stride, int count) override
    {
        copyRows(m_threads, count, m_rowBytes, [=](int i) {
            std::memcpy(m_bits + std::ptrdiff_t(m_row + i) * m_bytesPerLine, rows + i * stride,
                        m_rowBytes);
        });
        m_row += count;
        return true;
    }

private:
    uchar *const m_bits;
    const std::ptrdiff_t m_bytesPerLine;
    const size_t m_rowBytes;
    const int m_threads;
    int m_row = 0;
};

// Hands a band on row by row.
class SingleRows : public engine::BandSink
{
public:
    explicit SingleRows(RowSink *sink) : m_sink(sink) {}

    bool write(const uchar *rows, std::ptrdiff_t stride, int count) override
    {
        for (int i = 0; i < count; ++i) {
            if (!m_sink->write(rows + i * stride)) {
                return false;
            }
        }
        return true;
    }

private:
    RowSink *const m_sink;
};

} // namespace

class EffectEngine::Private
{
public:
    Private(const QList<ImageEffect *> &effects, const Options &options)
        : program(effects, options.relativeScale, options.globalAlpha, options.settled),
          threads(options.threads > 0 ? options.threads : engine::usableProcessors())
    {
        threads = std::min(threads, mostThreads);
    }

    const engine::StackProgram program;
    int threads;
};

EffectEngine::EffectEngine(const QList<ImageEffect *> &effects, const Options &options)
    : d(std::make_unique<Private>(effects, options))
{
}

EffectEngine::EffectEngine(EffectEngine &&other) noexcept = default;

EffectEngine::~EffectEngine() = default;

QString EffectEngine::unsupported() const
{
    return d->program.unsupported();
}

QImage EffectEngine::render(const QImage &picture) const
{
    if (picture.isNull() || !unsupported().isEmpty()) {
        return {};
    }
    const bool opaque = !picture.hasAlphaChannel();
    const QImage pixels =
        picture.convertToFormat(opaque ? QImage::Format_RGBX8888 : QImage::Format_RGBA8888);
    QImage result(picture.size(),
                  opaque ? QImage::Format_RGBX8888 : QImage::Format_RGBA8888_Premultiplied);
    if (pixels.isNull() || result.isNull()) {
        return {};
    }
    try {
        ImageSource source(pixels, d->threads);
        ImageSink sink(&result, d->threads);
        engine::Pipeline(d->program, picture.size(), opaque, d->threads).run(&source, &sink);
    } catch (const std::bad_alloc &) {
        return {};
    }
    return result;
}

bool EffectEngine::render(const QSize &size, bool opaque, RowSource *source, RowSink *sink) const
{
    if (size.isEmpty() || size.width() > widest || !unsupported().isEmpty()) {
        return false;
    }
    try {
        SingleRows rows(sink);
        return engine::Pipeline(d->program, size, opaque, d->threads).run(source, &rows);
    } catch (const std::bad_alloc &) {
        return false;
    }
}

QString EffectEngine::instructionSet()
{
    return QLatin1String(engine::currentKernels().name);
}

QStringList EffectEngine::instructionSets()
{
    const std::vector<const engine::Kernels *> &usable = engine::usableKernels();
    QStringList names;
    names.reserve(int(usable.size()));
    for (const engine::Kernels *kernels : usable) {
        names.append(QLatin1String(kernels->name));
    }
    return names;
}

bool EffectEngine::setInstructionSet(const QString &name)
{
    return engine::useKernels(name);
}

} // namespace ko::imagefx
