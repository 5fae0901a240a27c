#pragma once

#include "tests/support/EffectModel.h"

#include <QtCore/QSize>
#include <QtCore/QVector>

#include <functional>

namespace ko::imagefx::test
{

// Whole stacks as plain formulas: what EffectModel.h tells about a pixel, for effects that look at
// its neighbours or hold other effects, with the 8-bit framebuffers between the passes. It shares
// no code with the library.

// A pixel of a framebuffer, premultiplied. A channel that the formulas put close to the middle
// between two levels may have become either, so it has a range.
struct ModelPixel {
    std::array<int, 3> low{};
    std::array<int, 3> high{};
    int alpha = 0; // no effect changes it
};

struct ModelPicture {
    QSize size;
    QVector<ModelPixel> pixels; // row 0 first

    // Of RGBA8888 bytes, premultiplied.
    static ModelPicture of(const QImage &image);
    // What nearest filtering reads there, clamped to the edge.
    const ModelPixel &at(int x, int y) const;
};

// What a renderer tells all effects.
struct ModelFrame {
    double globalAlpha = 1.0;
    double renderScale = 1.0;
    FloatPrecision precision = SinglePrecision;
};

// How far a tap may miss its place, in pixels: texture coordinates of single precision are exact to
// a ten thousandth of a pixel here. A tap that close to the border of two texels that differ may
// read either, and nothing is said about its pixel.
constexpr double tapError = 0.001;
// How much farther out than its place every tap but the centre lies, in pixels: what would be on
// the border of two texels so is in the outer one.
constexpr double tapBeyond = 1.0 / 256.0;

// What an effect makes of the colour at (x, y).
using PixelEffect = std::function<ModelEffect(int x, int y)>;
// An effect prepared for one picture.
using PictureEffect = std::function<PixelEffect(const ModelPicture &source, const ModelFrame &)>;

// One effect of a stack, with everything that decides over the picture.
struct ModelMember {
    PictureEffect effect;
    int blendMode = 0;
    double alpha = 1.0;
    ModelMask mask = {};
    // A batch skips its members that are off or neutral; a renderer draws all of its own.
    bool skippedInBatch = false;
};
using ModelStack = QVector<ModelMember>;

PictureEffect pictureEffect(const ModelEffect &effect);
PictureEffect modelBlur(double radius);
PictureEffect modelSharpen(double strength, double radius);
PictureEffect modelBatch(const ModelStack &members);

// The weights of a blur of N taps on each side: centre first, N + 1 of them, as the shader has
// them.
QVector<double> modelBlurWeights(int taps);

// What a stack makes of a picture of RGBA8888 bytes, premultiplied. Not empty.
class StackPicture
{
public:
    StackPicture(const ModelStack &stack, const QImage &source, const ModelFrame &frame = {});

    ExpectedPixel expected() const;
    // The share of pixels that the model says too little about to compare them.
    double leftOut() const;

private:
    QSize m_size;
    QVector<PixelRange> m_pixels;
};

} // namespace ko::imagefx::test
