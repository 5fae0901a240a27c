#pragma once

#include "imagefx/render/ImageEffectState.h"

namespace ko::imagefx
{

// What the states of blur and sharpen share: a radius, the number of taps that follows from it and
// tells their variants apart, and its uniform.
class RadiusImageEffectState : public ImageEffectState
{
public:
    using ImageEffectState::ImageEffectState;

    // In target pixels.
    float radiusInPixels(const PixelBufferState *pbs) const;
    // On each side of a pixel.
    int taps(const PixelBufferState *pbs) const;

    QString effectVariant(const PixelBufferState *pbs) const override;
    void resolveUniforms(const ImageEffectPass *pass) override;
    void updatePass(const QSharedPointer<ImageEffectPass> &pass,
                    const PixelBufferState *pbs) override;

protected:
    // In pixels of the reference image.
    void setRadius(float radius) { m_radius = radius; }

private:
    int m_radiusLocation = -1;
    float m_radius = 0.0F;
};

} // namespace ko::imagefx
