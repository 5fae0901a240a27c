#pragma once

#include "imagefx/render/DefaultImageEffectPass.h"
#include "imagefx/render/PrePass.h"

namespace ko::imagefx
{

class RadiusImageEffectState;

// The pass of an effect that filters one direction first, into a framebuffer that lives for one
// draw, and the other direction on the way into the target. The effect's piece reads the first
// result as "u_preprocessed".
class TwoPassImageEffectPass : public DefaultImageEffectPass
{
    Q_OBJECT

public:
    TwoPassImageEffectPass(const RadiusImageEffectState *state, const PixelBufferState *pbs,
                           const QByteArray &prePassShader);

    void render(const PassTargets &targets, ImageEffectState *state,
                const PixelBufferState *pbs) override;

private:
    PrePass m_prePass;
};

} // namespace ko::imagefx
