#pragma once

#include "tests/support/EffectRendering.h"

namespace ko::imagefx::test
{

// The same as renderTexture(), drawn by the processor's engine. Null for effects that it does not
// know. Needs no GL context.
QImage renderWithEngine(const QList<ImageEffect *> &effects, const QImage &source,
                        const RenderSettings &settings = {}, int threads = 2);

} // namespace ko::imagefx::test
