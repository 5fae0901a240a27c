#include "imagefx/model/LuminanceAlphaMask.h"

#include "imagefx/render/LuminanceAlphaMaskState.h"

namespace ko::imagefx
{

LuminanceAlphaMask::LuminanceAlphaMask(QObject *parent)
    : AlphaMask(QStringLiteral("ko.orvanto.alphamask.Luminance"), 0, parent)
{
}

LuminanceAlphaMask::~LuminanceAlphaMask() = default;

AlphaMaskState *LuminanceAlphaMask::createState() const
{
    return new LuminanceAlphaMaskState;
}

} // namespace ko::imagefx
