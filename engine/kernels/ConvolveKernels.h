// Passes that see neighbours: sums of rows or columns over strips that stay in the nearest cache,
// then what the piece does to the sum.

constexpr int colours = 3;

template <class Number, class Make>
static KORVEL_INLINE void expand(const uint32_t *row, Number *target, int64_t plane, int count,
                                 const Make &make)
{
    for (int colour = 0; colour < colours; ++colour) {
        for (int i = 0; i < count; ++i) {
            target[colour * plane + i] = make(row[i] >> (8 * colour) & 255);
        }
    }
}

void expand16(const uint32_t *row, uint16_t *target, int64_t plane, int count)
{
    expand(row, target, plane, count, [](uint32_t level) { return uint16_t(level); });
}

void expandFloat(const uint32_t *row, float *target, int64_t plane, int count)
{
    expand(row, target, plane, count,
           [](uint32_t level) { return float(int32_t(level)) * (1.0F / 255.0F); });
}

// Sums of levels as whole numbers.
struct IntegerSums {
    using Number = uint16_t;
    using Vector = ShortVector;
    using Accumulator = ProductSum;
    static constexpr int width = 2 * lanes;
    static constexpr int block = lanes == 16 ? 2 : 1;

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
    static KORVEL_INLINE void put(const Accumulator &sum, float scale, float *target)
    {
        int32_t whole[width];
        storeInOrder(sum, whole);
        for (int i = 0; i < width; ++i) {
            target[i] = float(whole[i]) * scale;
        }
    }
};

struct FloatSums {
    using Number = float;
    using Vector = FloatVector;
    using Accumulator = FloatVector;
    static constexpr int width = lanes;
    static constexpr int block = lanes == 16 ? 4 : 2;

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
    static KORVEL_INLINE void put(const Accumulator &sum, float, float *target)
    {
        store(target, sum);
    }
};

// A few vectors of each colour and two taps at a time, so that weights and sums stay in registers.
template <class Kind>
KORVEL_KERNEL void sumUp(const Sums &sums, const TapRows &rows, int from, int count, Strip *planes)
{
    using Number = typename Kind::Number;
    using Vector = typename Kind::Vector;
    constexpr int vectors = colours * Kind::block;
    constexpr int64_t width = Kind::width;
    static_assert(sumPixels % (Kind::block * width) == 0, "it would read beyond what is there");
    float *const targets[colours] = {planes->red, planes->green, planes->blue};
    const float scale = Kind::scale(sums);
    const int taps = sums.pairs + sums.singles;
    for (int64_t offset = 0; offset < count; offset += Kind::block * width) {
        const auto single = [&](const void *tap, int k) {
            return load<Vector>(static_cast<const Number *>(tap) + from + offset +
                                k / Kind::block * rows.plane + k % Kind::block * width);
        };
        const auto pair = [&](int i, int k) {
            return Vector(single(rows.first[i], k) + single(rows.second[i], k));
        };
        typename Kind::Accumulator sum[vectors] = {};
        int i = 0;
        for (; i + 1 < sums.pairs; i += 2) {
#pragma GCC unroll 12
            for (int k = 0; k < vectors; ++k) {
                Kind::add(sum[k], pair(i, k), pair(i + 1, k), sums, i);
            }
        }
        for (; i < taps; ++i) {
#pragma GCC unroll 12
            for (int k = 0; k < vectors; ++k) {
                Kind::add(sum[k], i < sums.pairs ? pair(i, k) : single(rows.first[i], k), sums, i);
            }
        }
#pragma GCC unroll 12
        for (int k = 0; k < vectors; ++k) {
            Kind::put(sum[k], scale, targets[k / Kind::block] + offset + k % Kind::block * width);
        }
    }
}

// The sums as they are, but for the alpha, which is the centre's.
KORVEL_KERNEL void toPixelsAsTheyAre(const Strip &planes, const uint32_t *centre, int count,
                                     uint32_t *target)
{
    const auto byte = [](const float *sum) {
        return (WordVector)(load<FloatVector>(sum) * 255.0F + roundingOffset) & 255;
    };
    for (int i = 0; i < count; i += lanes) {
        const WordVector alpha = load<WordVector>(centre + i) & 0xff000000U;
        store(target + i, byte(planes.red + i) | (byte(planes.green + i) << 8) |
                              (byte(planes.blue + i) << 16) | alpha);
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
static void convolveStrips(const Convolve &convolve, const TapRows &rows, const uint32_t *centre,
                           const Pixels &pixels, uint32_t *target)
{
    const auto finishStrip = convolve.pass.opaque ? finish<true> : finish<false>;
    const bool plain = isSumItself(convolve);
    for (int from = 0; from < pixels.count; from += strip) {
        const Pixels piece = part(pixels, from);
        Strip planes;
        sumUp<Kind>(convolve.sums, rows, from, piece.count, &planes);
        if (plain) {
            toPixelsAsTheyAre(planes, centre + from, piece.count, target + from);
        } else {
            finishStrip(convolve, piece, centre + from, &planes, target + from);
        }
    }
}

void convolve(const Convolve &convolve, const TapRows &rows, const uint32_t *centre,
              const Pixels &pixels, uint32_t *target)
{
    const auto run =
        convolve.sums.integers ? convolveStrips<IntegerSums> : convolveStrips<FloatSums>;
    run(convolve, rows, centre, pixels, target);
}
