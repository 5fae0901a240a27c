#include "imagefx/effects/ExposureImageEffect.h"

#include "imagefx/effects/ExposureImageEffectState.h"

namespace ko::imagefx
{

class ExposureImageEffect::Private
{
public:
    float exposure = 0.0F;
    float darkTones = 0.0F;
    float lightTones = 0.0F;
};

ExposureImageEffect::ExposureImageEffect(QObject *parent)
    : ImageEffect(QStringLiteral("ko.orvanto.imageeffect.Exposure"), parent),
      d(std::make_unique<Private>())
{
}

ExposureImageEffect::~ExposureImageEffect() = default;

float ExposureImageEffect::exposure() const
{
    return d->exposure;
}

void ExposureImageEffect::setExposure(float exposure)
{
    assign(d->exposure, qMax(qMin(exposure, 1.0F), -1.0F), &ExposureImageEffect::exposureChanged);
}

float ExposureImageEffect::darkTones() const
{
    return d->darkTones;
}

void ExposureImageEffect::setDarkTones(float darkTones)
{
    assign(d->darkTones, qMax(qMin(darkTones, 1.0F), -1.0F),
           &ExposureImageEffect::darkTonesChanged);
}

float ExposureImageEffect::lightTones() const
{
    return d->lightTones;
}

void ExposureImageEffect::setLightTones(float lightTones)
{
    assign(d->lightTones, qMax(qMin(lightTones, 1.0F), -1.0F),
           &ExposureImageEffect::lightTonesChanged);
}

// Compared with zero, only zero itself is equal: the smallest change is worth a pass.
bool ExposureImageEffect::isNeutral() const
{
    return qFuzzyCompare(d->exposure, 0.0F) && qFuzzyCompare(d->darkTones, 0.0F) &&
           qFuzzyCompare(d->lightTones, 0.0F);
}

ImageEffectState *ExposureImageEffect::createState() const
{
    return new ExposureImageEffectState;
}

} // namespace ko::imagefx
