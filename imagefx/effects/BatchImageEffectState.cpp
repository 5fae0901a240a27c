#include "imagefx/effects/BatchImageEffectState.h"

#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/render/FramebufferCopy.h"
#include "imagefx/render/TextureUnits.h"

#include <QtGui/QOpenGLFramebufferObject>

#include <utility>

namespace ko::imagefx
{

namespace
{

// The framebuffer of the two that holds the result.
QOpenGLFramebufferObject *renderNested(const BatchImageEffectState *batch, PassTargets targets,
                                       const PixelBufferState *pbs)
{
    const auto states = batch->nestedStates();
    for (const QSharedPointer<ImageEffectState> &nested : states) {
        const QSharedPointer<ImageEffectPass> pass = nested->effectPass(pbs);
        if (!nested->passDisabled()) {
            pass->render(targets, nested.data(), pbs);
            std::swap(targets.source, targets.target);
        }
    }
    return targets.source;
}

} // namespace

BatchImageEffectPass::BatchImageEffectPass(const BatchImageEffectState *state,
                                           const PixelBufferState *pbs)
    : DefaultImageEffectPass(state, pbs)
{
    if (isLinked() && bind()) {
        setUniformValue("u_batch", tableUnit);
        release();
    }
}

void BatchImageEffectPass::render(const PassTargets &targets, ImageEffectState *state,
                                  const PixelBufferState *pbs)
{
    const auto *batch = static_cast<const BatchImageEffectState *>(state);
    if (batch->nestedStates().isEmpty()) {
        bindTexture(tableUnit, targets.source->texture());
        DefaultImageEffectPass::render(targets, state, pbs);
        return;
    }
    activateTextureUnit(tableUnit);
    QOpenGLFramebufferObject scratch(targets.source->size(), GL_TEXTURE_2D);
    copyFramebuffer(targets.source, &scratch);
    if (renderNested(batch, {&scratch, targets.target}, pbs) != &scratch) {
        copyFramebuffer(targets.target, &scratch);
    }
    // Nested effects bind tables of their own, and a nested batch may have drawn with this very
    // program and its own alpha.
    state->restorePass(pbs);
    bindTexture(tableUnit, scratch.texture());
    DefaultImageEffectPass::render(targets, state, pbs);
}

BatchImageEffectState::BatchImageEffectState()
    : ImageEffectState(QStringLiteral("ko.orvanto.imageeffect.Batch"))
{
}

BatchImageEffectState::~BatchImageEffectState() = default;

QByteArray BatchImageEffectState::effectShaderCode(const PixelBufferState *pbs) const
{
    Q_UNUSED(pbs)
    return ImageEffect::readShader(QStringLiteral("fx_batch.frag"));
}

ImageEffectPass *BatchImageEffectState::createPass(const PixelBufferState *pbs) const
{
    return new BatchImageEffectPass(this, pbs);
}

void BatchImageEffectState::update(const ImageEffect *effect)
{
    ImageEffectState::update(effect);
    m_nestedStates.clear();
    const auto effects = static_cast<const BatchImageEffect *>(effect)->imageEffectList();
    for (ImageEffect *nested : effects) {
        m_nestedStates.append(nested->currentState());
    }
}

} // namespace ko::imagefx
