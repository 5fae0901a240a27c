#include "imagefx/effects/BrightnessContrastImageEffect.h"

#include "imagefx/effects/BrightnessContrastImageEffectState.h"

namespace ko::imagefx
{

class BrightnessContrastImageEffect::Private
{
public:
    float brightness = 0.0F;
    float contrast = 0.0F;
};

BrightnessContrastImageEffect::BrightnessContrastImageEffect(QObject *parent)
    : ImageEffect(QStringLiteral("ko.orvanto.imageeffect.BrightnessContrast"), parent),
      d(std::make_unique<Private>())
{
}

BrightnessContrastImageEffect::~BrightnessContrastImageEffect() = default;

float BrightnessContrastImageEffect::brightness() const
{
    return d->brightness;
}

void BrightnessContrastImageEffect::setBrightness(float brightness)
{
    assign(d->brightness, brightness, &BrightnessContrastImageEffect::brightnessChanged);
}

float BrightnessContrastImageEffect::contrast() const
{
    return d->contrast;
}

void BrightnessContrastImageEffect::setContrast(float contrast)
{
    assign(d->contrast, contrast, &BrightnessContrastImageEffect::contrastChanged);
}

// Compared with zero, only zero itself is equal: the smallest change is worth a pass.
bool BrightnessContrastImageEffect::isNeutral() const
{
    return qFuzzyCompare(d->brightness, 0.0F) && qFuzzyCompare(d->contrast, 0.0F);
}

ImageEffectState *BrightnessContrastImageEffect::createState() const
{
    return new BrightnessContrastImageEffectState;
}

} // namespace ko::imagefx
