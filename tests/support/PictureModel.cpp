#include "tests/support/PictureModel.h"

#include <algorithm>
#include <cmath>

namespace ko::imagefx::test
{

namespace
{

// How far from the middle between two levels a GPU may still round to the farther one, beside what
// the numbers themselves may miss: the software renderer converts in steps of 1/256 of a level.
constexpr double roundingSlack = 1.0 / 256.0;
// A pixel with more colours that are possible counts as unknown.
constexpr int maximumColors = 64;
// In levels. A pixel with a wider range is not compared: a driver may have gone either way.
constexpr double widestRange = 2.0;

constexpr PixelRange anyColor(int alpha)
{
    return {{{0.0, 255.0}, {0.0, 255.0}, {0.0, 255.0}, {double(alpha), double(alpha)}}};
}

PixelRange united(const PixelRange &a, const PixelRange &b)
{
    PixelRange range;
    for (size_t i = 0; i < range.size(); ++i) {
        range[i] = {std::min(a[i].low, b[i].low), std::max(a[i].high, b[i].high)};
    }
    return range;
}

// Into a framebuffer of 8 bits.
ModelPixel written(const PixelRange &range)
{
    ModelPixel pixel;
    for (size_t i = 0; i < pixel.low.size(); ++i) {
        const double low = std::ceil(range[i].low - 0.5 - roundingSlack);
        const double high = std::floor(range[i].high + 0.5 + roundingSlack);
        pixel.low[i] = int(std::clamp(low, 0.0, 255.0));
        pixel.high[i] = int(std::clamp(high, 0.0, 255.0));
    }
    pixel.alpha = int(range[3].low);
    return pixel;
}

FloatRange channelOf(const ModelPixel &pixel, size_t channel, FloatPrecision precision)
{
    return {FloatRange::rounded(pixel.low[channel] / 255.0, precision).low,
            FloatRange::rounded(pixel.high[channel] / 255.0, precision).high, precision};
}

ColorRange colorOf(const ModelPixel &pixel, FloatPrecision precision)
{
    return {channelOf(pixel, 0, precision), channelOf(pixel, 1, precision),
            channelOf(pixel, 2, precision)};
}

ColorRange dividedByAlpha(const ColorRange &color, int alpha)
{
    // A transparent centre keeps its colour.
    const FloatRange divisor =
        alpha > 0 ? FloatRange::rounded(alpha / 255.0, color[0].precision) : FloatRange(1.0);
    return {color[0] / divisor, color[1] / divisor, color[2] / divisor};
}

enum class Direction { Horizontal, Vertical };

// A row or a column of taps on both sides of a pixel.
struct Kernel {
    Direction direction;
    double step;             // from tap to tap, in pixels
    QVector<double> weights; // centre first

    ColorRange over(const ModelPicture &picture, int x, int y, FloatPrecision precision) const;
};

ColorRange tap(const ModelPicture &picture, int x, int y, FloatPrecision precision)
{
    return colorOf(picture.at(x, y), precision);
}

void add(ColorRange &sum, const ColorRange &color, const FloatRange &weight)
{
    for (size_t i = 0; i < sum.size(); ++i) {
        sum[i] = sum[i] + color[i] * weight;
    }
}

bool areSame(const ColorRange &a, const ColorRange &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), [](const FloatRange &c, const FloatRange &d) {
        return c.low == d.low && c.high == d.high;
    });
}

ColorRange Kernel::over(const ModelPicture &picture, int x, int y, FloatPrecision precision) const
{
    const ColorRange anything = {FloatRange::anything(), FloatRange::anything(),
                                 FloatRange::anything()};
    const auto at = [&](double distance) {
        const auto read = [&](int offset) {
            return direction == Direction::Horizontal ? tap(picture, x + offset, y, precision)
                                                      : tap(picture, x, y + offset, precision);
        };
        const int nearest = int(std::floor(distance + 0.5 - tapError));
        const int farther = int(std::floor(distance + 0.5 + tapError));
        const ColorRange color = read(nearest);
        return nearest == farther || areSame(color, read(farther)) ? color : anything;
    };
    ColorRange sum = {0.0, 0.0, 0.0};
    for (int i = 0; i < weights.size(); ++i) {
        const FloatRange weight = FloatRange::rounded(weights.at(i), precision);
        add(sum, at(i > 0 ? i * step + tapBeyond : 0.0), weight);
        if (i > 0) {
            add(sum, at(-(i * step + tapBeyond)), weight);
        }
    }
    return sum;
}

