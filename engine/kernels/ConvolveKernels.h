// Passes that see neighbours: sums of rows or columns over strips that stay in the nearest cache,
// then what the piece does to the sum.

// Four numbers for each pixel of a strip.
constexpr int sumCount = 4 * strip;

void expand16(const uint32_t *row, uint16_t *target, int count)
{
    const auto *bytes = reinterpret_cast<const uint8_t *>(row);
    for (int i = 0; i < 4 * count; ++i) {
        target[i] = bytes[i];
    }
}

void expandFloat(const uint32_t *row, float *target, int count)
{
    const auto *bytes = reinterpret_cast<const uint8_t *>(row);
    for (int i = 0; i < 4 * count; ++i) {
        target[i] = float(bytes[i]) * (1.0F / 255.0F);
    }
}

// Sums of levels as whole numbers.
struct IntegerSums {
    using Number = uint16_t;
    using Vector = ShortVector;
    using Sum = int32_t;
    using Accumulator = ProductSum;
    static constexpr int width = 2 * lanes;

    static KORVEL_INLINE float scale(const Sums &sums) { return sums.scale16; }
    // Two taps and their weights.
    static KORVEL_INLINE void add(Accumulator &sum, const Vector &a, const Vector &b,
                                  const Sums &sums, int i)
    {
        addProducts(sum, a, b, sums.weights16 + i);
    }
    static KORVEL_INLINE void add(Accumulator &sum, const Vector &a, const Sums &sums, int i)
    {
        const int16_t weights[2] = {sums.weights16[i], 0};
        addProducts(sum, a, a, weights);
    }
    static KORVEL_INLINE void put(const Accumulator &sum, Sum *target)
    {
        storeInOrder(sum, target);
    }
};

struct FloatSums {
    using Number = float;
    using Vector = FloatVector;
    using Sum = float;
    using Accumulator = FloatVector;
    static constexpr int width = lanes;

    static KORVEL_INLINE float scale(const Sums &) { return 1.0F; }
    static KORVEL_INLINE void add(Accumulator &sum, const Vector &a, const Vector &b,
                                  const Sums &sums, int i)
    {
        sum += a * sums.weights[i];
        sum += b * sums.weights[i + 1];
    }
    static KORVEL_INLINE void add(Accumulator &sum, const Vector &a, const Sums &sums, int i)
    {
        sum += a * sums.weights[i];
    }
    static KORVEL_INLINE void put(const Accumulator &sum, Sum *target) { store(target, sum); }
};

// Four vectors and two taps at a time, so that weights and sums stay in registers.
template <class Kind>
KORVEL_KERNEL void sumUp(const Sums &sums, const void *const *first, const void *const *second,
                         int from, int count, typename Kind::Sum *target)
{
    using Number = typename Kind::Number;
    using Vector = typename Kind::Vector;
    constexpr int block = 4;
    constexpr int64_t width = Kind::width;
    const int taps = sums.pairs + sums.singles;
    for (int offset = 0; offset < count; offset += block * Kind::width) {
        const auto single = [&](int i, int k) {
            return load<Vector>(static_cast<const Number *>(first[i]) + from + offset + k * width);
        };
        const auto pair = [&](int i, int k) {
            return Vector(single(i, k) + load<Vector>(static_cast<const Number *>(second[i]) +
                                                      from + offset + k * width));
        };
        typename Kind::Accumulator sum[block] = {};
        int i = 0;
        for (; i + 1 < sums.pairs; i += 2) {
#pragma GCC unroll 4
            for (int k = 0; k < block; ++k) {
                Kind::add(sum[k], pair(i, k), pair(i + 1, k), sums, i);
            }
        }
        for (; i < taps; ++i) {
#pragma GCC unroll 4
            for (int k = 0; k < block; ++k) {
                Kind::add(sum[k], i < sums.pairs ? pair(i, k) : single(i, k), sums, i);
            }
        }
#pragma GCC unroll 4
        for (int k = 0; k < block; ++k) {
            Kind::put(sum[k], target + offset + k * width);
        }
    }
}

// The sums as they are, but for the alpha, which is the centre's.
template <class Number>
KORVEL_KERNEL void toPixelsAsTheyAre(const Number *sums, float scale, const uint32_t *centre,
                                     int count, uint32_t *target)
{
    uint8_t bytes[sumCount];
    for (int i = 0; i < 4 * count; ++i) {
        const float rounded = float(sums[i]) * (scale * 255.0F) + roundingOffset;
        uint32_t bits;
        __builtin_memcpy(&bits, &rounded, sizeof bits);
        bytes[i] = uint8_t(bits);
    }
    for (int64_t i = 0; i < count; ++i) {
        uint32_t pixel;
        __builtin_memcpy(&pixel, bytes + 4 * i, sizeof pixel);
        target[i] = (pixel & 0x00ffffffU) | (centre[i] & 0xff000000U);
    }
}

