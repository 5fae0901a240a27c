#include "tests/support/EngineRendering.h"

#include "engine/EffectEngine.h"

#include <algorithm>

namespace ko::imagefx::test
{

namespace
{

// The same bytes: their colour is premultiplied whatever the format says.
QImage asRgba8888(const QImage &image)
{
    QImage bytes(image.size(), QImage::Format_RGBA8888);
    for (int y = 0; y < image.height(); ++y) {
        std::copy_n(image.constScanLine(y), size_t(4) * size_t(image.width()), bytes.scanLine(y));
    }
    return bytes;
}

} // namespace

QImage renderWithEngine(const QList<ImageEffect *> &effects, const QImage &source,
                        const RenderSettings &settings, int threads)
{
    EffectEngine::Options options;
    options.relativeScale = settings.relativeScale;
    options.globalAlpha = settings.globalAlpha;
    options.threads = threads;
    return asRgba8888(EffectEngine(effects, options).render(source));
}

} // namespace ko::imagefx::test
