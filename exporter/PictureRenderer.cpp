#include "exporter/PictureRenderer.h"

#include "exporter/Premultiplication.h"

#include "imagefx/render/ImageEffectRenderer.h"

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>

#include <utility>

namespace ko::exporter
{

namespace
{

// A driver may report several errors, but not endlessly: a lost context never
// stops.
bool takeErrors()
{
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    bool any = false;
    for (int i = 0; i < 16 && gl->glGetError() != GL_NO_ERROR; ++i) {
        any = true;
    }
    return any;
}

// Whether memory counts more than time: then there are never more than two copies of the picture,
// at the price that the system has to provide, and clear, their memory anew for each picture.
bool isLarge(const QImage &picture)
{
    constexpr qint64 limit = 64 << 20;
    return picture.sizeInBytes() > limit;
}

bool readBack(QOpenGLFramebufferObject *framebuffer, QImage *picture, bool translucent)
{
    if (picture->isNull()) {
        return false;
    }
    framebuffer->bind();
    QOpenGLContext::currentContext()->functions()->glReadPixels(
        0, 0, picture->width(), picture->height(), GL_RGBA, GL_UNSIGNED_BYTE, picture->bits());
    framebuffer->release();
    if (translucent) {
        unpremultiplyPixels(picture);
    }
    return true;
}

// A driver may hold the memory of a destroyed texture until the commands that named it are cleared
// away, which the software renderer does when it needs the room for later ones.
void forgetTextures()
{
    constexpr int enough = 8;
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    QOpenGLFramebufferObject source(1, 1);
    QOpenGLFramebufferObject target(1, 1);
    for (int i = 0; i < enough; ++i) {
        gl->glFinish();
        imagefx::ImageEffectRenderer({}).render(source.texture(), &target);
    }
    gl->glFinish();
}

} // namespace

PictureRenderer::PictureRenderer() = default;
PictureRenderer::~PictureRenderer() = default;

bool PictureRenderer::draw(QImage *picture, const QList<imagefx::ImageEffect *> &effects,
                           float scale)
{
    takeErrors();
    const bool translucent = picture->hasAlphaChannel();
    *picture = premultipliedPixels(std::move(*picture));
    if (picture->isNull()) {
        return false;
    }
    const bool large = isLarge(*picture);
    const QSize size = picture->size();
    const int dotsPerMeterX = picture->dotsPerMeterX();
    const int dotsPerMeterY = picture->dotsPerMeterY();
    if (!upload(*picture)) {
        return false;
    }
    if (large) {
        *picture = QImage();
    }
    if (!m_second) {
        m_second = std::make_unique<QOpenGLFramebufferObject>(size);
    }
    if (!m_second->isValid()) {
        return false;
    }
    imagefx::ImageEffectRenderer renderer(effects);
    renderer.setRelativeScale(scale);
    QOpenGLFramebufferObject *result = renderer.renderInPlace(m_first.get(), m_second.get());
    if (large) {
        (result == m_first.get() ? m_second : m_first).reset();
        forgetTextures();
        *picture = QImage(size, QImage::Format_RGBX8888);
        picture->setDotsPerMeterX(dotsPerMeterX);
        picture->setDotsPerMeterY(dotsPerMeterY);
    }
    return readBack(result, picture, translucent) && !takeErrors();
}

bool PictureRenderer::upload(const QImage &picture)
{
    if (!m_first || m_first->size() != picture.size()) {
        m_first.reset();
        m_second.reset();
        m_first = std::make_unique<QOpenGLFramebufferObject>(picture.size());
    }
    if (!m_first->isValid() || takeErrors()) {
        return false;
    }
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    gl->glActiveTexture(GL_TEXTURE0);
    gl->glBindTexture(GL_TEXTURE_2D, m_first->texture());
    gl->glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, picture.width(), picture.height(), GL_RGBA,
                        GL_UNSIGNED_BYTE, picture.constBits());
    return true;
}

} // namespace ko::exporter
