#pragma once

#include "imagefx/render/AlphaMaskState.h"

namespace ko::imagefx
{

// Carries the hue mask's id. The id is part of a pass's cache key, so of a hue mask and a luminance
// mask on effects that are otherwise alike, the one compiled first serves both.
class LuminanceAlphaMaskState : public AlphaMaskState
{
public:
    LuminanceAlphaMaskState();

    QByteArray shaderCode() const override;
};

} // namespace ko::imagefx
