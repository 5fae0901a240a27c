#include "tests/support/EffectModel.h"

#include <algorithm>
#include <cmath>

namespace ko::imagefx::test
{

namespace
{

// Equal channels come from equal bytes, so they are equal whatever the rounding.
bool areSame(const FloatRange &a, const FloatRange &b)
{
    return a.low == b.low && a.high == b.high;
}

FloatRange difference(const FloatRange &a, const FloatRange &b)
{
    return areSame(a, b) ? FloatRange(0.0) : a - b;
}

struct Extremes {
    FloatRange maximum;
    FloatRange minimum;
};

Extremes extremesOf(const ColorRange &color)
{
    const auto byLow = [](const FloatRange &a, const FloatRange &b) { return a.low < b.low; };
    const auto ends = std::minmax_element(color.begin(), color.end(), byLow);
    return {*ends.second, *ends.first};
}

// In turns, one turn too many: a number just below 0 or 1 has not been wrapped yet.
FloatRange hueOf(const ColorRange &color)
{
    const auto &[red, green, blue] = color;
    const auto [maximum, minimum] = extremesOf(color);
    if (areSame(maximum, minimum)) {
        return 1.0;
    }
    const FloatRange diff = maximum - minimum;
    if (areSame(red, maximum)) {
        return difference(green, blue) / diff / 6.0 + 1.0;
    }
    if (areSame(green, maximum)) {
        return (2.0 + difference(blue, red) / diff) / 6.0 + 1.0;
    }
    return (4.0 + difference(red, green) / diff) / 6.0 + 1.0;
}

ColorRange sectorColor(int sector, const FloatRange &f, const FloatRange &s, const FloatRange &v)
{
    const FloatRange p = v * (1.0 - s);
    const FloatRange q = v * (1.0 - s * f);
    const FloatRange t = v * (1.0 - s * (1.0 - f));
    switch (sector) {
    case 1:
        return {q, v, p};
    case 2:
        return {p, v, t};
    case 3:
        return {p, q, v};
    case 4:
        return {t, p, v};
    case 5:
        return {v, p, q};
    default:
        return {v, t, p};
    }
}

// A hue near the edge of a sector of 60 degrees may fall on both sides.
ColorRange colorOf(const FloatRange &hue, const FloatRange &s, const FloatRange &v)
{
    const FloatRange sixths = hue * 6.0;
    const int first = int(std::floor(sixths.low));
    const int last = int(std::floor(sixths.high));
    ColorRange color;
    for (int sector = first; sector <= last; ++sector) {
        const FloatRange f(std::max(sixths.low - sector, 0.0), std::min(sixths.high - sector, 1.0),
                           sixths.precision);
        const ColorRange part = sectorColor(sector % 6, f, s, v);
        color = sector == first ? part : united(color, part);
    }
    return color;
}

ColorRange hueTurned(const ColorRange &color, double hue)
{
    constexpr double epsilon = 0.000001;
    const auto [maximum, minimum] = extremesOf(color);
    const FloatRange saturation = difference(maximum, minimum) / (maximum + epsilon);
    const FloatRange turn = FloatRange::rounded(hue, maximum.precision) * 0.5;
    return colorOf(hueOf(color) + 1.0 + turn, saturation, maximum);
}

int roundedHalfUp(double number)
{
    return int(std::floor(number + 0.5));
}

double interpolated(ModelInterpolation interpolation, double a, double b, double t)
{
    switch (interpolation) {
    case ModelInterpolation::Constant:
        return a;
    case ModelInterpolation::Linear:
        return a + (b - a) * t;
    case ModelInterpolation::Hermite:
        break;
    }
    return a + (b - a) * t * t * (3.0 - 2.0 * t);
}

FloatRange distanceOf(const QPointF &position, FloatPrecision precision)
{
    const double error = std::ldexp(EffectModel::positionUlps, -precision);
    const FloatRange x(position.x() - error, position.x() + error, precision);
    const FloatRange y(position.y() - error, position.y() + error, precision);
    return sqrt(abs(x) * abs(x) + abs(y) * abs(y)) / 1.4142135;
}

double texel(const ModelGradient &gradient, int index)
{
    return gradient[size_t(std::clamp(index, 0, int(gradient.size()) - 1))];
}

// A coordinate near the edge of a texel may fall on both sides. `cyclic`: whole turns count for
// nothing.
FloatRange lookUp(const ModelGradient &gradient, const FloatRange &coordinate, bool cyclic)
{
    const int size = int(gradient.size());
    const int first = int(std::floor(coordinate.low * size));
    const int last = int(std::floor(coordinate.high * size));
    FloatRange value;
    for (int index = first; index <= last; ++index) {
        const double opacity = texel(gradient, cyclic ? index % size : index);
        const FloatRange sample = FloatRange::rounded(opacity, coordinate.precision);
        value = index == first ? sample : united(value, sample);
    }
    return value;
}

FloatRange opacityOf(const ModelMask &mask, const ColorRange &color, const QPointF &position,
                     FloatPrecision precision)
{
    switch (mask.kind) {
    case ModelMaskKind::None:
        break;
    case ModelMaskKind::Distance:
        return lookUp(mask.gradient, distanceOf(position, precision), false);
    case ModelMaskKind::Hue: {
        FloatRange hue = hueOf(color);
        hue.precision = precision;
        return lookUp(mask.gradient, hue, true);
    }
    case ModelMaskKind::Luminance:
        return lookUp(mask.gradient, dot({0.333, 0.333, 0.333}, color), false);
    }
    return 1.0;
}

LevelRange levels(const FloatRange &number)
{
    return {255.0 * std::clamp(number.low, 0.0, 1.0), 255.0 * std::clamp(number.high, 0.0, 1.0)};
}

} // namespace

ModelEffect modelBrightnessContrast(double brightness, double contrast)
{
    return [=](const ColorRange &source) {
        const FloatPrecision precision = source[0].precision;
        const FloatRange f = FloatRange::rounded(259.047619 / 255.0, precision);
        const FloatRange lift = FloatRange::rounded(brightness, precision);
        const FloatRange spread = FloatRange::rounded(contrast, precision);
        const FloatRange factor = f * (spread + 1.0) / (f - spread);
        ColorRange color;
        std::transform(source.begin(), source.end(), color.begin(),
                       [&](const FloatRange &c) { return factor * (c + lift - 0.5) + 0.5; });
        return color;
    };
}

ModelEffect modelChannelShift(double red, double green, double blue)
{
    return [=](const ColorRange &source) -> ColorRange {
        const FloatPrecision precision = source[0].precision;
        return {source[0] + FloatRange::rounded(red, precision),
                source[1] + FloatRange::rounded(green, precision),
                source[2] + FloatRange::rounded(blue, precision)};
    };
}

ModelEffect modelColorFill(double red, double green, double blue)
{
    return [=](const ColorRange &source) -> ColorRange {
        const FloatPrecision precision = source[0].precision;
        return {FloatRange::rounded(red, precision), FloatRange::rounded(green, precision),
                FloatRange::rounded(blue, precision)};
    };
}

ModelEffect modelGrayScale(double red, double green, double blue)
{
    return [=](const ColorRange &source) -> ColorRange {
        const FloatPrecision precision = source[0].precision;
        const double sum = red + green + blue;
        const ColorRange factors = {FloatRange::rounded(red / sum, precision),
                                    FloatRange::rounded(green / sum, precision),
                                    FloatRange::rounded(blue / sum, precision)};
        const FloatRange gray = dot(factors, source);
        return {gray, gray, gray};
    };
}

ModelEffect modelHsv(double hue, double saturation, double value)
{
    return [=](const ColorRange &source) {
        const FloatPrecision precision = source[0].precision;
        ColorRange color = hue != 0.0 ? hueTurned(source, hue) : source;
        const FloatRange luma = dot({0.2125, 0.7154, 0.0721}, color);
        const FloatRange stretch = 1.0 + FloatRange::rounded(saturation, precision);
        const FloatRange goal = value >= 0.0 ? 1.0 : 0.0;
        const FloatRange share = FloatRange::rounded(std::abs(value), precision);
        for (FloatRange &channel : color) {
            channel = mix(mix(luma, channel, stretch), goal, share);
        }
        return color;
    };
}

FloatRange modelBlend(int mode, const FloatRange &a, const FloatRange &b)
{
    constexpr double tiny = 0.00001;
    switch (mode) {
    case 1: // add
        return a + b;
    case 2: // subtract
        return a - b;
    case 3: // difference
        return abs(a - b);
    case 4: // multiply
        return a * b;
    case 5: // divide
        return a / (b + tiny);
    case 6: // screen
        return 1.0 - (1.0 - a) * (1.0 - b);
    case 7: // overlay
        return select(a, 0.5, 2.0 * a * b, 1.0 - 2.0 * (1.0 - a) * (1.0 - b));
    case 8: // hard light
        return select(b, 0.5, 2.0 * b * a, 1.0 - 2.0 * (1.0 - b) * (1.0 - a));
    case 9: // soft light
        return select(a, 0.5, 2.0 * a * b + a * a * (1.0 - 2.0 * b),
                      2.0 * a * (1.0 - b) + sqrt(a) * (2.0 * b - 1.0));
    case 10: // linear light
        return a + 2.0 * b - 1.0;
    case 11: // colour dodge
        return a / (1.0 - b + tiny);
    case 12: // colour burn
        return 1.0 - (1.0 - b) / (a + tiny);
    case 13: // linear burn
        return a + b - 1.0;
    case 14: // lighten only
        return max(a, b);
    case 15: // darken only
        return min(a, b);
    default: // normal
        return b;
    }
}

ModelGradient modelGradient(QVector<ModelStop> stops, ModelInterpolation interpolation, bool cyclic)
{
    ModelGradient gradient;
    if (stops.isEmpty()) {
        gradient.fill(1.0);
        return gradient;
    }
    const int size = int(gradient.size());
    const auto positionOf = [size](const ModelStop &stop) {
        return roundedHalfUp(stop.location * size);
    };
    std::stable_sort(stops.begin(), stops.end(), [&](const ModelStop &a, const ModelStop &b) {
        return positionOf(a) < positionOf(b);
    });
    stops.prepend({0.0, stops.first().value});
    if (positionOf(stops.last()) < size) {
        stops.append({1.0, cyclic ? stops.first().value : stops.last().value});
    }
    for (int i = 1; i < stops.size(); ++i) {
        const double a = roundedHalfUp(stops.at(i - 1).value * 255.0);
        const double b = roundedHalfUp(stops.at(i).value * 255.0);
        const int start = positionOf(stops.at(i - 1));
        const int end = positionOf(stops.at(i));
        for (int x = start; x < end; ++x) {
            const double t = double(x - start) / (end - start);
            gradient[size_t(x)] = roundedHalfUp(interpolated(interpolation, a, b, t)) / 255.0;
        }
    }
    gradient.back() = roundedHalfUp(stops.last().value * 255.0) / 255.0;
    return gradient;
}

PixelRange EffectModel::pixel(const uchar *premultiplied, const QPointF &position) const
{
    const FloatRange sourceAlpha = FloatRange::rounded(premultiplied[3] / 255.0, precision);
    if (premultiplied[3] == 0) {
        return {};
    }
    ColorRange source;
    for (size_t i = 0; i < source.size(); ++i) {
        source[i] = FloatRange::rounded(premultiplied[i] / 255.0, precision) / sourceAlpha;
        source[i].precision = precision;
    }
    const ColorRange color = effect ? effect(source) : source;
    const FloatRange share =
        FloatRange::rounded(alpha, precision) * opacityOf(mask, source, position, precision);
    PixelRange range;
    for (size_t i = 0; i < source.size(); ++i) {
        const FloatRange blended = modelBlend(blendMode, source[i], color[i]);
        range[i] = levels(mix(source[i], blended, share) * sourceAlpha);
    }
    range[3] = {double(premultiplied[3]), double(premultiplied[3])};
    return range;
}

ExpectedPixel EffectModel::over(const QImage &source) const
{
    return [this, source](int x, int y) {
        const QPointF position(2.0 * (x + 0.5) / source.width() - 1.0,
                               2.0 * (y + 0.5) / source.height() - 1.0);
        return pixel(source.constScanLine(y) + ptrdiff_t(4) * x, position);
    };
}

} // namespace ko::imagefx::test
