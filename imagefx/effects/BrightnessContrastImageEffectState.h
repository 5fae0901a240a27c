#pragma once

#include "imagefx/render/ImageEffectState.h"

namespace ko::imagefx
{

class BrightnessContrastImageEffectState : public ImageEffectState
{
public:
    BrightnessContrastImageEffectState();

    QByteArray effectShaderCode(const PixelBufferState *pbs) const override;
    void resolveUniforms(const ImageEffectPass *pass) override;
    void updatePass(const QSharedPointer<ImageEffectPass> &pass,
                    const PixelBufferState *pbs) override;
    void update(const ImageEffect *effect) override;

private:
    int m_brightnessLocation = -1;
    int m_contrastLocation = -1;
    float m_brightness = 0.0F;
    float m_contrast = 0.0F;
};

} // namespace ko::imagefx
