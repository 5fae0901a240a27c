#include "imagefx/model/MaskGradient.h"

#include <algorithm>
#include <cmath>

namespace ko::imagefx
{

namespace
{

struct KeyPoint {
    int value;    // 0 to 255
    int position; // 0 to maskGradientSize
};

// Locations and values can be any float; keep what qRound() gets within an int.
int roundedWithin(float number, float low, float high)
{
    return std::isnan(number) ? 0 : qRound(qBound(low, number, high));
}

KeyPoint keyPoint(const MaskGradientStop &stop)
{
    const auto size = float(maskGradientSize);
    return {roundedWithin(stop.value * 255.0F, -2147483520.0F, 2147483520.0F) & 0xff,
            roundedWithin(stop.location * size, 0.0F, size)};
}

double weight(MaskGradientFill fill, double t)
{
    switch (fill) {
    case MaskGradientFill::Constant:
        return 0.0;
    case MaskGradientFill::Linear:
        return t;
    case MaskGradientFill::Hermite:
        break;
    }
    return t * t * (3.0 - 2.0 * t);
}

QVector<KeyPoint> keyPoints(const QVector<MaskGradientStop> &stops, bool cyclic)
{
    if (stops.isEmpty()) {
        return {{255, 0}, {255, maskGradientSize}};
    }
    QVector<KeyPoint> points;
    points.reserve(stops.size() + 2);
    std::transform(stops.begin(), stops.end(), std::back_inserter(points), keyPoint);
    std::stable_sort(points.begin(), points.end(), [](const KeyPoint &left, const KeyPoint &right) {
        return left.position < right.position;
    });
    if (points.first().position > 0) {
        points.prepend({points.first().value, 0});
    }
    if (points.last().position < maskGradientSize) {
        points.append({cyclic ? points.first().value : points.last().value, maskGradientSize});
    }
    return points;
}

} // namespace

MaskGradient buildMaskGradient(const QVector<MaskGradientStop> &stops, MaskGradientFill fill,
                               bool cyclic)
{
    const QVector<KeyPoint> points = keyPoints(stops, cyclic);
    MaskGradient gradient{};
    KeyPoint left = points.first();
    for (const KeyPoint &right : points) {
        const int length = right.position - left.position;
        for (int i = 0; i < length; ++i) {
            const double t = double(i) / length;
            const double value = left.value + (right.value - left.value) * weight(fill, t);
            gradient.at(size_t(left.position) + size_t(i)) = uchar(qRound(value));
        }
        left = right;
    }
    gradient.back() = uchar(left.value);
    return gradient;
}

int maskGradientIndex(float location)
{
    const auto size = float(maskGradientSize);
    return std::min(roundedWithin(location * size, 0.0F, size), maskGradientSize - 1);
}

} // namespace ko::imagefx
