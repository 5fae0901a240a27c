#pragma once

#include "imagefx/model/ImageEffect.h"

#include <QtGui/QImage>

namespace ko::imagefx
{

// Changes the saturation of eight ranges of hue, each by itself. -1 turns a range grey, 1 doubles
// its distance from grey; between the ranges the change fades, and where two overlap they add up.
// Every property is clamped to [-1, 1], default and neutral 0.
class KORVELIMAGEFX_EXPORT SelectiveSaturationImageEffect : public ImageEffect
{
    Q_OBJECT
    // 312 to 395 degrees, most at 339.
    Q_PROPERTY(float red READ red WRITE setRed NOTIFY redChanged)
    // 338 to 410 degrees, most at 392.
    Q_PROPERTY(float orange READ orange WRITE setOrange NOTIFY orangeChanged)
    // 31 to 93 degrees, most at 51.
    Q_PROPERTY(float yellow READ yellow WRITE setYellow NOTIFY yellowChanged)
    // 45 to 175 degrees, most at 90.
    Q_PROPERTY(float green READ green WRITE setGreen NOTIFY greenChanged)
    // 90 to 202 degrees, most at 172.
    Q_PROPERTY(float aqua READ aqua WRITE setAqua NOTIFY aquaChanged)
    // 134 to 294 degrees, most at 200.
    Q_PROPERTY(float blue READ blue WRITE setBlue NOTIFY blueChanged)
    // 183 to 324 degrees, most at 294.
    Q_PROPERTY(float purple READ purple WRITE setPurple NOTIFY purpleChanged)
    // 293 to 340 degrees, most at 321.
    Q_PROPERTY(float magenta READ magenta WRITE setMagenta NOTIFY magentaChanged)

public:
    explicit SelectiveSaturationImageEffect(QObject *parent = nullptr);
    ~SelectiveSaturationImageEffect() override;

    float red() const;
    void setRed(float red);

    float orange() const;
    void setOrange(float orange);

    float yellow() const;
    void setYellow(float yellow);

    float green() const;
    void setGreen(float green);

    float aqua() const;
    void setAqua(float aqua);

    float blue() const;
    void setBlue(float blue);

    float purple() const;
    void setPurple(float purple);

    float magenta() const;
    void setMagenta(float magenta);

    bool isNeutral() const override;

    // The saturation factor of every degree of hue, 360 x 1 bytes: 128 leaves it, 0 is grey, 255
    // doubles it.
    QImage table() const;

public Q_SLOTS:
    // Rebuilds table(); connected to updateRequired().
    void updateTable();

Q_SIGNALS:
    void redChanged();
    void orangeChanged();
    void yellowChanged();
    void greenChanged();
    void aquaChanged();
    void blueChanged();
    void purpleChanged();
    void magentaChanged();

protected:
    ImageEffectState *createState() const override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
