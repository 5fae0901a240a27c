#include "imagefx/effects/GrayScaleImageEffect.h"

#include "imagefx/effects/GrayScaleImageEffectState.h"

namespace ko::imagefx
{

class GrayScaleImageEffect::Private
{
public:
    float red = 0.344F;
    float green = 0.5F;
    float blue = 0.156F;
};

GrayScaleImageEffect::GrayScaleImageEffect(QObject *parent)
    : ImageEffect(QStringLiteral("ko.orvanto.imageeffect.GrayScale"), parent),
      d(std::make_unique<Private>())
{
}

GrayScaleImageEffect::~GrayScaleImageEffect() = default;

float GrayScaleImageEffect::red() const
{
    return d->red;
}

void GrayScaleImageEffect::setRed(float red)
{
    assign(d->red, qMax(qMin(red, 1.0F), 0.0F), &GrayScaleImageEffect::redChanged);
}

float GrayScaleImageEffect::green() const
{
    return d->green;
}

void GrayScaleImageEffect::setGreen(float green)
{
    assign(d->green, qMax(qMin(green, 1.0F), 0.0F), &GrayScaleImageEffect::greenChanged);
}

float GrayScaleImageEffect::blue() const
{
    return d->blue;
}

void GrayScaleImageEffect::setBlue(float blue)
{
    assign(d->blue, qMax(qMin(blue, 1.0F), 0.0F), &GrayScaleImageEffect::blueChanged);
}

ImageEffectState *GrayScaleImageEffect::createState() const
{
    return new GrayScaleImageEffectState;
}

QByteArray GrayScaleImageEffect::fragmentShaderCode() const
{
    return readShader(QStringLiteral("fx_grayscale.frag"));
}

} // namespace ko::imagefx
