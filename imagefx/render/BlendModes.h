#pragma once

#include <QtCore/QByteArray>

namespace ko::imagefx
{

// The piece that defines fx_blend() for a value of ImageEffect::BlendMode; empty for Normal, which
// needs none, and for numbers outside the enumeration. Any thread.
QByteArray blendModeShaderCode(int blendMode);

} // namespace ko::imagefx
