#include "imagefx/effects/SharpenImageEffect.h"

#include "imagefx/effects/SharpenImageEffectState.h"

namespace ko::imagefx
{

namespace
{

constexpr float neutralStrength = 0.001F;

} // namespace

class SharpenImageEffect::Private
{
public:
    float strength = 0.5F;
    float radius = 1.0F;
};

SharpenImageEffect::SharpenImageEffect(QObject *parent)
    : ImageEffect(QStringLiteral("ko.orvanto.imageeffect.Sharpen"), parent),
      d(std::make_unique<Private>())
{
}

SharpenImageEffect::~SharpenImageEffect() = default;

float SharpenImageEffect::strength() const
{
    return d->strength;
}

void SharpenImageEffect::setStrength(float strength)
{
    assign(d->strength, strength, &SharpenImageEffect::strengthChanged);
}

float SharpenImageEffect::radius() const
{
    return d->radius;
}

void SharpenImageEffect::setRadius(float radius)
{
    assign(d->radius, qMax(qMin(radius, 80.0F), 1.0F), &SharpenImageEffect::radiusChanged);
}

bool SharpenImageEffect::isNeutral() const
{
    return d->strength <= neutralStrength;
}

ImageEffectState *SharpenImageEffect::createState() const
{
    return new SharpenImageEffectState;
}

} // namespace ko::imagefx
