#include "imagefx/render/ImageEffectRenderer.h"

#include "imagefx/model/ImageEffect.h"
#include "imagefx/render/BasePass.h"
#include "imagefx/render/FramebufferCopy.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/ImageEffectState.h"
#include "imagefx/render/PixelBufferState.h"
#include "imagefx/render/TextureUnits.h"

#include <QtGui/QImage>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>

#include <utility>

namespace ko::imagefx
{

namespace
{

const QRectF wholeTexture(0.0, 0.0, 1.0, 1.0);

void bindCleared(QOpenGLFramebufferObject *framebuffer)
{
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    framebuffer->bind();
    gl->glClearColor(0.0F, 0.0F, 0.0F, 0.0F);
    gl->glClear(GL_COLOR_BUFFER_BIT);
}

void prepareState(const QSize &size)
{
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    gl->glViewport(0, 0, size.width(), size.height());
    gl->glDisable(GL_BLEND);
    gl->glFrontFace(GL_CW);
    gl->glCullFace(GL_BACK);
}

GLuint uploadTexture(const QImage &image)
{
    const bool translucent = image.hasAlphaChannel();
    const GLenum format = translucent ? GL_RGBA : GL_RGB;
    const QImage pixels =
        image.convertToFormat(translucent ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    GLuint textureId = 0;
    gl->glGenTextures(1, &textureId);
    bindTexture(sourceUnit, textureId);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    gl->glTexImage2D(GL_TEXTURE_2D, 0, GLint(format), pixels.width(), pixels.height(), 0, format,
                     GL_UNSIGNED_BYTE, pixels.constBits());
    gl->glGenerateMipmap(GL_TEXTURE_2D);
    return textureId;
}

} // namespace

class ImageEffectRenderer::Private
{
public:
    QOpenGLFramebufferObject *draw(QOpenGLFramebufferObject *picture,
                                   QOpenGLFramebufferObject *spare) const;

    QList<ImageEffect *> effects;
    QRectF subRect = wholeTexture;
    float relativeScale = 1.0F;
    float globalAlpha = 1.0F;
};

QOpenGLFramebufferObject *ImageEffectRenderer::Private::draw(QOpenGLFramebufferObject *picture,
                                                             QOpenGLFramebufferObject *spare) const
{
    // Cleared, so that an effect whose program did not link leaves defined colour to the next one.
    bindCleared(spare);
    spare->release();

    PixelBufferState pbs;
    pbs.imageEffectAlpha = globalAlpha;
    pbs.renderScale = relativeScale;
    PassTargets targets{picture, spare};
    const QList<ImageEffect *> drawn = effects;
    for (ImageEffect *effect : drawn) {
        const QSharedPointer<ImageEffectState> state = effect->currentState();
        const QSharedPointer<ImageEffectPass> pass = state->effectPass(&pbs);
        pass->render(targets, state.data(), &pbs);
        std::swap(targets.source, targets.target);
    }
    return targets.source;
}

ImageEffectRenderer::ImageEffectRenderer(const QList<ImageEffect *> &effects)
    : d(std::make_unique<Private>())
{
    d->effects = effects;
}

ImageEffectRenderer::~ImageEffectRenderer() = default;

QRectF ImageEffectRenderer::subRect() const
{
    return d->subRect;
}

void ImageEffectRenderer::setSubRect(const QRectF &subRect)
{
    d->subRect = subRect;
}

float ImageEffectRenderer::relativeScale() const
{
    return d->relativeScale;
}

void ImageEffectRenderer::setRelativeScale(float scale)
{
    d->relativeScale = scale;
}

float ImageEffectRenderer::globalAlpha() const
{
    return d->globalAlpha;
}

void ImageEffectRenderer::setGlobalAlpha(float alpha)
{
    d->globalAlpha = alpha;
}

void ImageEffectRenderer::render(GLuint textureId, QOpenGLFramebufferObject *target)
{
    const QSharedPointer<BasePass> basePass = BasePass::shared();
    prepareState(target->size());
    bindCleared(target);
    basePass->draw(textureId, d->subRect);
    target->release();
    QOpenGLFramebufferObject temporary(target->size(), GL_TEXTURE_2D);
    if (d->draw(target, &temporary) != target) {
        copyFramebuffer(&temporary, target);
    }
    activateTextureUnit(sourceUnit);
    QOpenGLContext::currentContext()->functions()->glFlush();
}

QOpenGLFramebufferObject *ImageEffectRenderer::renderInPlace(QOpenGLFramebufferObject *picture,
                                                             QOpenGLFramebufferObject *spare)
{
    prepareState(picture->size());
    QOpenGLFramebufferObject *result = d->draw(picture, spare);
    activateTextureUnit(sourceUnit);
    QOpenGLContext::currentContext()->functions()->glFlush();
    return result;
}

void ImageEffectRenderer::render(const QImage &image, QOpenGLFramebufferObject *target)
{
    const GLuint textureId = uploadTexture(image);
    render(textureId, target);
    QOpenGLContext::currentContext()->functions()->glDeleteTextures(1, &textureId);
}

} // namespace ko::imagefx
