#pragma once

#include <QtCore/qglobal.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <vector>

namespace ko::exporter
{

// Hands bands of rows from one thread to another, a few at most, so that neither gets far ahead of
// the other.
class RowQueue
{
public:
    explicit RowQueue(std::size_t rowBytes);

    // How many rows a band holds, one behind the other.
    int bandRows() const { return m_bandRows; }

    // The giving thread: waits for room and returns the band to fill; null when nobody takes any
    // more.
    uchar *bandToFill();
    // Hands over what bandToFill() returned, with that many rows in it.
    void filled(int rows);
    // There will be no more.
    void finish();

    // The taking thread: waits for a band and returns it; null when there are no more.
    const uchar *bandToTake(int *rows);
    // Gives back what bandToTake() returned.
    void taken();
    // Takes no more.
    void stop();

private:
    Q_DISABLE_COPY(RowQueue)

    uchar *band(std::size_t number) { return m_bytes.data() + number % bands * m_bandBytes; }

    static constexpr std::size_t bands = 4;

    const int m_bandRows;
    const std::size_t m_bandBytes;
    std::vector<uchar> m_bytes;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    // Of each band that waits to be taken.
    std::deque<int> m_rows;
    std::size_t m_filled = 0;
    std::size_t m_taken = 0;
    bool m_finished = false;
    bool m_stopped = false;
};

} // namespace ko::exporter
