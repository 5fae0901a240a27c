#pragma once

#include <QtCore/QSize>
#include <QtGui/QImage>

#include <string>
#include <vector>

class QOpenGLFramebufferObject;

namespace ko::imagefx::benchmarks
{

// What the benchmarks share: sizes, pictures and the framebuffer state that the renderer sets.
// The GL functions need a current context.

// How much of everything to do.
struct Plan {
    std::vector<QSize> sizes; // 4:3
    bool smoke = false;       // everything once
    int rounds(const QSize &size) const;
    int firstUseRounds() const;
};

// 1, 4 and 12 megapixels; in a smoke run one tiny picture.
Plan makePlan(bool smoke);

// "1.0 MP (1152 x 864)"
std::string label(const QSize &size);

// Gradients under noise, so that no shortcut for flat colour applies; a quarter of it translucent
// and premultiplied, none of it fully transparent. The same picture every time.
QImage makePicture(const QSize &size, QImage::Format format);

// Puts RGBA8888 bytes into the texture of a framebuffer of the same size.
void fill(unsigned texture, const QImage &picture);
// The RGBA bytes of the framebuffer that is bound.
QImage readBound(const QSize &size);

// Viewport, blending and culling as the library's renderer sets them before its passes.
void prepareState(const QSize &size);

// False, and a failure under that name, when GL has reported an error since the last call.
bool checkGl(const std::string &where);

} // namespace ko::imagefx::benchmarks
