#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace ko::imagefx::engine
{

// Memory for pixels, in large pages where the system gives some: columns go through rows that are
// pages apart, and a processor remembers the addresses of few pages.
class PixelMemory
{
public:
    // Throws std::bad_alloc.
    explicit PixelMemory(size_t pixels);

    uint32_t *data() { return m_pixels.get(); }

private:
    struct Free {
        void operator()(uint32_t *pixels) const;
    };

    std::unique_ptr<uint32_t, Free> m_pixels;
};

} // namespace ko::imagefx::engine
