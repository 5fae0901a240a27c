#pragma once

#include "imagefx/render/ImageEffectState.h"

#include <QtGui/QColor>

namespace ko::imagefx
{

class ColorFillImageEffectState : public ImageEffectState
{
public:
    ColorFillImageEffectState();

    QByteArray effectShaderCode(const PixelBufferState *pbs) const override;
    void resolveUniforms(const ImageEffectPass *pass) override;
    void updatePass(const QSharedPointer<ImageEffectPass> &pass,
                    const PixelBufferState *pbs) override;
    void update(const ImageEffect *effect) override;

private:
    int m_colorLocation = -1;
    QColor m_color;
};

} // namespace ko::imagefx
