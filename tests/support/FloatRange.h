#pragma once

#include <array>

namespace ko::imagefx::test
{

// Bits of the significand that a GPU computes with.
enum FloatPrecision {
    ExactPrecision = 0,   // no rounding at all
    HalfPrecision = 11,   // what an ES context may make of lowp and mediump
    SinglePrecision = 24, // desktop GL, and highp everywhere
};

// The range of everything that a GPU of limited precision may get for a number. Formulas written
// with it read like formulas of doubles and are computed with doubles; every operation widens its
// result by what the GPU may round differently, and a question whose answer depends on the rounding
// has both answers.
struct FloatRange {
    // How far an operation may miss, in units in the last place: half a unit for its own rounding,
    // half a unit for a constant that was rounded or a division made a product with a reciprocal.
    static constexpr double operationUlps = 1.0;

    double low = 0.0;
    double high = 0.0;
    FloatPrecision precision = ExactPrecision;

    FloatRange() = default;
    // A constant of a formula; it takes on the precision of what it is combined with.
    FloatRange(double number) : low(number), high(number) {} // NOLINT(google-explicit-constructor)
    FloatRange(double lowest, double highest, FloatPrecision bits)
        : low(lowest), high(highest), precision(bits)
    {
    }

    // `number` as the GPU may hold it.
    static FloatRange rounded(double number, FloatPrecision precision);
    // Anything at all, NaN included: what a division by zero may give.
    static FloatRange anything();
};

FloatRange operator+(const FloatRange &a, const FloatRange &b);
FloatRange operator-(const FloatRange &a, const FloatRange &b);
FloatRange operator*(const FloatRange &a, const FloatRange &b);
FloatRange operator/(const FloatRange &a, const FloatRange &b);

FloatRange abs(const FloatRange &a);
FloatRange sqrt(const FloatRange &a);
FloatRange min(const FloatRange &a, const FloatRange &b);
FloatRange max(const FloatRange &a, const FloatRange &b);
// The least range that holds both.
FloatRange united(const FloatRange &a, const FloatRange &b);
// `below` where x < edge, `above` where x >= edge, both where that is in doubt.
FloatRange select(const FloatRange &x, double edge, const FloatRange &below,
                  const FloatRange &above);
// (1 - t) a + t b
FloatRange mix(const FloatRange &a, const FloatRange &b, const FloatRange &t);

// Three channels, red first.
using ColorRange = std::array<FloatRange, 3>;

FloatRange dot(const ColorRange &a, const ColorRange &b);
ColorRange united(const ColorRange &a, const ColorRange &b);

} // namespace ko::imagefx::test
