#include "imagefx/effects/TwoPassImageEffectPass.h"

#include "imagefx/effects/RadiusImageEffectState.h"
#include "imagefx/render/TextureUnits.h"

#include <QtGui/QOpenGLFramebufferObject>

namespace ko::imagefx
{

TwoPassImageEffectPass::TwoPassImageEffectPass(const RadiusImageEffectState *state,
                                               const PixelBufferState *pbs,
                                               const QByteArray &prePassShader)
    : DefaultImageEffectPass(state, pbs), m_prePass(prePassShader)
{
    if (isLinked() && bind()) {
        setUniformValue("u_preprocessed", tableUnit);
        release();
    }
}

void TwoPassImageEffectPass::render(const PassTargets &targets, ImageEffectState *state,
                                    const PixelBufferState *pbs)
{
    const auto *radiusState = static_cast<const RadiusImageEffectState *>(state);
    activateTextureUnit(tableUnit);
    QOpenGLFramebufferObject preprocessed(targets.source->size(), GL_TEXTURE_2D);
    m_prePass.draw(targets.source, &preprocessed, radiusState->radiusInPixels(pbs));
    bindTexture(tableUnit, preprocessed.texture());
    DefaultImageEffectPass::render(targets, state, pbs);
}

} // namespace ko::imagefx
