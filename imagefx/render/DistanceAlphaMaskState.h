#pragma once

#include "imagefx/render/AlphaMaskState.h"

namespace ko::imagefx
{

class DistanceAlphaMaskState : public AlphaMaskState
{
public:
    DistanceAlphaMaskState();

    QByteArray shaderCode() const override;
};

} // namespace ko::imagefx
