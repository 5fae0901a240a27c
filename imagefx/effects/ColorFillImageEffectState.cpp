#include "imagefx/effects/ColorFillImageEffectState.h"

#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/render/ImageEffectPass.h"

namespace ko::imagefx
{

ColorFillImageEffectState::ColorFillImageEffectState()
    : ImageEffectState(QStringLiteral("ko.orvanto.imageeffect.ColorFill"))
{
}

QByteArray ColorFillImageEffectState::effectShaderCode(const PixelBufferState *pbs) const
{
    Q_UNUSED(pbs)
    return ImageEffect::readShader(QStringLiteral("fx_colorfill.frag"));
}

void ColorFillImageEffectState::resolveUniforms(const ImageEffectPass *pass)
{
    ImageEffectState::resolveUniforms(pass);
    m_colorLocation = pass->uniformLocation("u_color");
}

void ColorFillImageEffectState::updatePass(const QSharedPointer<ImageEffectPass> &pass,
                                           const PixelBufferState *pbs)
{
    ImageEffectState::updatePass(pass, pbs);
    pass->setUniformValue(m_colorLocation, m_color);
}

void ColorFillImageEffectState::update(const ImageEffect *effect)
{
    ImageEffectState::update(effect);
    m_color = static_cast<const ColorFillImageEffect *>(effect)->color();
}

} // namespace ko::imagefx
