#include "benchmarks/EffectCases.h"

#include "imagefx/effects/BrightnessContrastImageEffect.h"
#include "imagefx/effects/ChannelShiftImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/GrayScaleImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"

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

} // namespace

const std::vector<EffectCase> &effectCases()
{
    static const std::vector<EffectCase> cases{
        {"BrightnessContrast",
         brightnessContrast,
         {{"u_brightness", {0.125F}}, {"u_contrast", {0.25F}}}},
        {"ChannelShift", channelShift, {{"u_shift", {0.25F, -0.125F, 0.0625F}}}},
        {"ColorFill", colorFill, {{"u_color", {0.2F, 0.4F, 0.8F, 1.0F}}}},
        {"GrayScale", grayScale, {{"u_factors", {0.25F, 0.5F, 0.25F}}}},
        {"HSV", hsv, {{"u_parameters", {0.25F, 0.5F, -0.125F}}}},
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
