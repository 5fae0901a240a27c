#pragma once

#include "tests/support/EffectModel.h"

namespace ko::imagefx::test
{

// Masks shown by themselves, as plain formulas on the CPU.

// What share of its effect a mask lets through, in all four channels; for opaque pictures of
// RGBA8888 bytes.
ExpectedPixel modelMaskPicture(const ModelMask &mask, const QImage &picture);

// A picture of RGBA8888 bytes, premultiplied, under half-transparent red where the mask (in levels)
// is 0, and under nothing where it is 255.
ExpectedPixel underOverlay(const QImage &picture,
                           const std::function<LevelRange(int x, int y)> &mask);

} // namespace ko::imagefx::test
