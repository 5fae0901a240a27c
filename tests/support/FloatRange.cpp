#include "tests/support/FloatRange.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ko::imagefx::test
{

namespace
{

constexpr double infinity = std::numeric_limits<double>::infinity();

// Every GPU gets such a number right: a sum, say, whose exact value needs no rounding.
bool isRepresentable(double number, FloatPrecision precision)
{
    if (precision == SinglePrecision) {
        return double(float(number)) == number;
    }
    int exponent = 0;
    const double significand = std::ldexp(std::frexp(number, &exponent), precision);
    return std::isinf(number) || significand == std::floor(significand);
}

double roundingError(double number, FloatPrecision precision)
{
    if (precision == ExactPrecision || isRepresentable(number, precision)) {
        return 0.0;
    }
    const bool half = precision == HalfPrecision;
    const double unit = half ? 0x1p-10 : 0x1p-23;
    const double smallest = half ? 0x1p-24 : 0x1p-149;
    return FloatRange::operationUlps * std::max(unit * std::abs(number), smallest);
}

FloatPrecision common(const FloatRange &a, const FloatRange &b)
{
    return std::max(a.precision, b.precision);
}

FloatRange widened(double low, double high, FloatPrecision precision)
{
    if (std::isnan(low) || std::isnan(high)) {
        return FloatRange::anything();
    }
    return {low - roundingError(low, precision), high + roundingError(high, precision), precision};
}

FloatRange widened(const std::array<double, 4> &numbers, FloatPrecision precision)
{
    // NaN anywhere makes the sum NaN.
    if (std::isnan(numbers[0] + numbers[1] + numbers[2] + numbers[3])) {
        return FloatRange::anything();
    }
    const auto [lower, upper] = std::minmax(numbers[0], numbers[1]);
    const auto [least, most] = std::minmax(numbers[2], numbers[3]);
    return widened(std::min(lower, least), std::max(upper, most), precision);
}

} // namespace

FloatRange FloatRange::rounded(double number, FloatPrecision precision)
{
    return widened(number, number, precision);
}

FloatRange FloatRange::anything()
{
    return {-infinity, infinity, SinglePrecision};
}

FloatRange operator+(const FloatRange &a, const FloatRange &b)
{
    return widened(a.low + b.low, a.high + b.high, common(a, b));
}

FloatRange operator-(const FloatRange &a, const FloatRange &b)
{
    return widened(a.low - b.high, a.high - b.low, common(a, b));
}

FloatRange operator*(const FloatRange &a, const FloatRange &b)
{
    return widened(std::array{a.low * b.low, a.low * b.high, a.high * b.low, a.high * b.high},
                   common(a, b));
}

FloatRange operator/(const FloatRange &a, const FloatRange &b)
{
    if (b.low <= 0.0 && b.high >= 0.0) {
        return FloatRange::anything();
    }
    return widened(std::array{a.low / b.low, a.low / b.high, a.high / b.low, a.high / b.high},
                   common(a, b));
}

FloatRange abs(const FloatRange &a)
{
    const double low = std::max({0.0, a.low, -a.high});
    return {low, std::max(-a.low, a.high), a.precision};
}

FloatRange sqrt(const FloatRange &a)
{
    return widened(std::sqrt(a.low), std::sqrt(a.high), a.precision);
}

FloatRange min(const FloatRange &a, const FloatRange &b)
{
    return {std::min(a.low, b.low), std::min(a.high, b.high), common(a, b)};
}

FloatRange max(const FloatRange &a, const FloatRange &b)
{
    return {std::max(a.low, b.low), std::max(a.high, b.high), common(a, b)};
}

FloatRange united(const FloatRange &a, const FloatRange &b)
{
    return {std::min(a.low, b.low), std::max(a.high, b.high), common(a, b)};
}

FloatRange select(const FloatRange &x, double edge, const FloatRange &below,
                  const FloatRange &above)
{
    if (x.high < edge) {
        return below;
    }
    return x.low >= edge ? above : united(below, above);
}

// Straight in t, so its ends tell all; with a range for t the two shares would no longer add up
// to 1.
FloatRange mix(const FloatRange &a, const FloatRange &b, const FloatRange &t)
{
    const auto at = [&](double share) {
        const FloatRange exact(share, share, t.precision);
        return (1.0 - exact) * a + exact * b;
    };
    return t.low == t.high ? at(t.low) : united(at(t.low), at(t.high));
}

FloatRange dot(const ColorRange &a, const ColorRange &b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

ColorRange united(const ColorRange &a, const ColorRange &b)
{
    return {united(a[0], b[0]), united(a[1], b[1]), united(a[2], b[2])};
}

} // namespace ko::imagefx::test
