// The pieces that fetch neighbours, run on the sum of all their taps, which is known already: what
// the first tap gives is the whole of it, and what the others add or a weight scales changes
// nothing more. Coordinates count pixels from the centre, and so are the same for all pixels.

struct TapColour {
    vec3 value;
    KORVEL_INLINE operator const vec3 &() const { return value; }
};

struct TapSum {
    vec3 value;
    Float a; // the centre's

    TapSum() = default;
    KORVEL_INLINE TapSum(const vec3 &colour, const Float &alpha) : value(colour), a(alpha) {}
    KORVEL_INLINE TapColour colour() const { return {value}; }
};

static KORVEL_INLINE TapColour operator*(const TapColour &sum, float)
{
    return sum;
}
static KORVEL_INLINE vec3 operator/(const TapColour &sum, const Float &b)
{
    return sum.value / b;
}
static KORVEL_INLINE void operator+=(vec3 &, const TapColour &) {}
static KORVEL_INLINE void operator+=(TapSum &, const TapSum &) {}
static KORVEL_INLINE void operator/=(TapSum &, float) {}

struct Offset {
    float r = 0.0F;
    float g = 0.0F;

    Offset() = default;
    KORVEL_INLINE Offset(float x, float y) : r(x), g(y) {}
};
static KORVEL_INLINE Offset operator+(const Offset &a, const Offset &b)
{
    return {a.r + b.r, a.g + b.g};
}
static KORVEL_INLINE Offset operator-(const Offset &a, const Offset &b)
{
    return {a.r - b.r, a.g - b.g};
}
static KORVEL_INLINE Offset operator*(float a, const Offset &b)
{
    return {a * b.r, a * b.g};
}

struct TapSampler {
    const TapSum *sum;
};
static KORVEL_INLINE TapSum texture2D(const TapSampler &sampler, const Offset &)
{
    return *sampler.sum;
}
static KORVEL_INLINE float dFdx(float)
{
    return 1.0F;
}
static KORVEL_INLINE float dFdy(float)
{
    return 1.0F;
}

// The loops over taps do nothing here: none.
struct NoTaps {
    static constexpr int SAMPLES = 1;
    static constexpr int RADIUS = 0;
    static constexpr float w[1] = {1.0F};
};

#include "engine/kernels/NeighbourWords.h"

struct BlurPrePiece : NoTaps {
    TapSum gl_FragColor;
#include "imagefx/lib/shaders/fx_blur_pre.frag"
};
struct BlurPiece : NoTaps {
#include "imagefx/lib/shaders/fx_blur.frag"
};
struct SharpenPrePiece : NoTaps {
    TapSum gl_FragColor;
#include "imagefx/lib/shaders/fx_sharpen_pre.frag"
};
struct SharpenPiece : NoTaps {
#include "imagefx/lib/shaders/fx_sharpen.frag"
};

#include "engine/kernels/NoNeighbourWords.h"
