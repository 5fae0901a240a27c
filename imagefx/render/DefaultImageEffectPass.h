#pragma once

#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/QuadProgram.h"

namespace ko::imagefx
{

// The pass of every effect that draws once: the fragment shader that its state assembles, over one
// quad.
class DefaultImageEffectPass : public ImageEffectPass
{
    Q_OBJECT

public:
    DefaultImageEffectPass(const ImageEffectState *state, const PixelBufferState *pbs);

    void render(const PassTargets &targets, ImageEffectState *state,
                const PixelBufferState *pbs) override;

private:
    int m_vertexLocation;
    int m_texCoordLocation;
};

} // namespace ko::imagefx
