#include "imagefx/render/LuminanceAlphaMaskState.h"

#include "imagefx/model/ImageEffect.h"

namespace ko::imagefx
{

LuminanceAlphaMaskState::LuminanceAlphaMaskState()
    : AlphaMaskState(QStringLiteral("ko.orvanto.alphamask.Hue"))
{
}

QByteArray LuminanceAlphaMaskState::shaderCode() const
{
    return ImageEffect::readShader(QStringLiteral("am_luminance.frag"));
}

} // namespace ko::imagefx
