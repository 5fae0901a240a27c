#pragma once

#include "imagefx/model/ImageEffect.h"

namespace ko::imagefx
{

// Replaces the colour by a weighted sum of its channels. The weights are scaled to add up to 1; all
// three at 0 give undefined colours. Never neutral.
class KORVELIMAGEFX_EXPORT GrayScaleImageEffect : public ImageEffect
{
    Q_OBJECT
    // Weight of the red channel, clamped to [0, 1]; default 0.344.
    Q_PROPERTY(float red READ red WRITE setRed NOTIFY redChanged)
    // Weight of the green channel, clamped to [0, 1]; default 0.5.
    Q_PROPERTY(float green READ green WRITE setGreen NOTIFY greenChanged)
    // Weight of the blue channel, clamped to [0, 1]; default 0.156.
    Q_PROPERTY(float blue READ blue WRITE setBlue NOTIFY blueChanged)

public:
    explicit GrayScaleImageEffect(QObject *parent = nullptr);
    ~GrayScaleImageEffect() override;

    float red() const;
    void setRed(float red);

    float green() const;
    void setGreen(float green);

    float blue() const;
    void setBlue(float blue);

Q_SIGNALS:
    void redChanged();
    void greenChanged();
    void blueChanged();

protected:
    ImageEffectState *createState() const override;
    // The effect's shader piece, for subclasses.
    virtual QByteArray fragmentShaderCode() const;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
