// GLSL's types and functions over lanes, as far as the shader pieces use them. Included behind
// Lanes.h into the same namespace.

struct Texture;

// What is the same for all pixels: uniforms and constants. A branch on them is one for all pixels.
struct Uniform {
    using Float = float;
    struct vec3 {
        float r, g, b;
    };
    struct vec4 : vec3 {
        float a;
        KORVEL_INLINE const vec3 &colour() const { return *this; }
    };
    using Sampler = Texture;
};

struct vec2 {
    Float r, g;

    vec2() = default;
    KORVEL_INLINE vec2(const Float &x, const Float &y) : r(x), g(y) {}
};

struct vec3 {
    Float r, g, b;

    vec3() = default;
    KORVEL_INLINE explicit vec3(const Float &all) : r(all), g(all), b(all) {}
    KORVEL_INLINE vec3(const Float &red, const Float &green, const Float &blue)
        : r(red), g(green), b(blue)
    {
    }
    KORVEL_INLINE vec3(const Uniform::vec3 &all) : r(all.r), g(all.g), b(all.b) {}

    template <int first, int second, int third>
    KORVEL_INLINE vec3 swizzle() const
    {
        return vec3(channel<first>(), channel<second>(), channel<third>());
    }

    template <int index>
    KORVEL_INLINE Float channel() const
    {
        return index == 0 ? r : index == 1 ? g : b;
    }
};

struct vec4 : vec3 {
    Float a;

    vec4() = default;
    KORVEL_INLINE vec4(const vec3 &colour, const Float &alpha) : vec3(colour), a(alpha) {}
    KORVEL_INLINE vec4(const Float &red, const Float &green, const Float &blue, const Float &alpha)
        : vec3(red, green, blue), a(alpha)
    {
    }

    KORVEL_INLINE vec3 &colour() { return *this; }

    template <int first, int second, int third>
    KORVEL_INLINE vec3 swizzle() const
    {
        return vec3(channel<first>(), channel<second>(), channel<third>());
    }

    template <int index>
    KORVEL_INLINE Float channel() const
    {
        return index == 3 ? a : vec3::channel<index>();
    }
};

#define KORVEL_COLOUR_OPERATOR(op)                                                                 \
    static KORVEL_INLINE vec3 operator op(const vec3 &a, const vec3 &b)                            \
    {                                                                                              \
        return vec3(a.r op b.r, a.g op b.g, a.b op b.b);                                           \
    }                                                                                              \
    static KORVEL_INLINE vec3 operator op(const vec3 &a, const Float &b)                           \
    {                                                                                              \
        return vec3(a.r op b, a.g op b, a.b op b);                                                 \
    }                                                                                              \
    static KORVEL_INLINE vec3 operator op(const Float &a, const vec3 &b)                           \
    {                                                                                              \
        return vec3(a op b.r, a op b.g, a op b.b);                                                 \
    }
KORVEL_COLOUR_OPERATOR(+)
KORVEL_COLOUR_OPERATOR(-)
KORVEL_COLOUR_OPERATOR(*)
KORVEL_COLOUR_OPERATOR(/)
#undef KORVEL_COLOUR_OPERATOR

static KORVEL_INLINE float abs(float a)
{
    return __builtin_fabsf(a);
}
static KORVEL_INLINE float step(float edge, float a)
{
    return a < edge ? 0.0F : 1.0F;
}

static KORVEL_INLINE Float step(const Float &edge, const Float &a)
{
    return Float(a >= edge);
}
static KORVEL_INLINE Float fract(const Float &a)
{
    return a - floor(a);
}
// Next to a multiple of b the result may be just below 0 or just below b, as on any GPU.
static KORVEL_INLINE Float mod(const Float &a, float b)
{
    return a - b * floor(a * (1.0F / b));
}
static KORVEL_INLINE Float clamp(const Float &a, const Float &low, const Float &high)
{
    return min(max(a, low), high);
}
static KORVEL_INLINE Float mix(const Float &a, const Float &b, const Float &t)
{
    return a * (1.0F - t) + b * t;
}
static KORVEL_INLINE Float length(const vec2 &a)
{
    return sqrt(a.r * a.r + a.g * a.g);
}
static KORVEL_INLINE Float dot(const vec3 &a, const vec3 &b)
{
    return a.r * b.r + a.g * b.g + a.b * b.b;
}

static KORVEL_INLINE vec3 abs(const vec3 &a)
{
    return vec3(abs(a.r), abs(a.g), abs(a.b));
}
static KORVEL_INLINE vec3 sqrt(const vec3 &a)
{
    return vec3(sqrt(a.r), sqrt(a.g), sqrt(a.b));
}
static KORVEL_INLINE vec3 min(const vec3 &a, const vec3 &b)
{
    return vec3(min(a.r, b.r), min(a.g, b.g), min(a.b, b.b));
}
static KORVEL_INLINE vec3 max(const vec3 &a, const vec3 &b)
{
    return vec3(max(a.r, b.r), max(a.g, b.g), max(a.b, b.b));
}
static KORVEL_INLINE vec3 step(const Float &edge, const vec3 &a)
{
    return vec3(step(edge, a.r), step(edge, a.g), step(edge, a.b));
}
static KORVEL_INLINE vec3 mix(const vec3 &a, const vec3 &b, const Float &t)
{
    return a * (1.0F - t) + b * t;
}
static KORVEL_INLINE vec3 mix(const vec3 &a, const vec3 &b, const vec3 &t)
{
    return a * (1.0F - t) + b * t;
}

// A texture of a pass: a table of one row, or a picture of the pass's own size, of which the pieces
// here only read the pixel that they make.
struct Texture {
    Table table{nullptr, 0};
    const vec4 *pixel = nullptr;
};
using Sampler = Texture;

static KORVEL_INLINE Float byteToFloat(const WordVector &byte)
{
    return __builtin_convertvector((IntVector)byte, FloatVector) * (1.0F / 255.0F);
}

static KORVEL_INLINE vec4 toColour(const WordVector &pixels)
{
    return vec4(byteToFloat(pixels & 255), byteToFloat((pixels >> 8) & 255),
                byteToFloat((pixels >> 16) & 255), byteToFloat(pixels >> 24));
}

// A float this large has no bits behind the point, so adding it rounds to the nearest whole number,
// of two equally near ones to the even one, as renderers do; the number then is in the lowest bits.
constexpr float roundingOffset = 12582912.0F; // 1.5 * 2^23

// Rounded, and cut off at 0 and 1; what is not a number becomes 0.
static KORVEL_INLINE WordVector toByte(const Float &channel)
{
    const Float cut = smaller(larger(channel.v, FloatVector{}), 1.0F - FloatVector{});
    return (WordVector)(cut.v * 255.0F + roundingOffset) & 255;
}

static KORVEL_INLINE WordVector toPixels(const vec3 &colour, const WordVector &alpha)
{
    return toByte(colour.r) | (toByte(colour.g) << 8) | (toByte(colour.b) << 16) | alpha;
}

// Nearest filtering, clamped to the edge.
static KORVEL_INLINE vec4 texture2D(const Sampler &sampler, const vec2 &place)
{
    if (sampler.pixel != nullptr) {
        return *sampler.pixel;
    }
    const Float texel = place.r * float(sampler.table.width);
    const FloatVector last = float(sampler.table.width - 1) - FloatVector{};
    const FloatVector inside = smaller(larger(texel.v, FloatVector{}), last);
    return toColour(gather(sampler.table.texels, __builtin_convertvector(inside, IntVector)));
}
