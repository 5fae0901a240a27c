#pragma once

#include "imagefx/model/ImageEffect.h"

namespace ko::imagefx
{

// Turns the hue, then changes the saturation, then mixes towards white or black.
class KORVELIMAGEFX_EXPORT HSVImageEffect : public ImageEffect
{
    Q_OBJECT
    // 1 and -1 turn the hue by half a circle; clamped to [-1, 1], default and neutral 0.
    Q_PROPERTY(float hue READ hue WRITE setHue NOTIFY hueChanged)
    // -1 is grey, 1 doubles the distance from grey; clamped to [-1, 1], default and neutral 0.
    Q_PROPERTY(float saturation READ saturation WRITE setSaturation NOTIFY saturationChanged)
    // 1 is white, -1 is black; clamped to [-1, 1], default and neutral 0.
    Q_PROPERTY(float value READ value WRITE setValue NOTIFY valueChanged)

public:
    explicit HSVImageEffect(QObject *parent = nullptr);
    ~HSVImageEffect() override;

    float hue() const;
    void setHue(float hue);

    float saturation() const;
    void setSaturation(float saturation);

    float value() const;
    void setValue(float value);

    bool isNeutral() const override;

Q_SIGNALS:
    void hueChanged();
    void saturationChanged();
    void valueChanged();

protected:
    ImageEffectState *createState() const override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
