#pragma once

#include "tests/support/EffectModel.h"

#include <QtCore/QVector>

#include <array>

namespace ko::imagefx::test
{

// The effects that look colours up in a table, once more as plain formulas: see EffectModel.h.

// What a level becomes, 256 of them.
using ModelLevels = std::array<int, 256>;

// What the controls of the exposure effect make of every level at full strength, one byte in two
// hexadecimal digits each. Typed anew, not taken from the library.
struct ToneTexts {
    const char *exposureUp;
    const char *exposureDown;
    const char *shadowsUp;
    const char *shadowsDown;
    const char *highlightsUp;
    const char *highlightsDown;
};
extern const ToneTexts toneTexts;
ModelLevels levelsOf(const char *hexadecimal);

// Three controls from -1 to 1.
ModelLevels modelToneCurve(float exposure, float darkTones, float lightTones);
ModelEffect modelExposure(float exposure, float darkTones, float lightTones);

// A table of red, green and blue.
ModelEffect modelLookupTable(const std::array<ModelLevels, 3> &tables);

// The factor of every degree of hue as a byte, 360 of them; eight values from -1 to 1, red first,
// magenta last.
QVector<int> modelHueTable(const QVector<double> &saturations);
ModelEffect modelSelectiveSaturation(const QVector<double> &saturations);

} // namespace ko::imagefx::test
