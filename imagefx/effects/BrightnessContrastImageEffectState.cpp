#include "imagefx/effects/BrightnessContrastImageEffectState.h"

#include "imagefx/effects/BrightnessContrastImageEffect.h"
#include "imagefx/render/ImageEffectPass.h"

namespace ko::imagefx
{

BrightnessContrastImageEffectState::BrightnessContrastImageEffectState()
    : ImageEffectState(QStringLiteral("ko.orvanto.imageeffect.BrightnessContrast"))
{
}

QByteArray BrightnessContrastImageEffectState::effectShaderCode(const PixelBufferState *pbs) const
{
    Q_UNUSED(pbs)
    return ImageEffect::readShader(QStringLiteral("fx_brightnesscontrast.frag"));
}

void BrightnessContrastImageEffectState::resolveUniforms(const ImageEffectPass *pass)
{
    ImageEffectState::resolveUniforms(pass);
    m_brightnessLocation = pass->uniformLocation("u_brightness");
    m_contrastLocation = pass->uniformLocation("u_contrast");
}

void BrightnessContrastImageEffectState::updatePass(const QSharedPointer<ImageEffectPass> &pass,
                                                    const PixelBufferState *pbs)
{
    ImageEffectState::updatePass(pass, pbs);
    pass->setUniformValue(m_brightnessLocation, m_brightness);
    pass->setUniformValue(m_contrastLocation, m_contrast);
}

void BrightnessContrastImageEffectState::update(const ImageEffect *effect)
{
    ImageEffectState::update(effect);
    const auto *brightnessContrast = static_cast<const BrightnessContrastImageEffect *>(effect);
    m_brightness = brightnessContrast->brightness();
    m_contrast = brightnessContrast->contrast();
}

} // namespace ko::imagefx
