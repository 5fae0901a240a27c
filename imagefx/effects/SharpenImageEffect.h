#pragma once

#include "imagefx/model/ImageEffect.h"

namespace ko::imagefx
{

// An unsharp mask: adds the difference between the picture and a box blur of it. The cost is that
// of at most 33 texture reads a pixel and pass, whatever the radius.
class KORVELIMAGEFX_EXPORT SharpenImageEffect : public ImageEffect
{
    Q_OBJECT
    // How much of the difference is added; not clamped, default 0.5. Neutral up to 0.001, and so
    // are negative strengths.
    Q_PROPERTY(float strength READ strength WRITE setStrength NOTIFY strengthChanged)
    // Reach of the box blur in pixels of the reference image; clamped to [1, 80], default 1.
    Q_PROPERTY(float radius READ radius WRITE setRadius NOTIFY radiusChanged)

public:
    explicit SharpenImageEffect(QObject *parent = nullptr);
    ~SharpenImageEffect() override;

    float strength() const;
    void setStrength(float strength);

    float radius() const;
    void setRadius(float radius);

    bool isNeutral() const override;

Q_SIGNALS:
    void strengthChanged();
    void radiusChanged();

protected:
    ImageEffectState *createState() const override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
