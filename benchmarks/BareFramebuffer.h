#pragma once

namespace ko::imagefx::benchmarks
{

// A texture with a framebuffer around it, made with GL calls alone. Needs a current GL context for
// everything, its destruction included.
class BareFramebuffer
{
public:
    // As `width` x `height` texels of `internalFormat`, with filters and wrapping copied from the
    // texture `like`, so that sampling from either costs the same.
    BareFramebuffer(int width, int height, unsigned internalFormat, unsigned like);
    ~BareFramebuffer();
    BareFramebuffer(const BareFramebuffer &) = delete;
    BareFramebuffer &operator=(const BareFramebuffer &) = delete;

    unsigned texture() const { return m_texture; }
    void bind() const;

private:
    unsigned m_texture = 0;
    unsigned m_framebuffer = 0;
};

} // namespace ko::imagefx::benchmarks
