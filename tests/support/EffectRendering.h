#pragma once

#include <QtCore/QList>
#include <QtGui/QImage>

namespace ko::imagefx
{
class ImageEffect;
}

namespace ko::imagefx::test
{

// Pictures to send through effects. All are RGBA8888, premultiplied bytes, scan line 0 at the
// bottom once on the GPU, and the same in every run.

// Neither square nor a power of two, and not a multiple of 4 wide, so that every row of three-byte
// pixels needs padding.
constexpr QSize testPictureSize(61, 47);

// Every kind of opaque colour: greys, the corners of the colour cube, ramps between them,
// neighbours of grey, and pseudo-random colours.
QImage opaquePicture(const QSize &size = testPictureSize);
// Every alpha from 0 to 255, with all kinds of colours up to it.
QImage translucentPicture(const QSize &size = testPictureSize);

struct RenderSettings {
    float relativeScale = 1.0F;
    float globalAlpha = 1.0F;
};

// The picture after the effects, drawn by GL, in the bytes of the framebuffer. Both need a current
// GL context, and fail the running test when a GL error is pending afterwards.
QImage renderTexture(const QList<ImageEffect *> &effects, const QImage &source,
                     const RenderSettings &settings = {});
QImage renderImage(const QList<ImageEffect *> &effects, const QImage &source);

// Empty when every alpha is that of the source, and pixels of alpha 0 are all 0.
QByteArray checkAlphaUntouched(const QImage &actual, const QImage &source);

} // namespace ko::imagefx::test
