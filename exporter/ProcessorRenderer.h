#pragma once

#include "engine/EffectEngine.h"

#include <QtCore/QSize>
#include <QtGui/QImage>

#include <memory>
#include <mutex>

namespace ko::exporter
{

class EffectStack;

// Draws pictures on the processor through the effects of a stack that show. Needs no GL and no
// application object. All functions but the constructor may be called on any thread, also several
// at once.
class ProcessorRenderer
{
public:
    // `stack` must outlive the renderer and not change. `threads`: how many work on one picture, at
    // least 1.
    ProcessorRenderer(const EffectStack &stack, int threads);
    ~ProcessorRenderer();

    int threads() const { return m_threads; }
    // Whether no effect shows: there is nothing to draw then.
    bool isIdle() const { return m_idle; }
    // The id of an effect that only GL can draw; empty when there is none.
    QString unsupported() const;

    // As PictureRenderer::draw(): draws at the picture's own size, pixel-sized parameters
    // multiplied by `scale`. The result has Format_RGBX8888 for an opaque picture, otherwise
    // Format_RGBA8888. False when memory ran out; the picture is of no use then.
    bool draw(QImage *picture, float scale) const;
    // The same for the rows of an opaque picture at scale 1, as EffectEngine::render() does it.
    bool draw(const QSize &size, imagefx::RowSource *source, imagefx::RowSink *sink) const;

private:
    Q_DISABLE_COPY(ProcessorRenderer)

    imagefx::EffectEngine makeEngine(float scale) const;

    const EffectStack &m_stack;
    const int m_threads;
    const bool m_idle;
    // The effects are read by one thread at a time.
    mutable std::mutex m_mutex;
    const imagefx::EffectEngine m_engine;
};

} // namespace ko::exporter
