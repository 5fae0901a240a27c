#include "imagefx/effects/GrayScaleImageEffectState.h"

#include "imagefx/effects/GrayScaleImageEffect.h"
#include "imagefx/render/ImageEffectPass.h"

namespace ko::imagefx
{

GrayScaleImageEffectState::GrayScaleImageEffectState()
    : ImageEffectState(QStringLiteral("ko.orvanto.imageeffect.GrayScale"))
{
}

QByteArray GrayScaleImageEffectState::effectShaderCode(const PixelBufferState *pbs) const
{
    Q_UNUSED(pbs)
    return ImageEffect::readShader(QStringLiteral("fx_grayscale.frag"));
}

void GrayScaleImageEffectState::resolveUniforms(const ImageEffectPass *pass)
{
    ImageEffectState::resolveUniforms(pass);
    m_factorsLocation = pass->uniformLocation("u_factors");
}

void GrayScaleImageEffectState::updatePass(const QSharedPointer<ImageEffectPass> &pass,
                                           const PixelBufferState *pbs)
{
    ImageEffectState::updatePass(pass, pbs);
    pass->setUniformValue(m_factorsLocation, m_factors);
}

void GrayScaleImageEffectState::update(const ImageEffect *effect)
{
    ImageEffectState::update(effect);
    const auto *grayScale = static_cast<const GrayScaleImageEffect *>(effect);
    const float sum = grayScale->red() + grayScale->green() + grayScale->blue();
    m_factors =
        QVector3D(grayScale->red() / sum, grayScale->green() / sum, grayScale->blue() / sum);
}

} // namespace ko::imagefx
