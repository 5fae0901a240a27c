#include "imagefx/effects/BlurImageEffect.h"

#include "imagefx/effects/BlurImageEffectState.h"

namespace ko::imagefx
{

class BlurImageEffect::Private
{
public:
    float radius = 1.0F;
};

BlurImageEffect::BlurImageEffect(QObject *parent)
    : ImageEffect(QStringLiteral("ko.orvanto.imageeffect.Blur"), parent),
      d(std::make_unique<Private>())
{
}

BlurImageEffect::~BlurImageEffect() = default;

float BlurImageEffect::radius() const
{
    return d->radius;
}

void BlurImageEffect::setRadius(float radius)
{
    assign(d->radius, qMax(qMin(radius, 100.0F), 1.0F), &BlurImageEffect::radiusChanged);
}

ImageEffectState *BlurImageEffect::createState() const
{
    return new BlurImageEffectState;
}

} // namespace ko::imagefx
