#include "tests/support/TableCases.h"

#include "imagefx/effects/ExposureImageEffect.h"
#include "imagefx/effects/LookupTableImageEffect.h"
#include "imagefx/effects/SelectiveSaturationImageEffect.h"

#include <QtCore/QBuffer>

#include <algorithm>
#include <cmath>

namespace ko::imagefx::test
{

namespace
{

// Level 255 first.
ModelLevels inverted()
{
    ModelLevels levels{};
    for (int i = 0; i < 256; ++i) {
        levels[size_t(i)] = 255 - i;
    }
    return levels;
}

// Four steps of a poster.
ModelLevels stairs()
{
    ModelLevels levels{};
    for (int i = 0; i < 256; ++i) {
        levels[size_t(i)] = i / 64 * 85;
    }
    return levels;
}

} // namespace

EffectCase exposure(float exposure, float darkTones, float lightTones)
{
    const auto create = [=] {
        auto effect = std::make_unique<ExposureImageEffect>();
        effect->setExposure(exposure);
        effect->setDarkTones(darkTones);
        effect->setLightTones(lightTones);
        return effect;
    };
    return {QStringLiteral("exposure %1, dark tones %2, light tones %3")
                .arg(double(exposure))
                .arg(double(darkTones))
                .arg(double(lightTones)),
            create, modelExposure(exposure, darkTones, lightTones)};
}

EffectCase selectiveSaturation(const QVector<float> &saturations)
{
    QStringList texts;
    QVector<double> values;
    for (const float value : saturations) {
        texts.append(QString::number(double(value)));
        values.append(double(value));
    }
    const auto create = [=] {
        auto effect = std::make_unique<SelectiveSaturationImageEffect>();
        effect->setRed(saturations.at(0));
        effect->setOrange(saturations.at(1));
        effect->setYellow(saturations.at(2));
        effect->setGreen(saturations.at(3));
        effect->setAqua(saturations.at(4));
        effect->setBlue(saturations.at(5));
        effect->setPurple(saturations.at(6));
        effect->setMagenta(saturations.at(7));
        return effect;
    };
    return {QStringLiteral("saturations (%1)").arg(texts.join(QLatin1String(", "))), create,
            modelSelectiveSaturation(values)};
}

EffectCase lookupTable(const QString &name, const std::array<ModelLevels, 3> &tables)
{
    const auto create = [url = dataUrl(tableImage(tables))] {
        auto effect = std::make_unique<LookupTableImageEffect>();
        effect->setTable(url);
        return effect;
    };
    return {name, create, modelLookupTable(tables)};
}

ModelLevels powerLevels(double exponent)
{
    ModelLevels levels{};
    for (int i = 0; i < 256; ++i) {
        levels[size_t(i)] = int(std::lround(255.0 * std::pow(i / 255.0, exponent)));
    }
    return levels;
}

QImage tableImage(const std::array<ModelLevels, 3> &tables)
{
    QImage image(256, 1, QImage::Format_RGB888);
    uchar *byte = image.scanLine(0);
    for (size_t i = 0; i < 256; ++i) {
        for (const ModelLevels &table : tables) {
            *byte++ = uchar(table[i]);
        }
    }
    return image;
}

QUrl dataUrl(const QImage &image)
{
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "png");
    return QUrl(QLatin1String("data:image/png;base64,") + QLatin1String(png.toBase64()));
}

QVector<EffectCase> exposureCases()
{
    return {exposure(0.4F, -0.3F, 0.2F),  exposure(0.0F, 0.0F, 0.0F), exposure(1.0F, 0.0F, 0.0F),
            exposure(-1.0F, 0.5F, -1.0F), exposure(0.0F, 1.0F, 0.0F), exposure(0.1F, -1.0F, 0.7F),
            exposure(-0.35F, 0.0F, 1.0F), exposure(1.0F, 1.0F, 1.0F)};
}

QVector<EffectCase> selectiveSaturationCases()
{
    return {selectiveSaturation({0.5F, -0.4F, 0.3F, -0.8F, 1.0F, 0.2F, -1.0F, 0.6F}),
            selectiveSaturation({0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F}),
            selectiveSaturation({1.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F}),
            selectiveSaturation({0.0F, 0.0F, -1.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F}),
            selectiveSaturation({-1.0F, -1.0F, -1.0F, -1.0F, -1.0F, -1.0F, -1.0F, -1.0F}),
            selectiveSaturation({0.0F, 0.0F, 1.0F, 1.0F, 0.0F, -0.5F, 0.0F, 0.0F}),
            selectiveSaturation({0.0F, 0.7F, 0.0F, 0.0F, 0.0F, 0.0F, 0.4F, -0.9F})};
}

QVector<EffectCase> lookupTableCases()
{
    return {lookupTable(QStringLiteral("three powers"),
                        {powerLevels(0.6), powerLevels(1.3), powerLevels(2.2)}),
            lookupTable(QStringLiteral("identity"),
                        {powerLevels(1.0), powerLevels(1.0), powerLevels(1.0)}),
            lookupTable(QStringLiteral("negative"), {inverted(), inverted(), inverted()}),
            lookupTable(QStringLiteral("poster"), {stairs(), stairs(), stairs()}),
            lookupTable(QStringLiteral("one of each"), {stairs(), powerLevels(1.0), inverted()})};
}

} // namespace ko::imagefx::test
