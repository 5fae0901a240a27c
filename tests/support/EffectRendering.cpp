#include "tests/support/EffectRendering.h"

#include "imagefx/render/ImageEffectRenderer.h"
#include "tests/support/OffscreenGl.h"

#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>
#include <QtTest/QTest>

#include <algorithm>
#include <array>
#include <random>

namespace ko::imagefx::test
{

namespace
{

using Bytes = std::array<int, 3>;

constexpr int randomSeed = 20;

// Straight from one colour to the other in 256 steps.
Bytes between(const Bytes &from, const Bytes &to, int step)
{
    Bytes color;
    for (size_t i = 0; i < color.size(); ++i) {
        color[i] = from[i] + (to[i] - from[i]) * step / 255;
    }
    return color;
}

// The corners of the colour cube, black to white.
Bytes corner(int index)
{
    return {(index & 1) * 255, (index >> 1 & 1) * 255, (index >> 2 & 1) * 255};
}

// Nine kinds of colours, 256 of each, then random ones without end.
Bytes colorOf(int number, std::mt19937 &random)
{
    const int step = number % 256;
    const int kind = number / 256;
    if (kind < 7) {
        // Grey first, then ramps to the neighbouring corner: the hue circle is among them.
        constexpr std::array<std::array<int, 2>, 7> ends = {
            {{0, 7}, {1, 3}, {3, 2}, {2, 6}, {6, 4}, {4, 5}, {5, 1}}};
        const auto &end = ends[size_t(kind)];
        return between(corner(end[0]), corner(end[1]), step);
    }
    if (kind == 7) {
        // One level off a grey, in one channel or two.
        Bytes color = {step, step, step};
        for (size_t i = 0; i < color.size(); ++i) {
            const int off = int((1 + step % 6) >> i & 1);
            color[i] = std::abs(color[i] - off);
        }
        return color;
    }
    std::uniform_int_distribution<int> level(0, 255);
    return {level(random), level(random), level(random)};
}

void put(QImage &image, int number, const Bytes &color, int alpha)
{
    uchar *pixel = image.scanLine(number / image.width()) + ptrdiff_t(4) * (number % image.width());
    std::copy(color.begin(), color.end(), pixel);
    pixel[3] = uchar(alpha);
}

void checkGlError()
{
    const GLenum error = QOpenGLContext::currentContext()->functions()->glGetError();
    if (error != GL_NO_ERROR) {
        QTest::qFail(qPrintable(QStringLiteral("GL error 0x%1 is pending").arg(error, 0, 16)),
                     __FILE__, __LINE__);
    }
}

QImage render(const QList<ImageEffect *> &effects, const QImage &source, bool asTexture,
              const RenderSettings &settings)
{
    QOpenGLFramebufferObject target(source.size());
    ImageEffectRenderer renderer(effects);
    renderer.setRelativeScale(settings.relativeScale);
    renderer.setGlobalAlpha(settings.globalAlpha);
    if (asTexture) {
        const GLuint textureId = uploadRgba(source);
        renderer.render(textureId, &target);
        QOpenGLContext::currentContext()->functions()->glDeleteTextures(1, &textureId);
    } else {
        renderer.render(source, &target);
    }
    checkGlError();
    return readBack(&target);
}

} // namespace

QImage opaquePicture(const QSize &size)
{
    std::mt19937 random(randomSeed);
    QImage image(size, QImage::Format_RGBA8888);
    for (int i = 0; i < size.width() * size.height(); ++i) {
        put(image, i, colorOf(i, random), 255);
    }
    return image;
}

// 257 shares no factor with 256, so every kind of colour meets every alpha sooner or later.
QImage translucentPicture(const QSize &size)
{
    std::mt19937 random(randomSeed);
    QImage image(size, QImage::Format_RGBA8888);
    for (int i = 0; i < size.width() * size.height(); ++i) {
        const int alpha = (i + i / 256 * 37) % 256;
        Bytes color = colorOf((i % 9 * 256 + i * 7 % 256) % (9 * 256), random);
        for (int &level : color) {
            level = level * alpha / 255;
        }
        put(image, i, color, alpha);
    }
    return image;
}

QImage renderTexture(const QList<ImageEffect *> &effects, const QImage &source,
                     const RenderSettings &settings)
{
    return render(effects, source, true, settings);
}

QImage renderImage(const QList<ImageEffect *> &effects, const QImage &source)
{
    return render(effects, source, false, {});
}

QByteArray checkAlphaUntouched(const QImage &actual, const QImage &source)
{
    for (int y = 0; y < source.height(); ++y) {
        for (int x = 0; x < source.width(); ++x) {
            const uchar *pixel = actual.constScanLine(y) + ptrdiff_t(4) * x;
            const int alpha = source.constScanLine(y)[4 * x + 3];
            const bool isClear = pixel[0] == 0 && pixel[1] == 0 && pixel[2] == 0;
            if (pixel[3] != alpha || (alpha == 0 && !isClear)) {
                return QStringLiteral("pixel (%1, %2) of alpha %3 became (%4, %5, %6, %7)")
                    .arg(x)
                    .arg(y)
                    .arg(alpha)
                    .arg(pixel[0])
                    .arg(pixel[1])
                    .arg(pixel[2])
                    .arg(pixel[3])
                    .toLatin1();
            }
        }
    }
    return {};
}

} // namespace ko::imagefx::test
