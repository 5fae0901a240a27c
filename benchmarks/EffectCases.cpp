#include "benchmarks/EffectCases.h"

#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/BrightnessContrastImageEffect.h"
#include "imagefx/effects/ChannelShiftImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/ExposureImageEffect.h"
#include "imagefx/effects/GrayScaleImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/effects/LookupTableImageEffect.h"
#include "imagefx/effects/SelectiveSaturationImageEffect.h"
#include "imagefx/effects/SharpenImageEffect.h"
#include "imagefx/render/TextureUnits.h"

#include <QtCore/QUrl>

#include <utility>

namespace ko::imagefx::benchmarks
{

namespace
{

std::unique_ptr<ImageEffect> brightnessContrast()
{
    auto effect = std::make_unique<BrightnessContrastImageEffect>();
    effect->setBrightness(0.125F);
    effect->setContrast(0.25F);
    return effect;
}

std::unique_ptr<ImageEffect> channelShift()
{
    auto effect = std::make_unique<ChannelShiftImageEffect>();
    effect->setRed(0.25F);
    effect->setGreen(-0.125F);
    effect->setBlue(0.0625F);
    return effect;
}

std::unique_ptr<ImageEffect> colorFill()
{
    auto effect = std::make_unique<ColorFillImageEffect>();
    effect->setColor(QColor(51, 102, 204));
    return effect;
}

std::unique_ptr<ImageEffect> grayScale()
{
    auto effect = std::make_unique<GrayScaleImageEffect>();
    effect->setRed(0.5F);
    effect->setGreen(1.0F);
    effect->setBlue(0.5F);
    return effect;
}

std::unique_ptr<ImageEffect> hsv()
{
    auto effect = std::make_unique<HSVImageEffect>();
    effect->setHue(0.25F);
    effect->setSaturation(0.5F);
    effect->setValue(-0.125F);
    return effect;
}

std::unique_ptr<ImageEffect> exposure()
{
    auto effect = std::make_unique<ExposureImageEffect>();
    effect->setExposure(0.25F);
    effect->setDarkTones(0.5F);
    effect->setLightTones(-0.5F);
    return effect;
}

std::unique_ptr<ImageEffect> lookupTable()
{
    auto effect = std::make_unique<LookupTableImageEffect>();
    effect->setTable(QUrl(QStringLiteral("qrc:/imagefx/lib/lut/fargo.png")));
    return effect;
}

std::unique_ptr<ImageEffect> selectiveSaturation()
{
    auto effect = std::make_unique<SelectiveSaturationImageEffect>();
    effect->setRed(0.5F);
    effect->setGreen(-0.5F);
    effect->setBlue(1.0F);
    return effect;
}

template <int radius>
std::unique_ptr<ImageEffect> blur()
{
    auto effect = std::make_unique<BlurImageEffect>();
    effect->setRadius(float(radius));
    return effect;
}

std::unique_ptr<ImageEffect> sharpen()
{
    auto effect = std::make_unique<SharpenImageEffect>();
    effect->setRadius(2.0F);
    return effect;
}

std::unique_ptr<ImageEffect> batch()
{
    auto effect = std::make_unique<BatchImageEffect>();
    QList<ImageEffect *> nested;
    for (const auto makeNested : {brightnessContrast, hsv}) {
        nested.append(makeNested().release());
        nested.back()->setParent(effect.get()); // the batch does not own them
    }
    effect->setImageEffectList(nested);
    return effect;
}

// A case of one pass, with its tables if it has any.
EffectCase onePass(const char *name, std::unique_ptr<ImageEffect> (*makeEffect)(),
                   std::vector<EffectCase::Uniform> uniforms,
                   std::vector<EffectCase::Table> tables = {})
{
    return {name, makeEffect, std::move(uniforms), std::move(tables), false};
}

EffectCase multiPass(const char *name, std::unique_ptr<ImageEffect> (*makeEffect)())
{
    return {name, makeEffect, {}, {}, true};
}

} // namespace

const std::vector<EffectCase> &effectCases()
{
    static const std::vector<EffectCase> cases{
        onePass("BrightnessContrast", brightnessContrast,
                {{"u_brightness", {0.125F}}, {"u_contrast", {0.25F}}}),
        onePass("ChannelShift", channelShift, {{"u_shift", {0.25F, -0.125F, 0.0625F}}}),
        onePass("ColorFill", colorFill, {{"u_color", {0.2F, 0.4F, 0.8F, 1.0F}}}),
        onePass("GrayScale", grayScale, {{"u_factors", {0.25F, 0.5F, 0.25F}}}),
        onePass("HSV", hsv, {{"u_parameters", {0.25F, 0.5F, -0.125F}}}),
        onePass("Exposure", exposure, {}, {{"u_lut", tableUnit}}),
        onePass("LookupTable", lookupTable, {}, {{"u_lut", tableUnit}}),
        onePass("SelectiveSaturation", selectiveSaturation, {}, {{"u_table", hueTableUnit}}),
        multiPass("Blur, radius 4", blur<4>),
        multiPass("Blur, radius 16", blur<16>),
        multiPass("Sharpen, radius 2", sharpen),
        multiPass("Batch of BrightnessContrast and HSV", batch),
    };
    return cases;
}

const EffectCase *findEffectCase(const std::string &name)
{
    for (const EffectCase &effectCase : effectCases()) {
        if (effectCase.name == name) {
            return &effectCase;
        }
    }
    return nullptr;
}

} // namespace ko::imagefx::benchmarks
