#include "imagefx/effects/RadiusImageEffectState.h"

#include "imagefx/effects/BlurKernel.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/PixelBufferState.h"

namespace ko::imagefx
{

float RadiusImageEffectState::radiusInPixels(const PixelBufferState *pbs) const
{
    return m_radius * pbs->renderScale;
}

int RadiusImageEffectState::taps(const PixelBufferState *pbs) const
{
    return tapCount(radiusInPixels(pbs));
}

QString RadiusImageEffectState::effectVariant(const PixelBufferState *pbs) const
{
    return QStringLiteral("@%1").arg(taps(pbs));
}

void RadiusImageEffectState::resolveUniforms(const ImageEffectPass *pass)
{
    ImageEffectState::resolveUniforms(pass);
    m_radiusLocation = pass->uniformLocation("u_radius");
}

void RadiusImageEffectState::updatePass(const QSharedPointer<ImageEffectPass> &pass,
                                        const PixelBufferState *pbs)
{
    ImageEffectState::updatePass(pass, pbs);
    pass->setUniformValue(m_radiusLocation, radiusInPixels(pbs));
}

} // namespace ko::imagefx
