#pragma once

#include "imagefx/render/DefaultImageEffectPass.h"
#include "imagefx/render/ImageEffectState.h"

#include <QtCore/QList>

namespace ko::imagefx
{

class BatchImageEffectState;

// Runs the nested effects between a framebuffer of its own and the target, then draws their result
// over the source with the batch's own mask, blend mode and alpha.
class BatchImageEffectPass : public DefaultImageEffectPass
{
    Q_OBJECT

public:
    BatchImageEffectPass(const BatchImageEffectState *state, const PixelBufferState *pbs);

    void render(const PassTargets &targets, ImageEffectState *state,
                const PixelBufferState *pbs) override;
};

class BatchImageEffectState : public ImageEffectState
{
public:
    BatchImageEffectState();
    ~BatchImageEffectState() override;

    // In order, those that are disabled included.
    QList<QSharedPointer<ImageEffectState>> nestedStates() const { return m_nestedStates; }

    QByteArray effectShaderCode(const PixelBufferState *pbs) const override;
    ImageEffectPass *createPass(const PixelBufferState *pbs) const override;
    void update(const ImageEffect *effect) override;

private:
    QList<QSharedPointer<ImageEffectState>> m_nestedStates;
};

} // namespace ko::imagefx
