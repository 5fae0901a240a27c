#pragma once

#include <QtCore/QByteArray>
#include <QtGui/QVector2D>
#include <QtGui/QVector3D>

#include <array>

class QOpenGLShaderProgram;

namespace ko::imagefx
{

// A full-screen quad and the programs that draw it. The attribute locations are the same in every
// program of the library, and no draw disables its attribute arrays: a pass that finds no attribute
// of its own draws with the arrays that the pass before it left.

using QuadVertices = std::array<QVector3D, 4>;
using QuadTexCoords = std::array<QVector2D, 4>;

constexpr int vertexAttribute = 0;
constexpr int texCoordAttribute = 1;

// A triangle strip over clip space, and the texture coordinates that put texture row 0 at its
// bottom.
extern const QuadVertices quadVertices;
extern const QuadTexCoords quadTexCoords;

// Compiles both texts into `program`, binds "a_vertex" (or "a_Vertex") and "a_texCoord" (or
// "a_TexCoord") to their fixed locations, and links. A failure is left for isLinked() to tell.
void linkQuadProgram(QOpenGLShaderProgram *program, const QByteArray &vertexShader,
                     const QByteArray &fragmentShader);

// Draws quadVertices with `program`, which is left released. Both arrays stay enabled and hold
// quadVertices and quadTexCoords then. Without a linked program nothing is drawn.
void drawQuad(QOpenGLShaderProgram *program, int vertexLocation, int texCoordLocation,
              const QuadTexCoords &texCoords = quadTexCoords);

} // namespace ko::imagefx
