// Passes whose pixels do not see each other. What is plain goes straight from pixels to pixels; the
// rest in three steps over strips that stay in the nearest cache: the effect's colour, the mask's
// place, and the main shader, so that not every combination needs code of its own.

#define KORVEL_KERNEL __attribute__((flatten))

constexpr int strip = 64;

struct Strip {
    float red[strip];
    float green[strip];
    float blue[strip];
    float place[strip];
};

// Stands for an effect's piece where its colour is known already.
struct KnownColour {
    vec3 known;
    KORVEL_INLINE vec3 fx_main(const Sampler &, const vec3 &, const vec2 &, const vec2 &)
    {
        return known;
    }
};

template <bool opaque>
static KORVEL_INLINE vec4 pixelsOf(const WordVector &pixels)
{
    vec4 colour = toColour(pixels);
    if (opaque) {
        colour.a = 1.0F;
    }
    return colour;
}

template <bool opaque>
static KORVEL_INLINE vec3 unpremultiplied(const WordVector &pixels)
{
    const vec4 colour = pixelsOf<opaque>(pixels);
    return opaque ? vec3(colour) : colour / colour.a;
}

// Runs the main shader over one vector of pixels.
template <bool opaque, bool masked, class Main>
static KORVEL_INLINE WordVector run(Main &piece, const WordVector &source)
{
    const vec4 colour = pixelsOf<opaque>(source);
    const vec4 throughout(1.0F, 1.0F, 1.0F, 1.0F);
    piece.u_source.pixel = &colour;
    if (!masked) {
        piece.u_maskGradient.pixel = &throughout;
    }
    piece.shade();
    return toPixels(piece.gl_FragColor, source & 0xff000000U);
}

template <class Piece>
constexpr bool readsBatch = false;
template <>
constexpr bool readsBatch<BatchPiece> = true;

// Normal blend mode, no mask.
template <class Effect, bool opaque>
KORVEL_KERNEL void plainPass(const Pass &pass, const Pixels &pixels, uint32_t *target)
{
    Normal<Effect> piece{};
    prepare(piece, pass);
    piece.u_alpha = pass.alpha;
    for (int i = 0; i < pixels.count; i += lanes) {
        vec4 batch{};
        if (readsBatch<Effect>) {
            batch = pixelsOf<opaque>(load<WordVector>(pixels.batch + i));
            prepareAt(static_cast<Effect &>(piece), &batch);
        }
        store(target + i, run<opaque, false>(piece, load<WordVector>(pixels.source + i)));
    }
}

template <class Effect, bool opaque>
KORVEL_KERNEL void colourStrip(const Pass &pass, const Pixels &pixels, Strip *made)
{
    Effect piece{};
    prepare(piece, pass);
    for (int i = 0; i < pixels.count; i += lanes) {
        vec4 batch{};
        if (readsBatch<Effect>) {
            batch = pixelsOf<opaque>(load<WordVector>(pixels.batch + i));
            prepareAt(static_cast<Effect &>(piece), &batch);
        }
        const vec3 source = unpremultiplied<opaque>(load<WordVector>(pixels.source + i));
        const vec3 colour = piece.fx_main(Sampler(), source, vec2(), vec2());
        store(made->red + i, colour.r.v);
        store(made->green + i, colour.g.v);
        store(made->blue + i, colour.b.v);
    }
}

// Where the pixel `first` and those right of it are, in clip space.
static KORVEL_INLINE vec2 vertexCoord(const Pixels &pixels, int first)
{
    FloatVector column;
    for (int i = 0; i < lanes; ++i) {
        column[i] = float(i) + 0.5F;
    }
    const Float across = (column + float(pixels.x + first)) * (2.0F / float(pixels.width));
    return vec2(across - 1.0F, (float(pixels.y) + 0.5F) * (2.0F / float(pixels.height)) - 1.0F);
}

template <class Piece, bool opaque>
KORVEL_KERNEL void maskStrip(const Pixels &pixels, Strip *made)
{
    Piece piece{};
    for (int i = 0; i < pixels.count; i += lanes) {
        const vec3 colour = unpremultiplied<opaque>(load<WordVector>(pixels.source + i));
        const Float place = piece.fx_mask(colour, vec2(), vertexCoord(pixels, i));
        store(made->place + i, place.v);
    }
}

template <template <class> class Main, bool opaque, bool masked>
KORVEL_KERNEL void composeStrip(const Pass &pass, const Pixels &pixels, const Strip &made,
                                uint32_t *target)
{
    Main<KnownColour> piece{};
    piece.u_alpha = pass.alpha;
    piece.u_maskGradient.table = pass.gradient;
    for (int i = 0; i < pixels.count; i += lanes) {
        piece.known = vec3(load<FloatVector>(made.red + i), load<FloatVector>(made.green + i),
                           load<FloatVector>(made.blue + i));
        if (masked) {
            piece.place = load<FloatVector>(made.place + i);
        }
        store(target + i, run<opaque, masked>(piece, load<WordVector>(pixels.source + i)));
    }
}

using PlainPass = void (*)(const Pass &, const Pixels &, uint32_t *);
using ColourStrip = void (*)(const Pass &, const Pixels &, Strip *);
using MaskStrip = void (*)(const Pixels &, Strip *);
using ComposeStrip = void (*)(const Pass &, const Pixels &, const Strip &, uint32_t *);

