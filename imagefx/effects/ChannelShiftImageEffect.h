#pragma once

#include "imagefx/model/ImageEffect.h"

namespace ko::imagefx
{

// Adds a constant to each colour channel.
class KORVELIMAGEFX_EXPORT ChannelShiftImageEffect : public ImageEffect
{
    Q_OBJECT
    // Added to the red channel; not clamped, default and neutral 0.
    Q_PROPERTY(float red READ red WRITE setRed NOTIFY redChanged)
    // Added to the green channel; not clamped, default and neutral 0.
    Q_PROPERTY(float green READ green WRITE setGreen NOTIFY greenChanged)
    // Added to the blue channel; not clamped, default and neutral 0.
    Q_PROPERTY(float blue READ blue WRITE setBlue NOTIFY blueChanged)

public:
    explicit ChannelShiftImageEffect(QObject *parent = nullptr);
    ~ChannelShiftImageEffect() override;

    float red() const;
    void setRed(float red);

    float green() const;
    void setGreen(float green);

    float blue() const;
    void setBlue(float blue);

    bool isNeutral() const override;

Q_SIGNALS:
    void redChanged();
    void greenChanged();
    void blueChanged();

protected:
    ImageEffectState *createState() const override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
