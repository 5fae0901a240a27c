#pragma once

#include "imagefx/render/ImageEffectState.h"

#include <QtGui/QVector3D>

namespace ko::imagefx
{

class HSVImageEffectState : public ImageEffectState
{
public:
    HSVImageEffectState();

    QByteArray effectShaderCode(const PixelBufferState *pbs) const override;
    void resolveUniforms(const ImageEffectPass *pass) override;
    void updatePass(const QSharedPointer<ImageEffectPass> &pass,
                    const PixelBufferState *pbs) override;
    void update(const ImageEffect *effect) override;

private:
    int m_parametersLocation = -1;
    QVector3D m_parameters;
};

} // namespace ko::imagefx
