#pragma once

#include "tests/support/OffscreenGl.h"

#include <QtCore/QList>
#include <QtCore/QRectF>
#include <QtCore/QSize>

namespace ko::imagefx
{
class ImageEffect;
}

namespace ko::imagefx::test
{

// For comparePictures() of a window with the offscreen renderer's picture. Both run the same
// shaders on the same driver, but Qt Quick draws the item's texture once more into the window, and
// a driver may round that copy to either of the nearest two levels.
constexpr double windowTolerance = 1.0;

// What an item shows of a picture.
struct Showing {
    QSize size;                         // of the framebuffer
    QRectF rect = {0.0, 0.0, 1.0, 1.0}; // of the picture, normalised
    float renderScale = 1.0F;
    float alpha = 1.0F;
};

// What the offscreen renderer makes of pictures, in a context of its own that no window shares
// with. It skips the effects that an item skips in its first frame.
class OffscreenReference
{
public:
    // The picture is filtered linearly; the bytes of RGBA8888 count as premultiplied.
    QImage draw(const QList<ImageEffect *> &effects, const QImage &picture, const Showing &showing);
    // All of the picture, as large as it is.
    QImage draw(const QList<ImageEffect *> &effects, const QImage &picture)
    {
        return draw(effects, picture, {picture.size()});
    }

private:
    OffscreenGl m_gl;
};

} // namespace ko::imagefx::test