// Through a framebuffer.
template <class Color>
ModelPicture preprocessed(const ModelPicture &source, Color colorAt)
{
    ModelPicture result{source.size, {}};
    for (int y = 0; y < source.size.height(); ++y) {
        for (int x = 0; x < source.size.width(); ++x) {
            const ColorRange color = colorAt(x, y);
            PixelRange range = anyColor(source.at(x, y).alpha);
            for (size_t i = 0; i < color.size(); ++i) {
                range[i] = {255.0 * color[i].low, 255.0 * color[i].high};
            }
            result.pixels.append(written(range));
        }
    }
    return result;
}

int tapsOf(double radiusInPixels)
{
    return std::clamp(int(radiusInPixels), 1, 16);
}

QVector<double> boxWeights(int taps)
{
    return QVector<double>(taps + 1, 1.0);
}

// Every colour that the pixel may have, through the formulas for exact colours.
PixelRange pixelAfter(const EffectModel &model, const ModelPixel &pixel, const QPointF &position)
{
    int colors = 1;
    for (size_t i = 0; i < pixel.low.size(); ++i) {
        colors *= pixel.high[i] - pixel.low[i] + 1;
        if (colors > maximumColors) {
            return anyColor(pixel.alpha);
        }
    }
    PixelRange range;
    bool isFirst = true;
    for (int red = pixel.low[0]; red <= pixel.high[0]; ++red) {
        for (int green = pixel.low[1]; green <= pixel.high[1]; ++green) {
            for (int blue = pixel.low[2]; blue <= pixel.high[2]; ++blue) {
                const std::array<uchar, 4> bytes = {uchar(red), uchar(green), uchar(blue),
                                                    uchar(pixel.alpha)};
                const PixelRange part = model.pixel(bytes.data(), position);
                range = isFirst ? part : united(range, part);
                isFirst = false;
            }
        }
    }
    return range;
}

QVector<PixelRange> drawn(const ModelMember &member, const ModelPicture &source,
                          const ModelFrame &frame)
{
    EffectModel model;
    model.blendMode = member.blendMode;
    model.alpha = member.alpha * frame.globalAlpha;
    model.mask = member.mask;
    model.precision = frame.precision;
    const PixelEffect effect = member.effect(source, frame);
    QVector<PixelRange> pixels;
    for (int y = 0; y < source.size.height(); ++y) {
        for (int x = 0; x < source.size.width(); ++x) {
            const QPointF position(2.0 * (x + 0.5) / source.size.width() - 1.0,
                                   2.0 * (y + 0.5) / source.size.height() - 1.0);
            model.effect = effect(x, y);
            pixels.append(pixelAfter(model, source.at(x, y), position));
        }
    }
    return pixels;
}

ModelPicture written(const QVector<PixelRange> &pixels, const QSize &size)
{
    ModelPicture picture{size, {}};
    for (const PixelRange &pixel : pixels) {
        picture.pixels.append(written(pixel));
    }
    return picture;
}

bool isDoubtful(const PixelRange &pixel)
{
    return std::any_of(pixel.begin(), pixel.end(), [](const LevelRange &level) {
        return level.high - level.low > widestRange;
    });
}

} // namespace

ModelPicture ModelPicture::of(const QImage &image)
{
    ModelPicture picture{image.size(), {}};
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const uchar *bytes = image.constScanLine(y) + ptrdiff_t(4) * x;
            const std::array<int, 3> color = {bytes[0], bytes[1], bytes[2]};
            picture.pixels.append({color, color, bytes[3]});
        }
    }
    return picture;
}

const ModelPixel &ModelPicture::at(int x, int y) const
{
    const int column = std::clamp(x, 0, size.width() - 1);
    const int row = std::clamp(y, 0, size.height() - 1);
    return pixels.at(row * size.width() + column);
}

PictureEffect pictureEffect(const ModelEffect &effect)
{
    return [effect](const ModelPicture &, const ModelFrame &) {
        return [effect](int, int) { return effect; };
    };
}

