#include "exporter/JpegStream.h"

#include "exporter/JpegRowReader.h"
#include "exporter/JpegRowWriter.h"
#include "exporter/ProcessorRenderer.h"
#include "exporter/rows/ReadAhead.h"
#include "exporter/rows/WriteBehind.h"

#include <optional>
#include <system_error>
#include <vector>

namespace ko::exporter
{

namespace
{

using imagefx::RowSink;
using imagefx::RowSource;

class DecodedRows : public RowSource
{
public:
    explicit DecodedRows(JpegRowReader *reader) : m_reader(*reader) {}
    bool read(uchar *rows, std::ptrdiff_t stride, int count) override
    {
        return m_reader.read(rows, stride, count);
    }

private:
    JpegRowReader &m_reader;
};

class EncodedRows : public RowSink
{
public:
    explicit EncodedRows(JpegRowWriter *writer) : m_writer(*writer) {}
    bool write(const uchar *row) override { return m_writer.write(row); }

private:
    JpegRowWriter &m_writer;
};

bool copyRows(int height, std::size_t rowBytes, RowSource *source, RowSink *sink)
{
    std::vector<uchar> row(rowBytes);
    for (int y = 0; y < height; ++y) {
        if (!source->read(row.data(), std::ptrdiff_t(rowBytes), 1) || !sink->write(row.data())) {
            return false;
        }
    }
    return true;
}

// A limit on threads costs time and nothing else.
template <class Thread, class... Arguments>
void startIfPossible(std::optional<Thread> *thread, Arguments... arguments)
{
    try {
        thread->emplace(arguments...);
    } catch (const std::system_error &) {
        thread->reset();
    }
}

} // namespace

StreamedJpeg streamJpeg(JpegRowReader *reader, const ProcessorRenderer &renderer, int quality)
{
    const QSize size = reader->size();
    const std::size_t rowBytes = std::size_t(size.width()) * (reader->isGray() ? 1 : 4);
    QImage resolution(1, 1, QImage::Format_RGBX8888);
    reader->copyResolution(&resolution);
    StreamedJpeg result;
    JpegRowWriter writer(size, reader->isGray(), resolution, quality, &result.file);
    DecodedRows decoded(reader);
    EncodedRows encoded(&writer);

    std::optional<ReadAhead> ahead;
    std::optional<WriteBehind> behind;
    if (renderer.threads() > 1) {
        startIfPossible(&ahead, &decoded, rowBytes, size.height());
        startIfPossible(&behind, &encoded, rowBytes);
    }
    RowSource *const source = ahead ? static_cast<RowSource *>(&*ahead) : &decoded;
    RowSink *const sink = behind ? static_cast<RowSink *>(&*behind) : &encoded;
    result.drawn = renderer.isIdle() ? copyRows(size.height(), rowBytes, source, sink)
                                     : renderer.draw(size, source, sink);
    if (ahead) {
        ahead->stop();
    }
    if (behind) {
        behind->finish();
    }
    if (result.drawn || writer.hasFailed()) {
        result.error = writer.finish();
    }
    result.drawn = result.drawn && result.error.isEmpty();
    if (!result.drawn) {
        result.file.clear();
    }
    return result;
}

} // namespace ko::exporter
