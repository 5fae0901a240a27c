#include "imagefx/model/DistanceAlphaMask.h"

#include "imagefx/render/DistanceAlphaMaskState.h"

namespace ko::imagefx
{

DistanceAlphaMask::DistanceAlphaMask(QObject *parent)
    : AlphaMask(QStringLiteral("ko.orvanto.alphamask.Distance"), 0, parent)
{
}

DistanceAlphaMask::~DistanceAlphaMask() = default;

AlphaMaskState *DistanceAlphaMask::createState() const
{
    return new DistanceAlphaMaskState;
}

} // namespace ko::imagefx
