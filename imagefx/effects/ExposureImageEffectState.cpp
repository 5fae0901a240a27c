#include "imagefx/effects/ExposureImageEffectState.h"

#include "imagefx/effects/ExposureCurve.h"
#include "imagefx/effects/ExposureImageEffect.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/TextureUnits.h"

namespace ko::imagefx
{

ExposureImageEffectState::ExposureImageEffectState()
    : ImageEffectState(QStringLiteral("ko.orvanto.imageeffect.Exposure")),
      m_curve(tableUnit, GL_ALPHA)
{
}

QByteArray ExposureImageEffectState::effectShaderCode(const PixelBufferState *pbs) const
{
    Q_UNUSED(pbs)
    return ImageEffect::readShader(QStringLiteral("fx_exposure.frag"));
}

void ExposureImageEffectState::initializePass(ImageEffectPass *pass)
{
    ImageEffectState::initializePass(pass);
    pass->setUniformValue("u_lut", tableUnit);
}

void ExposureImageEffectState::updatePass(const QSharedPointer<ImageEffectPass> &pass,
                                          const PixelBufferState *pbs)
{
    ImageEffectState::updatePass(pass, pbs);
    m_curve.bind();
}

void ExposureImageEffectState::update(const ImageEffect *effect)
{
    ImageEffectState::update(effect);
    const auto *exposure = static_cast<const ExposureImageEffect *>(effect);
    const ToneTable curve =
        buildExposureCurve(exposure->exposure(), exposure->darkTones(), exposure->lightTones());
    m_curve.setTexels(curve.data(), int(curve.size()));
}

} // namespace ko::imagefx
