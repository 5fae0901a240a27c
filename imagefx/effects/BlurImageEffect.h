#pragma once

#include "imagefx/model/ImageEffect.h"

namespace ko::imagefx
{

// A Gaussian blur in two passes. Alpha is not blurred: a cut-out keeps its hard edge. Never
// neutral. The cost is that of at most 33 texture reads a pixel and pass, whatever the radius.
class KORVELIMAGEFX_EXPORT BlurImageEffect : public ImageEffect
{
    Q_OBJECT
    // Reach of the blur in pixels of the reference image; clamped to [1, 100], default 1.
    Q_PROPERTY(float radius READ radius WRITE setRadius NOTIFY radiusChanged)

public:
    explicit BlurImageEffect(QObject *parent = nullptr);
    ~BlurImageEffect() override;

    float radius() const;
    void setRadius(float radius);

Q_SIGNALS:
    void radiusChanged();

protected:
    ImageEffectState *createState() const override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