template <bool opaque>
struct PointKernels {
    static constexpr PlainPass plain[colourCount] = {
        plainPass<BrightnessContrastPiece, opaque>,
        plainPass<ChannelShiftPiece, opaque>,
        plainPass<ColorFillPiece, opaque>,
        plainPass<ExposurePiece, opaque>,
        plainPass<GrayScalePiece, opaque>,
        plainPass<HsvPiece, opaque>,
        plainPass<LookupTablePiece, opaque>,
        plainPass<SelectiveSaturationPiece, opaque>,
        plainPass<BatchPiece, opaque>,
    };
    static constexpr ColourStrip colour[colourCount] = {
        colourStrip<BrightnessContrastPiece, opaque>,
        colourStrip<ChannelShiftPiece, opaque>,
        colourStrip<ColorFillPiece, opaque>,
        colourStrip<ExposurePiece, opaque>,
        colourStrip<GrayScalePiece, opaque>,
        colourStrip<HsvPiece, opaque>,
        colourStrip<LookupTablePiece, opaque>,
        colourStrip<SelectiveSaturationPiece, opaque>,
        colourStrip<BatchPiece, opaque>,
    };
    // Without Mask::None.
    static constexpr MaskStrip mask[3] = {
        maskStrip<DistancePiece, opaque>,
        maskStrip<HuePiece, opaque>,
        maskStrip<LuminancePiece, opaque>,
    };
    // In the order of ImageEffect::BlendMode; without a mask, then with one.
    static constexpr ComposeStrip compose[16][2] = {
        {composeStrip<Normal, opaque, false>, composeStrip<Normal, opaque, true>},
        {composeStrip<Add, opaque, false>, composeStrip<Add, opaque, true>},
        {composeStrip<Subtract, opaque, false>, composeStrip<Subtract, opaque, true>},
        {composeStrip<Difference, opaque, false>, composeStrip<Difference, opaque, true>},
        {composeStrip<Multiply, opaque, false>, composeStrip<Multiply, opaque, true>},
        {composeStrip<Divide, opaque, false>, composeStrip<Divide, opaque, true>},
        {composeStrip<Screen, opaque, false>, composeStrip<Screen, opaque, true>},
        {composeStrip<Overlay, opaque, false>, composeStrip<Overlay, opaque, true>},
        {composeStrip<HardLight, opaque, false>, composeStrip<HardLight, opaque, true>},
        {composeStrip<SoftLight, opaque, false>, composeStrip<SoftLight, opaque, true>},
        {composeStrip<LinearLight, opaque, false>, composeStrip<LinearLight, opaque, true>},
        {composeStrip<ColorDodge, opaque, false>, composeStrip<ColorDodge, opaque, true>},
        {composeStrip<ColorBurn, opaque, false>, composeStrip<ColorBurn, opaque, true>},
        {composeStrip<LinearBurn, opaque, false>, composeStrip<LinearBurn, opaque, true>},
        {composeStrip<LightenOnly, opaque, false>, composeStrip<LightenOnly, opaque, true>},
        {composeStrip<DarkenOnly, opaque, false>, composeStrip<DarkenOnly, opaque, true>},
    };
};

static Pixels part(const Pixels &pixels, int first)
{
    Pixels piece = pixels;
    piece.source += first;
    piece.batch = pixels.batch == nullptr ? nullptr : pixels.batch + first;
    piece.count = pixels.count - first < strip ? pixels.count - first : strip;
    piece.x += first;
    return piece;
}

template <bool opaque>
static void maskAndCompose(const Pass &pass, const Pixels &pixels, Strip *made, uint32_t *target)
{
    using Kernels = PointKernels<opaque>;
    const bool masked = pass.mask != Mask::None;
    if (masked) {
        Kernels::mask[int(pass.mask) - 1](pixels, made);
    }
    Kernels::compose[pass.blendMode][masked ? 1 : 0](pass, pixels, *made, target);
}

template <bool opaque>
static void pointPass(const Pass &pass, const Pixels &pixels, uint32_t *target)
{
    using Kernels = PointKernels<opaque>;
    if (pass.mask == Mask::None && pass.blendMode == 0) {
        Kernels::plain[int(pass.colour)](pass, pixels, target);
        return;
    }
    Strip made;
    for (int first = 0; first < pixels.count; first += strip) {
        const Pixels piece = part(pixels, first);
        Kernels::colour[int(pass.colour)](pass, piece, &made);
        maskAndCompose<opaque>(pass, piece, &made, target + first);
    }
}

void point(const Pass &pass, const Pixels &pixels, uint32_t *target)
{
    (pass.opaque ? pointPass<true> : pointPass<false>)(pass, pixels, target);
}

// The texel of each channel, as a table.
void lookUp(const uint8_t red[256], const uint8_t green[256], const uint8_t blue[256],
            const uint32_t *source, uint32_t *target, int count)
{
    for (int i = 0; i < count; ++i) {
        const uint32_t pixel = source[i];
        target[i] = uint32_t(red[pixel & 255]) | (uint32_t(green[(pixel >> 8) & 255]) << 8) |
                    (uint32_t(blue[(pixel >> 16) & 255]) << 16) | (pixel & 0xff000000U);
    }
}
