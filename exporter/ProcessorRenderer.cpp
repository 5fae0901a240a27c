#include "exporter/ProcessorRenderer.h"

#include "exporter/EffectStack.h"
#include "exporter/Premultiplication.h"

#include <utility>

namespace ko::exporter
{

using imagefx::EffectEngine;

ProcessorRenderer::ProcessorRenderer(const EffectStack &stack, int threads)
    : m_stack(stack),
      m_threads(threads),
      m_idle(stack.visibleEffects().isEmpty()),
      m_engine(makeEngine(1.0F))
{
}

ProcessorRenderer::~ProcessorRenderer() = default;

EffectEngine ProcessorRenderer::makeEngine(float scale) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    EffectEngine::Options options;
    options.relativeScale = scale;
    options.threads = m_threads;
    options.settled = true;
    return EffectEngine(m_stack.visibleEffects(), options);
}

QString ProcessorRenderer::unsupported() const
{
    return m_engine.unsupported();
}

bool ProcessorRenderer::draw(QImage *picture, float scale) const
{
    const bool translucent = picture->hasAlphaChannel();
    const int dotsPerMeterX = picture->dotsPerMeterX();
    const int dotsPerMeterY = picture->dotsPerMeterY();
    const QImage pixels = premultipliedPixels(std::move(*picture));
    *picture = scale == 1.0F ? m_engine.render(pixels) : makeEngine(scale).render(pixels);
    if (picture->isNull()) {
        return false;
    }
    if (translucent) {
        unpremultiplyPixels(picture);
    }
    picture->setDotsPerMeterX(dotsPerMeterX);
    picture->setDotsPerMeterY(dotsPerMeterY);
    return true;
}

bool ProcessorRenderer::draw(const QSize &size, imagefx::RowSource *source,
                             imagefx::RowSink *sink) const
{
    return m_engine.render(size, true, source, sink);
}

} // namespace ko::exporter
