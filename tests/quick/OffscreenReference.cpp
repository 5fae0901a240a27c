#include "tests/quick/OffscreenReference.h"

#include "imagefx/model/ImageEffect.h"
#include "imagefx/render/ImageEffectRenderer.h"
#include "tests/quick/QuickScene.h"

#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>

namespace ko::imagefx::test
{

namespace
{

constexpr float invisibleAlpha = 0.001F;

// The opposite of what the item leaves out; a new effect's blend mode does not save a neutral one.
bool isDrawn(const ImageEffect *effect)
{
    return effect->enabled() && effect->alpha() > invisibleAlpha && !effect->isNeutral();
}

} // namespace

QImage OffscreenReference::draw(const QList<ImageEffect *> &effects, const QImage &picture,
                                const Showing &showing)
{
    if (!m_gl.isValid() || !m_gl.makeCurrent()) {
        return {};
    }
    QList<ImageEffect *> drawn;
    for (ImageEffect *effect : effects) {
        if (isDrawn(effect)) {
            drawn.append(effect);
        }
    }
    ImageEffectRenderer renderer(drawn);
    renderer.setSubRect(showing.rect);
    renderer.setRelativeScale(showing.renderScale);
    renderer.setGlobalAlpha(showing.alpha);

    QOpenGLFunctions *gl = m_gl.context()->functions();
    const GLuint textureId = uploadRgba(premultiplied(picture));
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    QOpenGLFramebufferObject target(showing.size);
    renderer.render(textureId, &target);
    gl->glDeleteTextures(1, &textureId);
    return premultiplied(readBack(&target));
}

} // namespace ko::imagefx::test
