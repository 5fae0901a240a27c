#include "imagefx/render/DefaultImageEffectPass.h"

#include "imagefx/model/ImageEffect.h"
#include "imagefx/render/ImageEffectState.h"
#include "imagefx/render/TextureUnits.h"

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>

namespace ko::imagefx
{

DefaultImageEffectPass::DefaultImageEffectPass(const ImageEffectState *state,
                                               const PixelBufferState *pbs)
{
    linkQuadProgram(this, ImageEffect::readShader(QStringLiteral("fx_default.vert")),
                    state->generateFragmentShader(pbs));
    m_vertexLocation = attributeLocation("a_vertex");
    m_texCoordLocation = attributeLocation("a_texCoord");
}

void DefaultImageEffectPass::render(const PassTargets &targets, ImageEffectState *state,
                                    const PixelBufferState *pbs)
{
    Q_UNUSED(state)
    Q_UNUSED(pbs)
    bindTexture(sourceUnit, targets.source->texture());
    targets.target->bind();
    drawQuad(this, m_vertexLocation, m_texCoordLocation);
    targets.target->release();
}

} // namespace ko::imagefx
