#include "imagefx/effects/ChannelShiftImageEffectState.h"

#include "imagefx/effects/ChannelShiftImageEffect.h"
#include "imagefx/render/ImageEffectPass.h"

namespace ko::imagefx
{

ChannelShiftImageEffectState::ChannelShiftImageEffectState()
    : ImageEffectState(QStringLiteral("ko.orvanto.imageeffect.ChannelShift"))
{
}

QByteArray ChannelShiftImageEffectState::effectShaderCode(const PixelBufferState *pbs) const
{
    Q_UNUSED(pbs)
    return ImageEffect::readShader(QStringLiteral("fx_channelshift.frag"));
}

void ChannelShiftImageEffectState::resolveUniforms(const ImageEffectPass *pass)
{
    ImageEffectState::resolveUniforms(pass);
    m_shiftLocation = pass->uniformLocation("u_shift");
}

void ChannelShiftImageEffectState::updatePass(const QSharedPointer<ImageEffectPass> &pass,
                                              const PixelBufferState *pbs)
{
    ImageEffectState::updatePass(pass, pbs);
    pass->setUniformValue(m_shiftLocation, m_shift);
}

void ChannelShiftImageEffectState::update(const ImageEffect *effect)
{
    ImageEffectState::update(effect);
    const auto *channelShift = static_cast<const ChannelShiftImageEffect *>(effect);
    m_shift = QVector3D(channelShift->red(), channelShift->green(), channelShift->blue());
}

} // namespace ko::imagefx
