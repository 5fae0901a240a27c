#pragma once

#include "engine/EffectEngine.h"
#include "exporter/rows/RowQueue.h"

#include <cstddef>
#include <future>

namespace ko::exporter
{

// The rows of another source, which a thread of its own reads some bands ahead.
class ReadAhead : public imagefx::RowSource
{
public:
    // `source` must outlive it, and is used by no one else. Throws std::system_error where no
    // thread can be started.
    ReadAhead(imagefx::RowSource *source, std::size_t rowBytes, int height);
    ~ReadAhead() override;

    bool read(uchar *rows, std::ptrdiff_t stride, int count) override;
    // Returns when the source is used no more. Throws what the source threw.
    void stop();

private:
    void readAll(imagefx::RowSource *source, int height);

    const std::size_t m_rowBytes;
    RowQueue m_queue;
    // What is left of the band at hand.
    const uchar *m_band = nullptr;
    int m_rows = 0;
    std::future<void> m_reading;
};

} // namespace ko::exporter
