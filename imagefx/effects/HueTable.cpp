#include "imagefx/effects/HueTable.h"

namespace ko::imagefx
{

namespace
{

struct HueRange {
    int start; // degrees; beyond 360 they wrap
    int centre;
    int end; // the first degree behind the range
};

constexpr std::array<HueRange, 8> ranges{{
    {312, 339, 395}, // red
    {338, 392, 410}, // orange
    {31, 51, 93},    // yellow
    {45, 90, 175},   // green
    {90, 172, 202},  // aqua
    {134, 200, 294}, // blue
    {183, 294, 324}, // purple
    {293, 321, 340}, // magenta
}};

using Sums = std::array<float, hueTableSize>;

void addSegment(Sums &sums, int from, int to, float first, float last)
{
    for (int hue = from; hue < to; ++hue) {
        const float t = float(hue - from) / float(to - from);
        sums.at(size_t(hue % hueTableSize)) += first + (last - first) * t * t * (3.0F - 2.0F * t);
    }
}

} // namespace

HueTable buildHueTable(const HueSaturations &saturations)
{
    Sums sums{};
    for (size_t i = 0; i < ranges.size(); ++i) {
        const HueRange &range = ranges.at(i);
        const float value = saturations.at(i);
        addSegment(sums, range.start, range.centre, 0.0F, value);
        addSegment(sums, range.centre, range.end, value, 0.0F);
    }
    HueTable table{};
    for (size_t hue = 0; hue < table.size(); ++hue) {
        table.at(hue) = uchar(qRound(qBound(0.0F, (sums.at(hue) + 1.0F) * 0.5F, 1.0F) * 255.0F));
    }
    return table;
}

} // namespace ko::imagefx
