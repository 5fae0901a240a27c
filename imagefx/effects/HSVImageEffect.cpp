#include "imagefx/effects/HSVImageEffect.h"

#include "imagefx/effects/HSVImageEffectState.h"

namespace ko::imagefx
{

class HSVImageEffect::Private
{
public:
    float hue = 0.0F;
    float saturation = 0.0F;
    float value = 0.0F;
};

HSVImageEffect::HSVImageEffect(QObject *parent)
    : ImageEffect(QStringLiteral("ko.orvanto.imageeffect.HSV"), parent),
      d(std::make_unique<Private>())
{
}

HSVImageEffect::~HSVImageEffect() = default;

float HSVImageEffect::hue() const
{
    return d->hue;
}

void HSVImageEffect::setHue(float hue)
{
    assign(d->hue, qMax(qMin(hue, 1.0F), -1.0F), &HSVImageEffect::hueChanged);
}

float HSVImageEffect::saturation() const
{
    return d->saturation;
}

void HSVImageEffect::setSaturation(float saturation)
{
    assign(d->saturation, qMax(qMin(saturation, 1.0F), -1.0F), &HSVImageEffect::saturationChanged);
}

float HSVImageEffect::value() const
{
    return d->value;
}

void HSVImageEffect::setValue(float value)
{
    assign(d->value, qMax(qMin(value, 1.0F), -1.0F), &HSVImageEffect::valueChanged);
}

// Compared with zero, only zero itself is equal: the smallest change is worth a pass.
bool HSVImageEffect::isNeutral() const
{
    return qFuzzyCompare(d->hue, 0.0F) && qFuzzyCompare(d->saturation, 0.0F) &&
           qFuzzyCompare(d->value, 0.0F);
}

ImageEffectState *HSVImageEffect::createState() const
{
    return new HSVImageEffectState;
}

} // namespace ko::imagefx
