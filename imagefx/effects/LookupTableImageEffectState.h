#pragma once

#include "imagefx/render/ImageEffectState.h"
#include "imagefx/render/TableTexture.h"

namespace ko::imagefx
{

class LookupTableImageEffectState : public ImageEffectState
{
public:
    LookupTableImageEffectState();

    QByteArray effectShaderCode(const PixelBufferState *pbs) const override;
    void initializePass(ImageEffectPass *pass) override;
    void updatePass(const QSharedPointer<ImageEffectPass> &pass,
                    const PixelBufferState *pbs) override;
    void update(const ImageEffect *effect) override;

private:
    TableTexture m_table;
};

} // namespace ko::imagefx
