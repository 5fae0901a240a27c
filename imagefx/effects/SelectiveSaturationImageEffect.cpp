#include "imagefx/effects/SelectiveSaturationImageEffect.h"

#include "imagefx/effects/HueTable.h"
#include "imagefx/effects/SelectiveSaturationImageEffectState.h"

#include <algorithm>

namespace ko::imagefx
{

class SelectiveSaturationImageEffect::Private
{
public:
    float red = 0.0F;
    float orange = 0.0F;
    float yellow = 0.0F;
    float green = 0.0F;
    float aqua = 0.0F;
    float blue = 0.0F;
    float purple = 0.0F;
    float magenta = 0.0F;
    QImage table{hueTableSize, 1, QImage::Format_Grayscale8};
};

SelectiveSaturationImageEffect::SelectiveSaturationImageEffect(QObject *parent)
    : ImageEffect(QStringLiteral("ko.orvanto.imageeffect.SelectiveSaturation"), parent),
      d(std::make_unique<Private>())
{
    connect(this, &ImageEffect::updateRequired, this, &SelectiveSaturationImageEffect::updateTable);
    updateTable();
}

SelectiveSaturationImageEffect::~SelectiveSaturationImageEffect() = default;

float SelectiveSaturationImageEffect::red() const
{
    return d->red;
}

void SelectiveSaturationImageEffect::setRed(float red)
{
    assign(d->red, qMax(qMin(red, 1.0F), -1.0F), &SelectiveSaturationImageEffect::redChanged);
}

float SelectiveSaturationImageEffect::orange() const
{
    return d->orange;
}

void SelectiveSaturationImageEffect::setOrange(float orange)
{
    assign(d->orange, qMax(qMin(orange, 1.0F), -1.0F),
           &SelectiveSaturationImageEffect::orangeChanged);
}

float SelectiveSaturationImageEffect::yellow() const
{
    return d->yellow;
}

void SelectiveSaturationImageEffect::setYellow(float yellow)
{
    assign(d->yellow, qMax(qMin(yellow, 1.0F), -1.0F),
           &SelectiveSaturationImageEffect::yellowChanged);
}

float SelectiveSaturationImageEffect::green() const
{
    return d->green;
}

void SelectiveSaturationImageEffect::setGreen(float green)
{
    assign(d->green, qMax(qMin(green, 1.0F), -1.0F), &SelectiveSaturationImageEffect::greenChanged);
}

float SelectiveSaturationImageEffect::aqua() const
{
    return d->aqua;
}

void SelectiveSaturationImageEffect::setAqua(float aqua)
{
    assign(d->aqua, qMax(qMin(aqua, 1.0F), -1.0F), &SelectiveSaturationImageEffect::aquaChanged);
}

float SelectiveSaturationImageEffect::blue() const
{
    return d->blue;
}

void SelectiveSaturationImageEffect::setBlue(float blue)
{
    assign(d->blue, qMax(qMin(blue, 1.0F), -1.0F), &SelectiveSaturationImageEffect::blueChanged);
}

float SelectiveSaturationImageEffect::purple() const
{
    return d->purple;
}

void SelectiveSaturationImageEffect::setPurple(float purple)
{
    assign(d->purple, qMax(qMin(purple, 1.0F), -1.0F),
           &SelectiveSaturationImageEffect::purpleChanged);
}

float SelectiveSaturationImageEffect::magenta() const
{
    return d->magenta;
}

void SelectiveSaturationImageEffect::setMagenta(float magenta)
{
    assign(d->magenta, qMax(qMin(magenta, 1.0F), -1.0F),
           &SelectiveSaturationImageEffect::magentaChanged);
}

// Compared with zero, only zero itself is equal: the smallest change is worth a pass.
bool SelectiveSaturationImageEffect::isNeutral() const
{
    return qFuzzyCompare(d->red, 0.0F) && qFuzzyCompare(d->orange, 0.0F) &&
           qFuzzyCompare(d->yellow, 0.0F) && qFuzzyCompare(d->green, 0.0F) &&
           qFuzzyCompare(d->aqua, 0.0F) && qFuzzyCompare(d->blue, 0.0F) &&
           qFuzzyCompare(d->purple, 0.0F) && qFuzzyCompare(d->magenta, 0.0F);
}

QImage SelectiveSaturationImageEffect::table() const
{
    return d->table;
}

void SelectiveSaturationImageEffect::updateTable()
{
    const HueTable table = buildHueTable(
        {d->red, d->orange, d->yellow, d->green, d->aqua, d->blue, d->purple, d->magenta});
    std::copy(table.begin(), table.end(), d->table.scanLine(0));
}

ImageEffectState *SelectiveSaturationImageEffect::createState() const
{
    return new SelectiveSaturationImageEffectState;
}

} // namespace ko::imagefx
