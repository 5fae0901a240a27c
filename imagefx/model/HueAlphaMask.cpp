#include "imagefx/model/HueAlphaMask.h"

#include "imagefx/render/HueAlphaMaskState.h"

namespace ko::imagefx
{

HueAlphaMask::HueAlphaMask(QObject *parent)
    : AlphaMask(QStringLiteral("ko.orvanto.alphamask.Hue"), CyclicGradient, parent)
{
}

HueAlphaMask::~HueAlphaMask() = default;

AlphaMaskState *HueAlphaMask::createState() const
{
    return new HueAlphaMaskState;
}

} // namespace ko::imagefx