QVector<double> modelBlurWeights(int taps)
{
    const double sigma = (taps + 1) / 3.333333;
    QVector<double> weights;
    double sum = 0.0;
    for (int i = 0; i <= taps; ++i) {
        weights.append(std::exp(-double(i) * i / (2.0 * sigma * sigma)));
        sum += i == 0 ? weights.last() : 2.0 * weights.last();
    }
    constexpr double decimals = 1e6;
    for (double &weight : weights) {
        weight = std::round(weight / sum * decimals) / decimals;
    }
    return weights;
}

PictureEffect modelBlur(double radius)
{
    return [radius](const ModelPicture &source, const ModelFrame &frame) -> PixelEffect {
        const double reach = radius * frame.renderScale;
        const int taps = tapsOf(reach);
        const FloatPrecision precision = frame.precision;
        const double step = reach / (taps + 1);
        const QVector<double> weights = modelBlurWeights(taps);
        const Kernel vertical{Direction::Vertical, step, weights};
        const Kernel horizontal{Direction::Horizontal, step, weights};
        const ModelPicture columns = preprocessed(
            source, [&](int x, int y) { return vertical.over(source, x, y, precision); });
        return [columns, horizontal, precision](int x, int y) -> ModelEffect {
            const ColorRange blurred = horizontal.over(columns, x, y, precision);
            return [blurred](const ColorRange &) { return blurred; };
        };
    };
}

PictureEffect modelSharpen(double strength, double radius)
{
    return [=](const ModelPicture &source, const ModelFrame &frame) -> PixelEffect {
        const double reach = radius * frame.renderScale;
        const int taps = tapsOf(reach);
        const FloatPrecision precision = frame.precision;
        const Kernel horizontal{Direction::Horizontal, reach / taps, boxWeights(taps)};
        const Kernel vertical{Direction::Vertical, reach / taps, boxWeights(taps)};
        const auto mean = [taps](const ColorRange &sum) -> ColorRange {
            const double count = 2 * taps + 1;
            return {sum[0] / count, sum[1] / count, sum[2] / count};
        };
        const ModelPicture rows = preprocessed(source, [&](int x, int y) {
            return dividedByAlpha(mean(horizontal.over(source, x, y, precision)),
                                  source.at(x, y).alpha);
        });
        const FloatRange share = FloatRange::rounded(strength, precision);
        return [rows, vertical, mean, share, precision](int x, int y) -> ModelEffect {
            const ColorRange blurred =
                dividedByAlpha(mean(vertical.over(rows, x, y, precision)), rows.at(x, y).alpha);
            return [blurred, share](const ColorRange &centre) {
                ColorRange color;
                for (size_t i = 0; i < color.size(); ++i) {
                    color[i] = centre[i] + (centre[i] - blurred[i]) * share;
                }
                return color;
            };
        };
    };
}

// The result of the members comes out of a framebuffer, and is un-premultiplied. Without any to
// draw it is the source.
PictureEffect modelBatch(const ModelStack &members)
{
    return [members](const ModelPicture &source, const ModelFrame &frame) -> PixelEffect {
        ModelPicture result = source;
        for (const ModelMember &member : members) {
            if (!member.skippedInBatch) {
                result = written(drawn(member, result, frame), result.size);
            }
        }
        const FloatPrecision precision = frame.precision;
        return [result, precision](int x, int y) -> ModelEffect {
            const ModelPixel &pixel = result.at(x, y);
            const ColorRange color = dividedByAlpha(colorOf(pixel, precision), pixel.alpha);
            return [color](const ColorRange &) { return color; };
        };
    };
}

StackPicture::StackPicture(const ModelStack &stack, const QImage &source, const ModelFrame &frame)
    : m_size(source.size())
{
    ModelPicture picture = ModelPicture::of(source);
    for (const ModelMember &member : stack) {
        m_pixels = drawn(member, picture, frame);
        picture = written(m_pixels, m_size);
    }
}

ExpectedPixel StackPicture::expected() const
{
    return [pixels = m_pixels, width = m_size.width()](int x, int y) {
        const PixelRange &pixel = pixels.at(y * width + x);
        return isDoubtful(pixel) ? anyColor(int(pixel[3].low)) : pixel;
    };
}

double StackPicture::leftOut() const
{
    return double(std::count_if(m_pixels.begin(), m_pixels.end(), isDoubtful)) / m_pixels.size();
}

} // namespace ko::imagefx::test
