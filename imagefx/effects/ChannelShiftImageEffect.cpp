#include "imagefx/effects/ChannelShiftImageEffect.h"

#include "imagefx/effects/ChannelShiftImageEffectState.h"

namespace ko::imagefx
{

class ChannelShiftImageEffect::Private
{
public:
    float red = 0.0F;
    float green = 0.0F;
    float blue = 0.0F;
};

ChannelShiftImageEffect::ChannelShiftImageEffect(QObject *parent)
    : ImageEffect(QStringLiteral("ko.orvanto.imageeffect.ChannelShift"), parent),
      d(std::make_unique<Private>())
{
}

ChannelShiftImageEffect::~ChannelShiftImageEffect() = default;

float ChannelShiftImageEffect::red() const
{
    return d->red;
}

void ChannelShiftImageEffect::setRed(float red)
{
    assign(d->red, red, &ChannelShiftImageEffect::redChanged);
}

float ChannelShiftImageEffect::green() const
{
    return d->green;
}

void ChannelShiftImageEffect::setGreen(float green)
{
    assign(d->green, green, &ChannelShiftImageEffect::greenChanged);
}

float ChannelShiftImageEffect::blue() const
{
    return d->blue;
}

void ChannelShiftImageEffect::setBlue(float blue)
{
    assign(d->blue, blue, &ChannelShiftImageEffect::blueChanged);
}

// Compared with zero, only zero itself is equal: the smallest change is worth a pass.
bool ChannelShiftImageEffect::isNeutral() const
{
    return qFuzzyCompare(d->red, 0.0F) && qFuzzyCompare(d->green, 0.0F) &&
           qFuzzyCompare(d->blue, 0.0F);
}

ImageEffectState *ChannelShiftImageEffect::createState() const
{
    return new ChannelShiftImageEffectState;
}

} // namespace ko::imagefx
