#pragma once

#include "imagefx/model/ImageEffect.h"

namespace ko::imagefx
{

// Lifts or lowers all colours, then spreads them around middle grey:
// factor * (colour + brightness - 0.5) + 0.5 with factor = F (contrast + 1) / (F - contrast) and
// F = 259.047619 / 255. A contrast of F divides by zero, and more than that inverts the picture.
class KORVELIMAGEFX_EXPORT BrightnessContrastImageEffect : public ImageEffect
{
    Q_OBJECT
    // Added to every channel; not clamped, default and neutral 0.
    Q_PROPERTY(float brightness READ brightness WRITE setBrightness NOTIFY brightnessChanged)
    // -1 flattens to grey, F is infinite; not clamped, default and neutral 0.
    Q_PROPERTY(float contrast READ contrast WRITE setContrast NOTIFY contrastChanged)

public:
    explicit BrightnessContrastImageEffect(QObject *parent = nullptr);
    ~BrightnessContrastImageEffect() override;

    float brightness() const;
    void setBrightness(float brightness);

    float contrast() const;
    void setContrast(float contrast);

    bool isNeutral() const override;

Q_SIGNALS:
    void brightnessChanged();
    void contrastChanged();

protected:
    ImageEffectState *createState() const override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
