#include "imagefx/render/DistanceAlphaMaskState.h"

#include "imagefx/model/ImageEffect.h"

namespace ko::imagefx
{

DistanceAlphaMaskState::DistanceAlphaMaskState()
    : AlphaMaskState(QStringLiteral("ko.orvanto.alphamask.Distance"))
{
}

QByteArray DistanceAlphaMaskState::shaderCode() const
{
    return ImageEffect::readShader(QStringLiteral("am_distance.frag"));
}

} // namespace ko::imagefx
