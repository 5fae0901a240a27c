#include "exporter/rows/ReadAhead.h"

#include <algorithm>
#include <cstring>

namespace ko::exporter
{

ReadAhead::ReadAhead(imagefx::RowSource *source, std::size_t rowBytes, int height)
    : m_rowBytes(rowBytes),
      m_queue(rowBytes),
      m_reading(std::async(std::launch::async, [this, source, height] { readAll(source, height); }))
{
}

ReadAhead::~ReadAhead()
{
    m_queue.stop();
}

void ReadAhead::readAll(imagefx::RowSource *source, int height)
{
    struct Finish {
        ~Finish() { queue.finish(); }
        RowQueue &queue;
    } const finish{m_queue};
    for (int y = 0; y < height; y += m_queue.bandRows()) {
        const int rows = std::min(m_queue.bandRows(), height - y);
        uchar *const band = m_queue.bandToFill();
        if (band == nullptr || !source->read(band, std::ptrdiff_t(m_rowBytes), rows)) {
            return;
        }
        m_queue.filled(rows);
    }
}

bool ReadAhead::read(uchar *rows, std::ptrdiff_t stride, int count)
{
    for (int i = 0; i < count; ++i) {
        if (m_rows == 0) {
            m_band = m_queue.bandToTake(&m_rows);
            if (m_band == nullptr) {
                return false;
            }
        }
        std::memcpy(rows + stride * i, m_band, m_rowBytes);
        m_band += m_rowBytes;
        if (--m_rows == 0) {
            m_queue.taken();
        }
    }
    return true;
}

void ReadAhead::stop()
{
    m_queue.stop();
    m_reading.get();
}

} // namespace ko::exporter
