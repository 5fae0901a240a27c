#pragma once

#include <QtGui/qopengl.h>

namespace ko::imagefx
{

// The texture units of the samplers, the same in every program.
constexpr int sourceUnit = 0;
constexpr int tableUnit = 1; // an effect's table, its first pass, or a batch's nested effects
constexpr int hueTableUnit = 2;
constexpr int maskGradientUnit = 4;

// Both need a current GL context.
void activateTextureUnit(int unit);
void bindTexture(int unit, GLuint textureId);

} // namespace ko::imagefx
