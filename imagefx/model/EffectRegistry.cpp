#include "imagefx/model/EffectRegistry.h"

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
#include "imagefx/model/DistanceAlphaMask.h"
#include "imagefx/model/HueAlphaMask.h"
#include "imagefx/model/LuminanceAlphaMask.h"

namespace ko::imagefx
{

namespace
{

template <class Base, class Kind>
Base *create()
{
    return new Kind(nullptr);
}

template <class Effect>
void enterEffect(EffectRegistry &registry, const char *kind)
{
    registry.insertEffect(QLatin1String("ko.orvanto.imageeffect.") + QLatin1String(kind),
                          &create<ImageEffect, Effect>);
}

template <class Mask>
void enterMask(EffectRegistry &registry, const char *kind)
{
    registry.insertMask(QLatin1String("ko.orvanto.alphamask.") + QLatin1String(kind),
                        &create<AlphaMask, Mask>);
}

} // namespace

EffectRegistry &EffectRegistry::library()
{
    static EffectRegistry registry;
    return registry;
}

EffectRegistry EffectRegistry::complete()
{
    EffectRegistry registry;
    registry.fill();
    enterEffect<BrightnessContrastImageEffect>(registry, "BrightnessContrast");
    enterEffect<HSVImageEffect>(registry, "HSV");
    return registry;
}

// "BrighnessContrast" is the spelling that stored stacks know.
void EffectRegistry::fill()
{
    enterEffect<GrayScaleImageEffect>(*this, "GrayScale");
    enterEffect<BlurImageEffect>(*this, "Blur");
    enterEffect<SharpenImageEffect>(*this, "Sharpen");
    enterEffect<ColorFillImageEffect>(*this, "ColorFill");
    enterEffect<BatchImageEffect>(*this, "Batch");
    enterEffect<ExposureImageEffect>(*this, "Exposure");
    enterEffect<SelectiveSaturationImageEffect>(*this, "SelectiveSaturation");
    enterEffect<BrightnessContrastImageEffect>(*this, "BrighnessContrast");
    enterEffect<ChannelShiftImageEffect>(*this, "ChannelShift");
    enterEffect<LookupTableImageEffect>(*this, "LUT");
    enterMask<HueAlphaMask>(*this, "Hue");
    enterMask<DistanceAlphaMask>(*this, "Distance");
    enterMask<LuminanceAlphaMask>(*this, "Luminance");
}

void EffectRegistry::insertEffect(const QString &effectId, EffectCreator creator)
{
    m_effects.insert(effectId, creator);
}

void EffectRegistry::insertMask(const QString &maskId, MaskCreator creator)
{
    m_masks.insert(maskId, creator);
}

ImageEffect *EffectRegistry::createEffect(const QString &effectId) const
{
    const EffectCreator creator = m_effects.value(effectId, nullptr);
    return creator != nullptr ? creator() : nullptr;
}

AlphaMask *EffectRegistry::createAlphaMask(const QString &maskId) const
{
    const MaskCreator creator = m_masks.value(maskId, nullptr);
    return creator != nullptr ? creator() : nullptr;
}

QStringList EffectRegistry::effectIds() const
{
    QStringList ids = m_effects.keys();
    ids.sort();
    return ids;
}

QStringList EffectRegistry::maskIds() const
{
    QStringList ids = m_masks.keys();
    ids.sort();
    return ids;
}

} // namespace ko::imagefx
