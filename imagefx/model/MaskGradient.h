#pragma once

#include <QtCore/QVector>

#include <array>

namespace ko::imagefx
{

constexpr int maskGradientSize = 512;

// One byte a texel: the opacity that a mask gives at texel / 512 of its range.
using MaskGradient = std::array<uchar, maskGradientSize>;

enum class MaskGradientFill {
    Constant = 0, // each segment keeps the value of the stop on its left
    Linear = 1,
    Hermite = 2, // smoothstep
};

struct MaskGradientStop {
    float location; // 0 to 1; beyond that it counts as the nearer end
    float value;    // 0 to 1
};

// Fills the gradient table from stops in any order. No stops: opaque throughout. Before the first
// stop its value holds; behind the last one the last value holds, or the first one when `cyclic`,
// so that the end of a hue circle meets its start. Stops at the same place make a hard step in list
// order. A pure function: any thread, no GL.
MaskGradient buildMaskGradient(const QVector<MaskGradientStop> &stops, MaskGradientFill fill,
                               bool cyclic);

// The texel that stands for `location`, which is clamped to [0, 1].
int maskGradientIndex(float location);

} // namespace ko::imagefx
