#include "tests/support/EffectCases.h"

#include "imagefx/effects/BrightnessContrastImageEffect.h"
#include "imagefx/effects/ChannelShiftImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/GrayScaleImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/model/DistanceAlphaMask.h"
#include "imagefx/model/HueAlphaMask.h"
#include "imagefx/model/LuminanceAlphaMask.h"
#include "tests/support/TableCases.h"

namespace ko::imagefx::test
{

namespace
{

QString text(float number)
{
    return QString::number(double(number));
}

QString text(float first, float second, float third)
{
    return QStringLiteral("(%1, %2, %3)").arg(text(first), text(second), text(third));
}

EffectCase brightnessContrast(float brightness, float contrast)
{
    const auto create = [=] {
        auto effect = std::make_unique<BrightnessContrastImageEffect>();
        effect->setBrightness(brightness);
        effect->setContrast(contrast);
        return effect;
    };
    return {QStringLiteral("brightness %1, contrast %2").arg(text(brightness), text(contrast)),
            create, modelBrightnessContrast(double(brightness), double(contrast))};
}

EffectCase channelShift(float red, float green, float blue)
{
    const auto create = [=] {
        auto effect = std::make_unique<ChannelShiftImageEffect>();
        effect->setRed(red);
        effect->setGreen(green);
        effect->setBlue(blue);
        return effect;
    };
    return {QStringLiteral("shift %1").arg(text(red, green, blue)), create,
            modelChannelShift(double(red), double(green), double(blue))};
}

EffectCase colorFill(const QColor &color)
{
    const auto create = [=] {
        auto effect = std::make_unique<ColorFillImageEffect>();
        effect->setColor(color);
        return effect;
    };
    return {QStringLiteral("colour %1").arg(color.name(QColor::HexArgb)), create,
            modelColorFill(color.red() / 255.0, color.green() / 255.0, color.blue() / 255.0)};
}

EffectCase grayScale(float red, float green, float blue)
{
    const auto create = [=] {
        auto effect = std::make_unique<GrayScaleImageEffect>();
        effect->setRed(red);
        effect->setGreen(green);
        effect->setBlue(blue);
        return effect;
    };
    return {QStringLiteral("weights %1").arg(text(red, green, blue)), create,
            modelGrayScale(double(red), double(green), double(blue))};
}

EffectCase hsv(float hue, float saturation, float value)
{
    const auto create = [=] {
        auto effect = std::make_unique<HSVImageEffect>();
        effect->setHue(hue);
        effect->setSaturation(saturation);
        effect->setValue(value);
        return effect;
    };
    return {QStringLiteral("hsv %1").arg(text(hue, saturation, value)), create,
            modelHsv(double(hue), double(saturation), double(value))};
}

struct EffectKind {
    QString name;
    QVector<EffectCase> cases;
};

const QVector<EffectKind> &allEffects()
{
    // The contrast inverts the picture from 1.01587 on, and is steepest just before.
    static const QVector<EffectKind> kinds = {
        {QStringLiteral("BrightnessContrast"),
         {brightnessContrast(0.0F, 0.0F), brightnessContrast(0.2F, 0.0F),
          brightnessContrast(-0.3F, 0.5F), brightnessContrast(0.1F, -1.0F),
          brightnessContrast(-0.15F, 1.0F), brightnessContrast(0.05F, 1.5F),
          brightnessContrast(2.5F, -0.4F), brightnessContrast(0.0F, -3.0F)}},
        {QStringLiteral("ChannelShift"),
         {channelShift(0.0F, 0.0F, 0.0F), channelShift(0.5F, 0.0F, 0.0F),
          channelShift(0.1F, -0.2F, 0.3F), channelShift(-1.0F, 0.0F, 1.0F),
          channelShift(2.5F, -3.0F, 0.004F)}},
        {QStringLiteral("ColorFill"),
         {colorFill(QColor(255, 0, 0)), colorFill(QColor(0, 0, 0)),
          colorFill(QColor(255, 255, 255)), colorFill(QColor(18, 130, 201, 0)),
          colorFill(QColor(128, 127, 1))}},
        {QStringLiteral("GrayScale"),
         {grayScale(0.344F, 0.5F, 0.156F), grayScale(1.0F, 0.0F, 0.0F), grayScale(0.0F, 1.0F, 0.0F),
          grayScale(0.0F, 0.0F, 0.3F), grayScale(1.0F, 1.0F, 1.0F), grayScale(0.05F, 0.9F, 0.2F)}},
        {QStringLiteral("HSV"),
         {hsv(0.0F, 0.0F, 0.0F), hsv(1.0F, 0.0F, 0.0F), hsv(-1.0F, 0.25F, 0.1F),
          hsv(0.37F, 0.0F, 0.0F), hsv(-0.37F, 0.5F, -0.2F), hsv(0.0F, -1.0F, 0.0F),
          hsv(0.0F, 1.0F, 0.5F), hsv(0.002F, -0.3F, 1.0F), hsv(0.6F, -0.7F, -1.0F)}},
        {QStringLiteral("Exposure"), exposureCases()},
        {QStringLiteral("LUT"), lookupTableCases()},
        {QStringLiteral("SelectiveSaturation"), selectiveSaturationCases()},
    };
    return kinds;
}

} // namespace

QStringList effectKinds()
{
    QStringList names;
    for (const EffectKind &kind : allEffects()) {
        names.append(kind.name);
    }
    return names;
}

QVector<EffectCase> effectCases(const QString &kind)
{
    for (const EffectKind &candidate : allEffects()) {
        if (candidate.name == kind) {
            return candidate.cases;
        }
    }
    return {};
}

std::unique_ptr<AlphaMask> MaskCase::create() const
{
    std::unique_ptr<AlphaMask> mask;
    switch (kind) {
    case ModelMaskKind::None:
        return nullptr;
    case ModelMaskKind::Distance:
        mask = std::make_unique<DistanceAlphaMask>();
        break;
    case ModelMaskKind::Hue:
        mask = std::make_unique<HueAlphaMask>();
        break;
    case ModelMaskKind::Luminance:
        mask = std::make_unique<LuminanceAlphaMask>();
        break;
    }
    for (const ModelStop &stop : stops) {
        mask->addGradientStop(float(stop.location), float(stop.value));
    }
    mask->setEnabled(enabled);
    switch (interpolation) {
    case ModelInterpolation::Constant:
        mask->setGradientInterpolation(AlphaMask::ConstantInterpolation);
        break;
    case ModelInterpolation::Linear:
        mask->setGradientInterpolation(AlphaMask::LinearInterpolation);
        break;
    case ModelInterpolation::Hermite:
        mask->setGradientInterpolation(AlphaMask::HermiteInterpolation);
        break;
    }
    return mask;
}

ModelMask MaskCase::model() const
{
    if (!enabled || kind == ModelMaskKind::None) {
        return {};
    }
    return {kind, modelGradient(stops, interpolation, kind == ModelMaskKind::Hue)};
}

QString maskKindName(ModelMaskKind kind)
{
    switch (kind) {
    case ModelMaskKind::Distance:
        return QStringLiteral("distance");
    case ModelMaskKind::Hue:
        return QStringLiteral("hue");
    case ModelMaskKind::Luminance:
        return QStringLiteral("luminance");
    case ModelMaskKind::None:
        break;
    }
    return QStringLiteral("none");
}

// The first cases matter most: a test that cannot afford them all takes them from the front.
QVector<MaskCase> maskCases(ModelMaskKind kind)
{
    if (kind == ModelMaskKind::None) {
        return {{QStringLiteral("no mask"), kind, {}}};
    }
    const QVector<ModelStop> ramp = {{0.0, 0.0}, {1.0, 1.0}};
    const QVector<ModelStop> band = {{0.2, 1.0}, {0.45, 0.1}, {0.8, 0.6}};
    const QVector<ModelStop> stairs = {{0.0, 1.0}, {0.25, 1.0},  {0.25, 0.0},
                                       {0.6, 0.0}, {0.6, 0.625}, {0.9, 0.3}};
    const QVector<ModelStop> unsorted = {{0.75, 0.25}, {0.125, 1.0}, {0.5, 0.75}};
    const auto hermite = ModelInterpolation::Hermite;
    const auto linear = ModelInterpolation::Linear;
    const auto constant = ModelInterpolation::Constant;
    return {{QStringLiteral("band, Hermite"), kind, band, hermite},
            {QStringLiteral("stairs, linear"), kind, stairs, linear},
            {QStringLiteral("unsorted, constant"), kind, unsorted, constant},
            {QStringLiteral("ramp, linear"), kind, ramp, linear},
            {QStringLiteral("ramp, Hermite"), kind, ramp, hermite},
            {QStringLiteral("ramp, constant"), kind, ramp, constant},
            {QStringLiteral("unsorted, Hermite"), kind, unsorted, hermite},
            {QStringLiteral("stairs, constant"), kind, stairs, constant},
            {QStringLiteral("one stop"), kind, {{0.3, 0.4}}, linear},
            {QStringLiteral("no stops"), kind, {}, hermite},
            {QStringLiteral("disabled"), kind, band, linear, false}};
}

} // namespace ko::imagefx::test
