#include "engine/TapFinder.h"

#include "imagefx/effects/BlurKernel.h"

#include <algorithm>
#include <cmath>

namespace ko::imagefx::engine
{

namespace
{

// The words of the pieces with other meanings: a colour is a sum of weighted places, and
// coordinates count pixels from the centre.

struct Place {
    float r = 0.0F;
    float g = 0.0F;

    Place() = default;
    Place(float x, float y) : r(x), g(y) {}
};
Place operator+(const Place &a, const Place &b)
{
    return {a.r + b.r, a.g + b.g};
}
Place operator-(const Place &a, const Place &b)
{
    return {a.r - b.r, a.g - b.g};
}
Place operator*(float a, const Place &b)
{
    return {a * b.r, a * b.g};
}

// What differs from pixel to pixel and is no sum of places: nothing is known of it here.
struct Unknown {
};
Unknown operator+(Unknown, Unknown)
{
    return {};
}
Unknown step(Unknown, float)
{
    return {};
}

struct WeightedPlace {
    Place place;
    float weight;
};

struct Source;

struct Sum {
    std::vector<WeightedPlace> places;
    Unknown a;

    Sum() = default;
    explicit Sum(const Place &place) : places{{place, 1.0F}} {}
    Sum(const Sum &colour, Unknown) : places(colour.places) {}
    Sum(const Source &colour, Unknown);
    const Sum &colour() const { return *this; }
};
Sum operator*(Sum sum, float factor)
{
    for (WeightedPlace &weighted : sum.places) {
        weighted.weight *= factor;
    }
    return sum;
}
Sum &operator/=(Sum &sum, float divisor)
{
    for (WeightedPlace &weighted : sum.places) {
        weighted.weight /= divisor;
    }
    return sum;
}
Sum &operator+=(Sum &sum, const Sum &other)
{
    sum.places.insert(sum.places.end(), other.places.begin(), other.places.end());
    return sum;
}
// A pixel's own divisor, the same for the whole sum.
Sum operator/(const Sum &sum, Unknown)
{
    return sum;
}

// The colour of the effect's source, and what is made of it and the sum: of the two the sum counts.
struct Source {
    Sum sum;

