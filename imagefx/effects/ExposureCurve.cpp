#include "imagefx/effects/ExposureCurve.h"

#include <cmath>

namespace ko::imagefx
{

namespace
{

// A strength of 1 gives the level of `up`, -1 that of `down`, between them a mix with the input.
int step(const ToneTable &down, const ToneTable &up, int level, float strength)
{
    const float weight = std::abs(strength);
    const ToneTable &table = strength < 0.0F ? down : up;
    const float full = float(table.at(size_t(level))) * weight;
    const double mixed = (1.0 - double(weight)) * level + double(full);
    return qBound(0, qRound(mixed), 255);
}

} // namespace

ToneTable buildExposureCurve(float exposure, float darkTones, float lightTones)
{
    ToneTable curve{};
    for (size_t input = 0; input < curve.size(); ++input) {
        int level = step(exposureDown, exposureUp, int(input), exposure);
        level = step(shadowsDown, shadowsUp, level, darkTones);
        level = step(highlightsDown, highlightsUp, level, lightTones);
        curve.at(input) = uchar(level);
    }
    return curve;
}

} // namespace ko::imagefx
