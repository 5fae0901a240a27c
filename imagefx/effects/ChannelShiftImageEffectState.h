#pragma once

#include "imagefx/render/ImageEffectState.h"

#include <QtGui/QVector3D>

namespace ko::imagefx
{

class ChannelShiftImageEffectState : public ImageEffectState
{
public:
    ChannelShiftImageEffectState();

    QByteArray effectShaderCode(const PixelBufferState *pbs) const override;
    void resolveUniforms(const ImageEffectPass *pass) override;
    void updatePass(const QSharedPointer<ImageEffectPass> &pass,
                    const PixelBufferState *pbs) override;
    void update(const ImageEffect *effect) override;

private:
    int m_shiftLocation = -1;
    QVector3D m_shift;
};

} // namespace ko::imagefx
