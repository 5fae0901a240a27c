#include "imagefx/effects/BlurImageEffectState.h"

#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/BlurKernel.h"

namespace ko::imagefx
{

BlurImageEffectPass::BlurImageEffectPass(const BlurImageEffectState *state,
                                         const PixelBufferState *pbs)
    : TwoPassImageEffectPass(state, pbs,
                             state->shaderWithWeights(QStringLiteral("fx_blur_pre.frag"), pbs))
{
}

BlurImageEffectState::BlurImageEffectState()
    : RadiusImageEffectState(QStringLiteral("ko.orvanto.imageeffect.Blur"))
{
}

QByteArray BlurImageEffectState::effectShaderCode(const PixelBufferState *pbs) const
{
    return shaderWithWeights(QStringLiteral("fx_blur.frag"), pbs);
}

QByteArray BlurImageEffectState::shaderWithWeights(const QString &name,
                                                   const PixelBufferState *pbs) const
{
    return ImageEffect::readShader(name).replace("// [DEFS]", blurDefinitions(taps(pbs)));
}

void BlurImageEffectState::update(const ImageEffect *effect)
{
    ImageEffectState::update(effect);
    setRadius(static_cast<const BlurImageEffect *>(effect)->radius());
}

ImageEffectPass *BlurImageEffectState::createPass(const PixelBufferState *pbs) const
{
    return new BlurImageEffectPass(this, pbs);
}

} // namespace ko::imagefx
