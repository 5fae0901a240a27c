#pragma once

#include "imagefx/model/ImageEffect.h"

namespace ko::imagefx
{

// Brightens or darkens the whole picture, its shadows or its lights, by one tone curve for all
// three channels.
class KORVELIMAGEFX_EXPORT ExposureImageEffect : public ImageEffect
{
    Q_OBJECT
    // The whole picture; clamped to [-1, 1], default and neutral 0.
    Q_PROPERTY(float exposure READ exposure WRITE setExposure NOTIFY exposureChanged)
    // The shadows; clamped to [-1, 1], default and neutral 0.
    Q_PROPERTY(float darkTones READ darkTones WRITE setDarkTones NOTIFY darkTonesChanged)
    // The lights, -1 takes white itself down; clamped to [-1, 1], default and neutral 0.
    Q_PROPERTY(float lightTones READ lightTones WRITE setLightTones NOTIFY lightTonesChanged)

public:
    explicit ExposureImageEffect(QObject *parent = nullptr);
    ~ExposureImageEffect() override;

    float exposure() const;
    void setExposure(float exposure);

    float darkTones() const;
    void setDarkTones(float darkTones);

    float lightTones() const;
    void setLightTones(float lightTones);

    bool isNeutral() const override;

Q_SIGNALS:
    void exposureChanged();
    void darkTonesChanged();
    void lightTonesChanged();

protected:
    ImageEffectState *createState() const override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
