#include "exporter/rows/RowQueue.h"

#include <algorithm>

namespace ko::exporter
{

namespace
{

// As many rows as most JPEG files encode together. A band stays in the cache until it is taken.
constexpr std::size_t mostRows = 16;
constexpr std::size_t largestBand = 1 << 20;

int rowsInBand(std::size_t rowBytes)
{
    return int(
        std::clamp(largestBand / std::max<std::size_t>(rowBytes, 1), std::size_t(1), mostRows));
}

} // namespace

RowQueue::RowQueue(std::size_t rowBytes)
    : m_bandRows(rowsInBand(rowBytes)),
      m_bandBytes(rowBytes * std::size_t(m_bandRows)),
      m_bytes(m_bandBytes * bands)
{
}

uchar *RowQueue::bandToFill()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_stopped || m_filled - m_taken < bands; });
    return m_stopped ? nullptr : band(m_filled);
}

void RowQueue::filled(int rows)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_rows.push_back(rows);
        ++m_filled;
    }
    m_changed.notify_one();
}

void RowQueue::finish()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_finished = true;
    }
    m_changed.notify_one();
}

const uchar *RowQueue::bandToTake(int *rows)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_finished || m_filled > m_taken; });
    if (m_filled == m_taken) {
        return nullptr;
    }
    *rows = m_rows.front();
    return band(m_taken);
}

void RowQueue::taken()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_rows.pop_front();
        ++m_taken;
    }
    m_changed.notify_one();
}

void RowQueue::stop()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stopped = true;
    }
    m_changed.notify_one();
}

} // namespace ko::exporter
