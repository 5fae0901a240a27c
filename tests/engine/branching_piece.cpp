// Pieces that the kernels must not compile, KORVEL_FAULT by KORVEL_FAULT: every pixel would have to
// go its own way. Without a fault it compiles.

#define KORVEL_LANES 1
#include "engine/kernels/Kernels.h"

namespace ko::imagefx::engine
{

namespace
{

#include "engine/kernels/Lanes.h"

#include "engine/kernels/Glsl.h"

#include "engine/kernels/Words.h"

struct Piece {
    uniform lowp float u_strength;

    lowp vec3 fx_main(sampler2D, lowp vec3 colorSample, mediump vec2, mediump vec2)
    {
        // What is one number for all pixels may decide.
        if (u_strength > 0.5)
            colorSample = colorSample * u_strength;
#if KORVEL_FAULT == 1
        if (colorSample.r > 0.5)
            colorSample = vec3(1.0);
#elif KORVEL_FAULT == 2
        return colorSample.r > 0.5 ? vec3(1.0) : colorSample;
#elif KORVEL_FAULT == 3
        if (colorSample.r > 0.5 && colorSample.g > 0.5)
            colorSample = vec3(1.0);
#endif
        return mix(colorSample, vec3(1.0), float(colorSample.r > 0.5));
    }
};

#include "engine/kernels/NoWords.h"

} // namespace

const Kernels &kernelsScalar()
{
    Piece piece{};
    (void)piece.fx_main(Sampler(), vec3(0.0F), vec2(), vec2());
    static Kernels none{};
    return none;
}

} // namespace ko::imagefx::engine
