#pragma once

#include "tests/support/EffectCases.h"
#include "tests/support/TableModel.h"

#include <QtCore/QUrl>
#include <QtGui/QImage>

namespace ko::imagefx::test
{

// The effects with tables side by side with their models; see effectCases().

EffectCase exposure(float exposure, float darkTones, float lightTones);
// Eight values, red first, magenta last.
EffectCase selectiveSaturation(const QVector<float> &saturations);
// Three tables in a picture of 256 x 1 pixels.
EffectCase lookupTable(const QString &name, const std::array<ModelLevels, 3> &tables);

// 255 (i / 255)^exponent, rounded.
ModelLevels powerLevels(double exponent);
// In RGB888.
QImage tableImage(const std::array<ModelLevels, 3> &tables);
// "data:image/png;base64,...": the picture as the lookup table effect takes it.
QUrl dataUrl(const QImage &image);

QVector<EffectCase> exposureCases();
QVector<EffectCase> selectiveSaturationCases();
QVector<EffectCase> lookupTableCases();

} // namespace ko::imagefx::test
