#pragma once

#include "tests/support/FloatRange.h"
#include "tests/support/PictureTester.h"

#include <QtCore/QPointF>
#include <QtCore/QVector>

#include <array>
#include <functional>

namespace ko::imagefx::test
{

// The effects once more, as plain formulas on the CPU: what a GPU's pictures are compared with. It
// shares no code with the library. Colours are un-premultiplied, 0 to 1.

// For comparePictures(): a colour is rounded to one of 256 levels when it is written, and a driver
// may choose either of the nearest two.
constexpr double roundingTolerance = 1.0;

using ModelEffect = std::function<ColorRange(const ColorRange &source)>;

ModelEffect modelBrightnessContrast(double brightness, double contrast);
ModelEffect modelChannelShift(double red, double green, double blue);
ModelEffect modelColorFill(double red, double green, double blue);
// The weights as set; they are scaled to add up to 1.
ModelEffect modelGrayScale(double red, double green, double blue);
ModelEffect modelHsv(double hue, double saturation, double value);

// One channel; `mode` is the number of the blend mode, 0 to 15.
FloatRange modelBlend(int mode, const FloatRange &a, const FloatRange &b);

using ModelGradient = std::array<double, 512>; // 0 to 1

enum class ModelInterpolation { Constant, Linear, Hermite };

struct ModelStop {
    double location; // 0 to 1
    double value;    // 0 to 1
};

ModelGradient modelGradient(QVector<ModelStop> stops, ModelInterpolation interpolation,
                            bool cyclic);

enum class ModelMaskKind { None, Distance, Hue, Luminance };

struct ModelMask {
    ModelMaskKind kind = ModelMaskKind::None;
    ModelGradient gradient{};
};

// One effect with everything that decides over a pixel.
struct EffectModel {
    // How far an interpolated position may miss, in units in the last place of numbers below 1: it
    // is a sum of products of such numbers, each rounded.
    static constexpr double positionUlps = 2.0;

    ModelEffect effect; // none: the source's colour
    int blendMode = 0;
    double alpha = 1.0;
    ModelMask mask;
    FloatPrecision precision = SinglePrecision;

    // What a pixel of premultiplied bytes (red, green, blue, alpha) becomes. `position` is its
    // centre in clip space, -1 to 1.
    PixelRange pixel(const uchar *premultiplied, const QPointF &position) const;

    // What a picture of RGBA8888 bytes, premultiplied, becomes.
    ExpectedPixel over(const QImage &source) const;
};

} // namespace ko::imagefx::test
