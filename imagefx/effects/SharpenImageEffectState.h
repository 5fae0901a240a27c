#pragma once

#include "imagefx/effects/RadiusImageEffectState.h"
#include "imagefx/effects/TwoPassImageEffectPass.h"

namespace ko::imagefx
{

class SharpenImageEffectState;

class SharpenImageEffectPass : public TwoPassImageEffectPass
{
    Q_OBJECT

public:
    SharpenImageEffectPass(const SharpenImageEffectState *state, const PixelBufferState *pbs);
};

class SharpenImageEffectState : public RadiusImageEffectState
{
public:
    SharpenImageEffectState();

    QByteArray effectShaderCode(const PixelBufferState *pbs) const override;
    ImageEffectPass *createPass(const PixelBufferState *pbs) const override;
    void resolveUniforms(const ImageEffectPass *pass) override;
    void updatePass(const QSharedPointer<ImageEffectPass> &pass,
                    const PixelBufferState *pbs) override;
    void update(const ImageEffect *effect) override;

    // The text of a shader behind the definition of its number of taps for `pbs`.
    QByteArray shaderWithTaps(const QString &name, const PixelBufferState *pbs) const;

private:
    int m_strengthLocation = -1;
    float m_strength = 0.0F;
};

} // namespace ko::imagefx
