#include "exporter/PictureRenderer.h"

#include "imagefx/render/ImageEffectRenderer.h"

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>
#include <QtGui/QPixelFormat>

#include <algorithm>

namespace ko::exporter
{

namespace
{

// The picture as a texture: unfiltered, so that each target pixel sees exactly its own texel.
class PictureTexture
{
public:
    // `pixels` has four bytes a pixel, so its rows are as GL expects them for any width.
    explicit PictureTexture(const QImage &pixels)
        : m_gl(QOpenGLContext::currentContext()->functions())
    {
        m_gl->glGenTextures(1, &m_id);
        m_gl->glActiveTexture(GL_TEXTURE0);
        m_gl->glBindTexture(GL_TEXTURE_2D, m_id);
        m_gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        m_gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        m_gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        m_gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        m_gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, pixels.width(), pixels.height(), 0, GL_RGBA,
                           GL_UNSIGNED_BYTE, pixels.constBits());
    }
    ~PictureTexture() { m_gl->glDeleteTextures(1, &m_id); }

    GLuint id() const { return m_id; }

private:
    Q_DISABLE_COPY(PictureTexture)

    QOpenGLFunctions *const m_gl;
    GLuint m_id = 0;
};

// Rounded exactly, as Qt's own conversion is not: at low alpha every step counts.
void premultiply(QImage *pixels)
{
    for (int y = 0; y < pixels->height(); ++y) {
        uchar *pixel = pixels->scanLine(y);
        for (int x = 0; x < pixels->width(); ++x, pixel += 4) {
            const int alpha = pixel[3];
            for (int channel = 0; channel < 3; ++channel) {
                pixel[channel] = uchar((pixel[channel] * alpha + 127) / 255);
            }
        }
    }
}

// Four bytes a pixel, premultiplied where there is an alpha channel.
QImage uploadable(const QImage &picture)
{
    if (!picture.hasAlphaChannel()) {
        return picture.convertToFormat(QImage::Format_RGBX8888);
    }
    if (picture.pixelFormat().premultiplied() == QPixelFormat::Premultiplied) {
        return picture.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    }
    QImage pixels = picture.convertToFormat(QImage::Format_RGBA8888);
    premultiply(&pixels);
    return pixels;
}

// colour = premultiplied / alpha, rounded. An effect may have brightened the colour beyond its
// alpha, which has no counterpart without premultiplication: it counts as 1.
uchar unpremultiplied(int channel, int alpha)
{
    return uchar(std::min(255, (channel * 255 + alpha / 2) / alpha));
}

void unpremultiply(QImage *pixels)
{
    for (int y = 0; y < pixels->height(); ++y) {
        uchar *pixel = pixels->scanLine(y);
        for (int x = 0; x < pixels->width(); ++x, pixel += 4) {
            const int alpha = pixel[3];
            if (alpha == 255) {
                continue;
            }
            for (int channel = 0; channel < 3; ++channel) {
                pixel[channel] = alpha == 0 ? uchar(0) : unpremultiplied(pixel[channel], alpha);
            }
        }
    }
}

QImage readBack(QOpenGLFramebufferObject *framebuffer, bool translucent)
{
    QImage pixels(framebuffer->size(),
                  translucent ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888);
    if (pixels.isNull()) {
        return {};
    }
    framebuffer->bind();
    QOpenGLContext::currentContext()->functions()->glReadPixels(
        0, 0, pixels.width(), pixels.height(), GL_RGBA, GL_UNSIGNED_BYTE, pixels.bits());
    framebuffer->release();
    if (translucent) {
        unpremultiply(&pixels);
    }
    return pixels;
}

// A driver may report several errors, but not endlessly: a lost context never stops.
bool takeErrors()
{
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    bool any = false;
    for (int i = 0; i < 16 && gl->glGetError() != GL_NO_ERROR; ++i) {
        any = true;
    }
    return any;
}

} // namespace

QImage renderPicture(const QImage &picture, const QList<imagefx::ImageEffect *> &effects)
{
    takeErrors();
    QImage pixels = uploadable(picture);
    if (pixels.isNull()) {
        return {};
    }
    const PictureTexture texture(pixels);
    pixels = QImage();
    QOpenGLFramebufferObject framebuffer(picture.size());
    if (!framebuffer.isValid() || takeErrors()) {
        return {};
    }
    imagefx::ImageEffectRenderer(effects).render(texture.id(), &framebuffer);
    QImage result = readBack(&framebuffer, picture.hasAlphaChannel());
    if (takeErrors()) {
        return {};
    }
    result.setDotsPerMeterX(picture.dotsPerMeterX());
    result.setDotsPerMeterY(picture.dotsPerMeterY());
    return result;
}

} // namespace ko::exporter
