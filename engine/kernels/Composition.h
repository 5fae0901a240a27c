// The main shader, with the blend mode in the file KORVEL_BLEND if there is one, as a template of
// the name KORVEL_COMPOSITION over the effect's piece. Included once for each; hence no guard.

template <class Effect>
struct KORVEL_COMPOSITION : Effect {
    using Effect::fx_main;
    // What the mask's piece made of the pixel.
    Float place;
    vec4 gl_FragColor;

#include "engine/kernels/Words.h"

    float fx_mask(vec3, vec2, vec2)
    {
        return place;
    }
#define USE_EFFECT
#define USE_MASK
#ifdef KORVEL_BLEND
#define USE_BLEND
#include KORVEL_BLEND
#endif
#include "imagefx/lib/shaders/fx_main.frag"
#undef USE_EFFECT
#undef USE_MASK
#undef USE_BLEND

#include "engine/kernels/NoWords.h"
};

#undef KORVEL_COMPOSITION
#undef KORVEL_BLEND
