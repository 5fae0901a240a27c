#pragma once

#include <QtCore/qglobal.h>

#include <array>

namespace ko::imagefx
{

constexpr int hueTableSize = 360;

// One byte a degree of hue: 128 leaves the saturation, 0 is grey, 255 doubles it.
using HueTable = std::array<uchar, hueTableSize>;

// Red, orange, yellow, green, aqua, blue, purple and magenta, each from -1 to 1.
using HueSaturations = std::array<float, 8>;

// The table of selective saturation. Every range rises by a smoothstep to its value and falls
// again; ranges wrap at 360 degrees, and where they overlap they add up. A pure function: any
// thread, no GL.
HueTable buildHueTable(const HueSaturations &saturations);

} // namespace ko::imagefx
