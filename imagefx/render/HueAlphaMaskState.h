#pragma once

#include "imagefx/render/AlphaMaskState.h"

namespace ko::imagefx
{

class HueAlphaMaskState : public AlphaMaskState
{
public:
    HueAlphaMaskState();

    QByteArray shaderCode() const override;
};

} // namespace ko::imagefx
