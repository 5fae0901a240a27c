#pragma once

#include "imagefx/Export.h"
#include "imagefx/effects/ExposureTables.h"

namespace ko::imagefx
{

// The tone curve of the exposure effect: exposure, then shadows, then lights, each rounded to a
// level that the next one starts from. All three from -1 to 1; zeros give the identity. A pure
// function: any thread, no GL.
KORVELIMAGEFX_EXPORT ToneTable buildExposureCurve(float exposure, float darkTones,
                                                  float lightTones);

} // namespace ko::imagefx
