#include "imagefx/model/AlphaGradientStop.h"

namespace ko::imagefx
{

AlphaGradientStop::AlphaGradientStop(QObject *parent) : QObject(parent) {}

AlphaGradientStop::AlphaGradientStop(float location, float value, QObject *parent)
    : QObject(parent), m_location(location), m_value(value)
{
}

void AlphaGradientStop::setLocation(float location)
{
    const float clamped = qBound(0.0F, location, 1.0F);
    if (qFuzzyCompare(m_location, clamped)) {
        return;
    }
    m_location = clamped;
    Q_EMIT locationChanged();
}

void AlphaGradientStop::setValue(float value)
{
    const float clamped = qBound(0.0F, value, 1.0F);
    if (qFuzzyCompare(m_value, clamped)) {
        return;
    }
    m_value = clamped;
    Q_EMIT valueChanged();
}

} // namespace ko::imagefx
