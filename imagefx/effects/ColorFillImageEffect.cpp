#include "imagefx/effects/ColorFillImageEffect.h"

#include "imagefx/effects/ColorFillImageEffectState.h"

namespace ko::imagefx
{

class ColorFillImageEffect::Private
{
public:
    QColor color = Qt::red;
};

ColorFillImageEffect::ColorFillImageEffect(QObject *parent)
    : ImageEffect(QStringLiteral("ko.orvanto.imageeffect.ColorFill"), parent),
      d(std::make_unique<Private>())
{
}

ColorFillImageEffect::~ColorFillImageEffect() = default;

QColor ColorFillImageEffect::color() const
{
    return d->color;
}

void ColorFillImageEffect::setColor(const QColor &color)
{
    assign(d->color, color, &ColorFillImageEffect::colorChanged);
}

ImageEffectState *ColorFillImageEffect::createState() const
{
    return new ColorFillImageEffectState;
}

} // namespace ko::imagefx
