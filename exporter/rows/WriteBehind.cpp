#include "exporter/rows/WriteBehind.h"

#include <cstring>

namespace ko::exporter
{

WriteBehind::WriteBehind(imagefx::RowSink *sink, std::size_t rowBytes)
    : m_rowBytes(rowBytes),
      m_queue(rowBytes),
      m_writing(std::async(std::launch::async, [this, sink] { writeAll(sink); }))
{
}

WriteBehind::~WriteBehind()
{
    m_queue.finish();
}

// Whatever ends it, nobody waits for it any more.
void WriteBehind::writeAll(imagefx::RowSink *sink)
{
    struct Stop {
        ~Stop() { queue.stop(); }
        RowQueue &queue;
    } const stop{m_queue};
    int rows = 0;
    while (const uchar *band = m_queue.bandToTake(&rows)) {
        for (int i = 0; i < rows; ++i) {
            if (!sink->write(band + m_rowBytes * std::size_t(i))) {
                return;
            }
        }
        m_queue.taken();
    }
}

bool WriteBehind::write(const uchar *row)
{
    if (m_band == nullptr) {
        m_band = m_queue.bandToFill();
        if (m_band == nullptr) {
            return false;
        }
    }
    std::memcpy(m_band + m_rowBytes * std::size_t(m_rows), row, m_rowBytes);
    if (++m_rows == m_queue.bandRows()) {
        handOver();
    }
    return true;
}

void WriteBehind::handOver()
{
    if (m_rows > 0) {
        m_queue.filled(m_rows);
    }
    m_band = nullptr;
    m_rows = 0;
}

void WriteBehind::finish()
{
    handOver();
    m_queue.finish();
    m_writing.get();
}

} // namespace ko::exporter
