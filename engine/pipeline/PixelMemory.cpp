#include "engine/pipeline/PixelMemory.h"

#include <cstdlib>
#include <new>

#include <sys/mman.h>

namespace ko::imagefx::engine
{

namespace
{

constexpr size_t cacheLine = 64;
constexpr size_t largePage = size_t(1) << 21U;

} // namespace

// The rest that fills no large page stays in small ones, so that no more becomes real than there
// is.
PixelMemory::PixelMemory(size_t pixels)
{
    const size_t bytes = pixels * sizeof(uint32_t);
    const size_t largePages = bytes / largePage * largePage;
    const size_t alignment = largePages > 0 ? largePage : cacheLine;
    const size_t whole = (bytes + alignment - 1) / alignment * alignment;
    m_pixels.reset(static_cast<uint32_t *>(std::aligned_alloc(alignment, whole)));
    if (!m_pixels) {
        throw std::bad_alloc();
    }
    // Where the system refuses, small pages do as well.
    madvise(m_pixels.get(), largePages, MADV_HUGEPAGE);
}

void PixelMemory::Free::operator()(uint32_t *pixels) const
{
    std::free(pixels);
}

} // namespace ko::imagefx::engine
