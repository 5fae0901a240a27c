#pragma once

#include "imagefx/Export.h"

#include <QtCore/QObject>

namespace ko::imagefx
{

// One stop of an alpha mask's gradient: from `location` on, the mask lets `value` of the effect
// through. Lives on the GUI thread. A stop has no repaint signal of its own; the mask that lists it
// listens to its two change signals.
class KORVELIMAGEFX_EXPORT AlphaGradientStop : public QObject
{
    Q_OBJECT
    // Position along the gradient, clamped to [0, 1]; default 0.
    Q_PROPERTY(float location READ location WRITE setLocation NOTIFY locationChanged)
    // Opacity at that position, clamped to [0, 1]; default 1, fully opaque.
    Q_PROPERTY(float value READ value WRITE setValue NOTIFY valueChanged)

public:
    explicit AlphaGradientStop(QObject *parent = nullptr);
    // Stores both numbers as they are: only the setters clamp.
    AlphaGradientStop(float location, float value, QObject *parent);

    float location() const { return m_location; }
    void setLocation(float location);

    float value() const { return m_value; }
    void setValue(float value);

Q_SIGNALS:
    void locationChanged();
    void valueChanged();

private:
    float m_location = 0.0F;
    float m_value = 1.0F;
};

} // namespace ko::imagefx
