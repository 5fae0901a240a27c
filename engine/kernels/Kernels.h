#pragma once

#include <stdint.h>

namespace ko::imagefx::engine
{

// What the rest of the engine knows of the code that exists once for every set of processor
// instructions. Plain data and functions only: nothing here may make the compiler emit code that
// two of those units would share.
//
// A row is an array of 32-bit pixels, red in the lowest byte, alpha in the highest; premultiplied.
// Every row that a kernel reads or writes must have room for `rowSlack` more pixels than it is told
// to handle: it works on whole vectors. What it leaves there means nothing.
constexpr int rowSlack = 32;
// What a convolution reads, see TapRows, is read in larger pieces: numbers for up to this many
// pixels at once.
constexpr int sumPixels = 64;

// Which piece makes the colour of a pass.
enum class Colour : int {
    BrightnessContrast,  // uniforms: brightness, contrast
    ChannelShift,        // red, green, blue
    ColorFill,           // red, green, blue, alpha
    Exposure,            // table
    GrayScale,           // red, green, blue, adding up to 1
    Hsv,                 // hue, saturation, value
    LookupTable,         // table
    SelectiveSaturation, // table, of 360
    Batch,               // the pixels of Pixels::batch
};
constexpr int colourCount = 9;

enum class Mask : int { None, Distance, Hue, Luminance };

// One row of texels as pixels, read with nearest filtering.
struct Table {
    const uint32_t *texels;
    int32_t width;
};

// One effect over pixels that do not see each other, with everything that decides over a pixel.
struct Pass {
    Colour colour;
    Mask mask;
    int32_t blendMode; // 0 to 15, 0 is Normal
    float alpha;       // times the global alpha
    float uniforms[4];
    Table table;
    Table gradient;
    bool opaque; // every alpha of the source is 255
};

// A run of pixels of one row.
struct Pixels {
    const uint32_t *source;
    const uint32_t *batch; // for Colour::Batch: the result of the nested effects
    int32_t count;
    // The place of the first one, and the size of the whole picture: distance masks want it.
    int32_t x;
    int32_t y;
    int32_t width;
    int32_t height;
};

// The passes that see neighbours, two for each effect.
enum class Convolution : int { BlurPre, Blur, SharpenPre, Sharpen };

constexpr int mostTaps = 33;

// How a convolution is summed up. Of taps at a and b with the same weight, pairs; the rest single.
struct Sums {
    int32_t pairs;
    int32_t singles; // their weights follow those of the pairs
    float weights[mostTaps];
    // The same as whole numbers, as large as 16 bits with a sign and sums of 32 bits allow.
    int16_t weights16[mostTaps];
    // Turns sums of levels times these weights into 0 to 1.
    float scale16;
    bool integers; // whether to sum up whole numbers
};

// One pass that sees neighbours. Blur and Sharpen use all of `pass` (uniforms[0]: the strength)
// but its colour; the others only `opaque`.
struct Convolve {
    Convolution kind;
    Sums sums;
    Pass pass;
};

// What taps read, as expand16() or expandFloat() made it.
struct TapRows {
    // Red of tap i for the first pixel is at first[i], and for a pair its other half at second[i].
    // Behind the last one that is needed there may be anything up to the next multiple of
    // sumPixels, but it must be there.
    const void *const *first;
    const void *const *second;
    int64_t plane; // from a colour to the next, in numbers
};

// Every kernel of one set of instructions.
struct Kernels {
    const char *name;

    // What the pass makes of the pixels; `target` may be `source`.
    void (*point)(const Pass &pass, const Pixels &pixels, uint32_t *target);

    // Looks each of red, green and blue up by itself; alpha stays. `target` may be `source`.
    void (*lookUp)(const uint8_t red[256], const uint8_t green[256], const uint8_t blue[256],
                   const uint32_t *source, uint32_t *target, int count);

    // Prepares pixels for convolve(): their red, green and blue as levels of 16 bits, or as floats
    // from 0 to 1, the three `plane` numbers apart. Nothing is written behind a plane.
    void (*expand16)(const uint32_t *row, uint16_t *target, int64_t plane, int count);
    void (*expandFloat)(const uint32_t *row, float *target, int64_t plane, int count);

    // Sums up what expand16() (with sums.integers) or expandFloat() made, then does to the sums
    // what the piece does. pixels.source has the centre pixels as bytes: for Blur and Sharpen those
    // of the effect's source, for the others those that are convolved. `centre` has the centre
    // pixels of what is convolved as bytes. `target` may not overlap with any of them.
    void (*convolve)(const Convolve &convolve, const TapRows &rows, const uint32_t *centre,
                     const Pixels &pixels, uint32_t *target);
};

const Kernels &kernelsScalar();
#if defined(__x86_64__)
const Kernels &kernelsSse2();
const Kernels &kernelsSse41();
const Kernels &kernelsAvx2();
const Kernels &kernelsAvx512();
#elif defined(__aarch64__)
const Kernels &kernelsNeon();
#endif

} // namespace ko::imagefx::engine
