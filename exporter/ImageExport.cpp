#include "exporter/ImageExport.h"

#include "exporter/EffectStack.h"
#include "exporter/EngineChoice.h"
#include "exporter/OffscreenGl.h"
#include "exporter/PictureExport.h"
#include "exporter/PictureRenderer.h"
#include "exporter/ProcessorRenderer.h"
#include "exporter/StackReading.h"

#include <algorithm>
#include <future>

namespace ko::exporter
{

namespace
{

// Small enough for any OpenGL of today, and in memory. Should one have a lower limit, drawing
// fails.
bool isSurelyDrawable(const QSize &size)
{
    constexpr int side = 4096;
    return !size.isEmpty() && std::max(size.width(), size.height()) <= side;
}

} // namespace

ImageExport::ImageExport(OffscreenGl &gl) : m_gl(gl) {}

Outcome ImageExport::run(const ExportRequest &request)
{
    PictureExport picture(request.source, request.target, request.options);
    EffectStack stack;
    if (Outcome failure = picture.open()) {
        return failure;
    }
    if (Outcome failure = readStack(request.effects, request.options.strict, &stack, &m_warnings)) {
        return failure;
    }
    if (Outcome failure = picture.checkTarget()) {
        return failure;
    }
    Outcome failure = drawAndSave(&picture, stack, request);
    m_warnings += picture.warnings();
    m_notes += picture.notes();
    return failure;
}

Outcome ImageExport::drawAndSave(PictureExport *picture, const EffectStack &stack,
                                 const ExportRequest &request)
{
    EngineChoice engine(request.options.engine, m_gl, stack, request.threads);
    if (engine.asksGl()) {
        if (Outcome failure = draw(picture, stack, &engine, request.effects)) {
            return failure;
        }
        m_notes.append(engine.note());
        return picture->save();
    }
    if (Outcome failure = engine.make(picture->source(), request.effects)) {
        return failure;
    }
    if (!engine.processor()->isIdle()) {
        m_notes.append(engine.note());
    }
    return picture->exportWith(*engine.processor());
}

// The context takes as long to start as most pictures to decode, so they do it at the same time.
Outcome ImageExport::draw(PictureExport *picture, const EffectStack &stack, EngineChoice *engine,
                          const QString &stackFile)
{
    const bool started = isSurelyDrawable(picture->drawnSize());
    std::future<Outcome> loaded;
    if (started) {
        loaded = std::async(std::launch::async, [picture] { return picture->load(); });
    }
    if (Outcome failure = engine->make(picture->source(), stackFile)) {
        return failure;
    }
    if (loaded.valid()) {
        if (Outcome failure = loaded.get()) {
            return failure;
        }
    }
    const ProcessorRenderer *processor = engine->processor();
    picture->setLargestSide(processor == nullptr ? m_gl.largestSide() : 0);
    if (!started) {
        if (Outcome failure = picture->load()) {
            return failure;
        }
    }
    if (processor != nullptr) {
        return picture->render(*processor);
    }
    PictureRenderer renderer;
    return picture->render(renderer, stack);
}

} // namespace ko::exporter
