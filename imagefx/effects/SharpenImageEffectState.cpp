#include "imagefx/effects/SharpenImageEffectState.h"

#include "imagefx/effects/SharpenImageEffect.h"

namespace ko::imagefx
{

SharpenImageEffectPass::SharpenImageEffectPass(const SharpenImageEffectState *state,
                                               const PixelBufferState *pbs)
    : TwoPassImageEffectPass(state, pbs,
                             state->shaderWithTaps(QStringLiteral("fx_sharpen_pre.frag"), pbs))
{
}

SharpenImageEffectState::SharpenImageEffectState()
    : RadiusImageEffectState(QStringLiteral("ko.orvanto.imageeffect.Sharpen"))
{
}

QByteArray SharpenImageEffectState::effectShaderCode(const PixelBufferState *pbs) const
{
    return shaderWithTaps(QStringLiteral("fx_sharpen.frag"), pbs);
}

QByteArray SharpenImageEffectState::shaderWithTaps(const QString &name,
                                                   const PixelBufferState *pbs) const
{
    return "#define RADIUS " + QByteArray::number(taps(pbs)) + "\n\n" +
           ImageEffect::readShader(name);
}

void SharpenImageEffectState::resolveUniforms(const ImageEffectPass *pass)
{
    RadiusImageEffectState::resolveUniforms(pass);
    m_strengthLocation = pass->uniformLocation("u_strength");
}

void SharpenImageEffectState::updatePass(const QSharedPointer<ImageEffectPass> &pass,
                                         const PixelBufferState *pbs)
{
    RadiusImageEffectState::updatePass(pass, pbs);
    pass->setUniformValue(m_strengthLocation, m_strength);
}

void SharpenImageEffectState::update(const ImageEffect *effect)
{
    ImageEffectState::update(effect);
    const auto *sharpen = static_cast<const SharpenImageEffect *>(effect);
    setRadius(sharpen->radius());
    m_strength = sharpen->strength();
}

ImageEffectPass *SharpenImageEffectState::createPass(const PixelBufferState *pbs) const
{
    return new SharpenImageEffectPass(this, pbs);
}

} // namespace ko::imagefx
