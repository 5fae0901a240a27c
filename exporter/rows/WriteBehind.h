#pragma once

#include "engine/EffectEngine.h"
#include "exporter/rows/RowQueue.h"

#include <cstddef>
#include <future>

namespace ko::exporter
{

// Passes rows on to another sink, which takes them on a thread of its own, some bands behind.
class WriteBehind : public imagefx::RowSink
{
public:
    // `sink` must outlive it, and is used by no one else. Throws std::system_error where no thread
    // can be started.
    WriteBehind(imagefx::RowSink *sink, std::size_t rowBytes);
    ~WriteBehind() override;

    // False when the sink took no more.
    bool write(const uchar *row) override;
    // Passes on what is left and returns when the sink is used no more. Throws what the sink threw.
    void finish();

private:
    void writeAll(imagefx::RowSink *sink);
    void handOver();

    const std::size_t m_rowBytes;
    RowQueue m_queue;
    // The band at hand and how many rows are in it.
    uchar *m_band = nullptr;
    int m_rows = 0;
    std::future<void> m_writing;
};

} // namespace ko::exporter
