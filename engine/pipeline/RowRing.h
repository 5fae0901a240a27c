#pragma once

#include "engine/kernels/Kernels.h"

#include <algorithm>
#include <cstddef>

namespace ko::imagefx::engine
{

// The rows of a picture of which the latest few are kept, each with room for what kernels write
// behind it.
class RowRing
{
public:
    static size_t pixels(int width, int rows) { return strideFor(width) * size_t(rows); }

    // Room for pixels() at `pixels`, which begin at a cache line and are not the ring's own.
    RowRing(uint32_t *pixels, int width, int rows)
        : m_rows(rows), m_stride(strideFor(width)), m_pixels(pixels)
    {
    }

    uint32_t *row(int y) { return m_pixels + m_stride * size_t(y % m_rows); }
    const uint32_t *row(int y) const { return m_pixels + m_stride * size_t(y % m_rows); }
    std::ptrdiff_t strideInBytes() const { return std::ptrdiff_t(m_stride * sizeof(uint32_t)); }
    // Of the rows from `y` on, up to `count`, how many follow each other in memory.
    int contiguous(int y, int count) const { return std::min(count, m_rows - y % m_rows); }

private:
    // Rows begin at cache lines. Rows that are a multiple of a page apart would push each other out
    // of the nearest cache.
    static size_t strideFor(int width)
    {
        constexpr size_t line = 16;
        constexpr size_t page = 1024;
        const size_t stride = (size_t(width) + rowSlack + line - 1) / line * line;
        return stride % page == 0 ? stride + line : stride;
    }

    int m_rows;
    size_t m_stride;
    uint32_t *m_pixels;
};

} // namespace ko::imagefx::engine