    Source() = default;
    Source(const Sum &other) : sum(other) {}
    Source &operator+=(const Sum &other)
    {
        sum += other;
        return *this;
    }
};
Sum::Sum(const Source &colour, Unknown) : places(colour.sum.places) {}
Source operator-(const Source &, const Sum &sum)
{
    return sum;
}
Source operator+(const Source &, const Source &difference)
{
    return difference;
}
Source operator*(const Source &difference, float)
{
    return difference;
}

struct PlaceSampler {
};
Sum texture2D(PlaceSampler, const Place &place)
{
    return Sum(place);
}
float dFdx(float)
{
    return 1.0F;
}
float dFdy(float)
{
    return 1.0F;
}

struct Blur {
    int SAMPLES;
    QVector<float> w;
};

struct Sharpen {
    int RADIUS;
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-parameter" // pieces take more than they use
#define lowp
#define mediump
#define varying
#define uniform
#define sampler2D PlaceSampler
#define vec2 Place
#define vec3 Source
#define vec4 Sum
#define x r
#define y g
#define rgb colour()

struct BlurPrePiece : Blur {
    Sum gl_FragColor;
#include "imagefx/lib/shaders/fx_blur_pre.frag"
};

struct BlurPiece : Blur {
#include "imagefx/lib/shaders/fx_blur.frag"
};

struct SharpenPrePiece : Sharpen {
    Sum gl_FragColor;
#include "imagefx/lib/shaders/fx_sharpen_pre.frag"
};

struct SharpenPiece : Sharpen {
#include "imagefx/lib/shaders/fx_sharpen.frag"
};

#undef lowp
#undef mediump
#undef varying
#undef uniform
#undef sampler2D
#undef vec2
#undef vec3
#undef vec4
#undef x
#undef y
#undef rgb
#pragma GCC diagnostic pop

template <class Piece>
void prepareBlur(Piece *piece, float radius)
{
    const int count = tapCount(radius);
    piece->SAMPLES = count + 1;
    piece->w = blurWeights(count);
    piece->u_radius = radius;
}

template <class Piece>
void prepareSharpen(Piece *piece, float radius)
{
    piece->RADIUS = tapCount(radius);
    piece->u_radius = radius;
}

template <class Piece>
Sum sumOfPrePass(Piece *piece)
{
    piece->main();
    return piece->gl_FragColor;
}

template <class Piece>
Sum sumOfMainPass(Piece *piece)
{
    return piece->fx_main({}, {}, {}, {}).sum;
}

Sum sumOf(Convolution kind, float radius)
{
    switch (kind) {
    case Convolution::BlurPre: {
        BlurPrePiece piece{};
        prepareBlur(&piece, radius);
        return sumOfPrePass(&piece);
    }
    case Convolution::Blur: {
        BlurPiece piece{};
        prepareBlur(&piece, radius);
        return sumOfMainPass(&piece);
    }
    case Convolution::SharpenPre: {
        SharpenPrePiece piece{};
        prepareSharpen(&piece, radius);
        return sumOfPrePass(&piece);
    }
    case Convolution::Sharpen: {
        SharpenPiece piece{};
        prepareSharpen(&piece, radius);
        return sumOfMainPass(&piece);
    }
    }
    return {};
}

// Nearest filtering, seen from the middle of a texel.
int nearestTexel(float place)
{
    return int(std::floor(place + 0.5F));
}

// The larger, the finer; but a weight has 15 bits, and the sum of 255 levels times all of them 31.
void setWholeWeights(Sums *sums)
{
    constexpr float largestWeight = 32767.0F;
    constexpr float largestSum = 8388608.0F;
    constexpr float levels = 255.0F;
    const int taps = sums->pairs + sums->singles;
    const float heaviest = *std::max_element(sums->weights, sums->weights + taps);
    const float one = std::min(largestWeight / heaviest, largestSum);
    int total = 0;
    for (int i = 0; i < taps; ++i) {
        const auto weight = int16_t(std::lround(sums->weights[i] * one));
        sums->weights16[i] = weight;
        total += i < sums->pairs ? 2 * weight : weight;
    }
    sums->scale16 = 1.0F / (levels * float(total));
}

} // namespace

bool isVertical(Convolution kind)
{
    return kind == Convolution::BlurPre || kind == Convolution::Sharpen;
}

std::vector<Tap> findTaps(Convolution kind, float radiusInPixels)
{
    std::vector<Tap> taps;
    const Sum sum = sumOf(kind, radiusInPixels);
    taps.reserve(sum.places.size());
    for (const WeightedPlace &weighted : sum.places) {
        const Place &place = weighted.place;
        taps.push_back({nearestTexel(isVertical(kind) ? place.g : place.r), weighted.weight});
    }
    std::stable_sort(taps.begin(), taps.end(),
                     [](const Tap &a, const Tap &b) { return a.offset < b.offset; });
    std::vector<Tap> merged;
    merged.reserve(taps.size());
    for (const Tap &tap : taps) {
        if (!merged.empty() && merged.back().offset == tap.offset) {
            merged.back().weight += tap.weight;
        } else {
            merged.push_back(tap);
        }
    }
    return merged;
}

void arrangeTaps(const std::vector<Tap> &taps, Sums *sums, std::vector<int> *first,
                 std::vector<int> *second)
{
    *sums = {};
    first->clear();
    second->clear();
    std::vector<Tap> singles;
    singles.reserve(taps.size());
    const auto at = [&taps](int offset) {
        return std::find_if(taps.begin(), taps.end(),
                            [offset](const Tap &tap) { return tap.offset == offset; });
    };
    for (const Tap &tap : taps) {
        const auto other = at(-tap.offset);
        const bool paired = tap.offset != 0 && other != taps.end() && other->weight == tap.weight;
        if (!paired) {
            singles.push_back(tap);
        } else if (tap.offset > 0) {
            sums->weights[sums->pairs++] = tap.weight;
            first->push_back(tap.offset);
            second->push_back(-tap.offset);
        }
    }
    for (const Tap &tap : singles) {
        sums->weights[sums->pairs + sums->singles++] = tap.weight;
        first->push_back(tap.offset);
    }
    setWholeWeights(sums);
}

} // namespace ko::imagefx::engine
