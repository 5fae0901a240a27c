#include "imagefx/render/HueAlphaMaskState.h"

#include "imagefx/model/ImageEffect.h"

namespace ko::imagefx
{

HueAlphaMaskState::HueAlphaMaskState() : AlphaMaskState(QStringLiteral("ko.orvanto.alphamask.Hue"))
{
}

QByteArray HueAlphaMaskState::shaderCode() const
{
    return ImageEffect::readShader(QStringLiteral("am_hue.frag"));
}

} // namespace ko::imagefx
