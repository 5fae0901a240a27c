#pragma once

#include "imagefx/effects/RadiusImageEffectState.h"
#include "imagefx/effects/TwoPassImageEffectPass.h"

namespace ko::imagefx
{

class BlurImageEffectState;

class BlurImageEffectPass : public TwoPassImageEffectPass
{
    Q_OBJECT

public:
    BlurImageEffectPass(const BlurImageEffectState *state, const PixelBufferState *pbs);
};

class BlurImageEffectState : public RadiusImageEffectState
{
public:
    BlurImageEffectState();

    QByteArray effectShaderCode(const PixelBufferState *pbs) const override;
    ImageEffectPass *createPass(const PixelBufferState *pbs) const override;
    void update(const ImageEffect *effect) override;

    // The text of a shader with the kernel's weights for `pbs` at its marker.
    QByteArray shaderWithWeights(const QString &name, const PixelBufferState *pbs) const;
};

} // namespace ko::imagefx
