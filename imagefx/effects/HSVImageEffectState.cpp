#include "imagefx/effects/HSVImageEffectState.h"

#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/render/ImageEffectPass.h"

namespace ko::imagefx
{

HSVImageEffectState::HSVImageEffectState()
    : ImageEffectState(QStringLiteral("ko.orvanto.imageeffect.HSV"))
{
}

QByteArray HSVImageEffectState::effectShaderCode(const PixelBufferState *pbs) const
{
    Q_UNUSED(pbs)
    return ImageEffect::readShader(QStringLiteral("fx_hsv.frag"));
}

void HSVImageEffectState::resolveUniforms(const ImageEffectPass *pass)
{
    ImageEffectState::resolveUniforms(pass);
    m_parametersLocation = pass->uniformLocation("u_parameters");
}

void HSVImageEffectState::updatePass(const QSharedPointer<ImageEffectPass> &pass,
                                     const PixelBufferState *pbs)
{
    ImageEffectState::updatePass(pass, pbs);
    pass->setUniformValue(m_parametersLocation, m_parameters);
}

void HSVImageEffectState::update(const ImageEffect *effect)
{
    ImageEffectState::update(effect);
    const auto *hsv = static_cast<const HSVImageEffect *>(effect);
    m_parameters = QVector3D(hsv->hue(), hsv->saturation(), hsv->value());
}

} // namespace ko::imagefx
