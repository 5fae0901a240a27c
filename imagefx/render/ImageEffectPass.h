#pragma once

#include "imagefx/render/PassTargets.h"

#include <QtGui/QOpenGLShaderProgram>

namespace ko::imagefx
{

class ImageEffectState;
struct PixelBufferState;

// The compiled program of an effect together with the code that draws it. Belongs to the context it
// was created in, and to that context's thread.
class ImageEffectPass : public QOpenGLShaderProgram
{
    Q_OBJECT

public:
    ImageEffectPass();

    // Draws the effect over the whole target. The renderer has set viewport, blending and culling;
    // updatePass() of the state has set the uniforms and bound the tables.
    virtual void render(const PassTargets &targets, ImageEffectState *state,
                        const PixelBufferState *pbs) = 0;
};

} // namespace ko::imagefx
