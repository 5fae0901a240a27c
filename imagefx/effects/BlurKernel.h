#pragma once

#include "imagefx/Export.h"

#include <QtCore/QByteArray>
#include <QtCore/QVector>

namespace ko::imagefx
{

// Taps on each side for a radius in target pixels, of blur and sharpen alike: whole pixels, at
// least 1 and at most 16. Larger radii spread the same taps farther apart.
KORVELIMAGEFX_EXPORT int tapCount(float radiusInPixels);

// The Gaussian weights of the centre and of the taps on one side, taps + 1 numbers; the centre plus
// twice the others is 1. Pure functions: any thread, no GL.
KORVELIMAGEFX_EXPORT QVector<float> blurWeights(int taps);

// The same as GLSL statements, which define SAMPLES (taps + 1) and the array `w`.
QByteArray blurDefinitions(int taps);

} // namespace ko::imagefx