template <class Number>
KORVEL_KERNEL void toPlanes(const Number *sums, float scale, int count, Strip *planes)
{
    for (int64_t i = 0; i < count; ++i) {
        planes->red[i] = float(sums[4 * i]) * scale;
        planes->green[i] = float(sums[4 * i + 1]) * scale;
        planes->blue[i] = float(sums[4 * i + 2]) * scale;
    }
}

static KORVEL_INLINE TapSum tapSum(const Strip &planes, const uint32_t *centre, int i)
{
    return TapSum(vec3(load<FloatVector>(planes.red + i), load<FloatVector>(planes.green + i),
                       load<FloatVector>(planes.blue + i)),
                  toColour(load<WordVector>(centre + i)).a);
}

template <class Piece>
KORVEL_KERNEL void prePass(const Strip &planes, const uint32_t *centre, int count, uint32_t *target)
{
    Piece piece{};
    for (int i = 0; i < count; i += lanes) {
        const TapSum sum = tapSum(planes, centre, i);
        piece.u_source.sum = &sum;
        piece.shade();
        store(target + i,
              toPixels(piece.gl_FragColor.value, load<WordVector>(centre + i) & 0xff000000U));
    }
}

static KORVEL_INLINE void prepare(BlurPiece &, const Pass &) {}
static KORVEL_INLINE void prepare(SharpenPiece &piece, const Pass &pass)
{
    piece.u_strength = pass.uniforms[0];
}

// Turns the sums into the effect's colour, in place.
template <class Piece, bool opaque>
KORVEL_KERNEL void colourOfSums(const Pass &pass, const Pixels &pixels, const uint32_t *centre,
                                Strip *planes)
{
    Piece piece{};
    prepare(piece, pass);
    for (int i = 0; i < pixels.count; i += lanes) {
        const TapSum sum = tapSum(*planes, centre, i);
        piece.u_preprocessed.sum = &sum;
        const vec3 source = unpremultiplied<opaque>(load<WordVector>(pixels.source + i));
        const vec3 colour = piece.fx_main(TapSampler(), source, Offset(), Offset());
        store(planes->red + i, colour.r.v);
        store(planes->green + i, colour.g.v);
        store(planes->blue + i, colour.b.v);
    }
}

template <bool opaque>
static void finish(const Convolve &convolve, const Pixels &pixels, const uint32_t *centre,
                   Strip *planes, uint32_t *target)
{
    switch (convolve.kind) {
    case Convolution::BlurPre:
        prePass<BlurPrePiece>(*planes, centre, pixels.count, target);
        return;
    case Convolution::SharpenPre:
        prePass<SharpenPrePiece>(*planes, centre, pixels.count, target);
        return;
    case Convolution::Blur:
        colourOfSums<BlurPiece, opaque>(convolve.pass, pixels, centre, planes);
        break;
    case Convolution::Sharpen:
        colourOfSums<SharpenPiece, opaque>(convolve.pass, pixels, centre, planes);
        break;
    }
    maskAndCompose<opaque>(convolve.pass, pixels, planes, target);
}

// Whether the piece and the main shader leave the sum as it is.
static bool isSumItself(const Convolve &convolve)
{
    const Pass &pass = convolve.pass;
    switch (convolve.kind) {
    case Convolution::BlurPre:
        return true;
    case Convolution::SharpenPre:
        return pass.opaque;
    case Convolution::Blur:
        return pass.opaque && pass.mask == Mask::None && pass.blendMode == 0 && pass.alpha == 1.0F;
    case Convolution::Sharpen:
        break;
    }
    return false;
}

template <class Kind>
static void convolveStrips(const Convolve &convolve, const void *const *first,
                           const void *const *second, const uint32_t *centre, const Pixels &pixels,
                           uint32_t *target)
{
    const auto finishStrip = convolve.pass.opaque ? finish<true> : finish<false>;
    const float scale = Kind::scale(convolve.sums);
    const bool plain = isSumItself(convolve);
    for (int from = 0; from < pixels.count; from += strip) {
        const Pixels piece = part(pixels, from);
        typename Kind::Sum sums[sumCount];
        sumUp<Kind>(convolve.sums, first, second, 4 * from, 4 * piece.count, sums);
        if (plain) {
            toPixelsAsTheyAre(sums, scale, centre + from, piece.count, target + from);
            continue;
        }
        Strip planes;
        toPlanes(sums, scale, piece.count, &planes);
        finishStrip(convolve, piece, centre + from, &planes, target + from);
    }
}

void convolve(const Convolve &convolve, const void *const *first, const void *const *second,
              const uint32_t *centre, const Pixels &pixels, uint32_t *target)
{
    const auto run =
        convolve.sums.integers ? convolveStrips<IntegerSums> : convolveStrips<FloatSums>;
    run(convolve, first, second, centre, pixels, target);
}
