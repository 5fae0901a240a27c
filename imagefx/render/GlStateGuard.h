#pragma once

#include <QtGui/qopengl.h>

#include <array>

namespace ko::imagefx
{

// While it lives the passes find what they expect: no blending, scissor, stencil, depth test or
// culling. Its end gives back what they change: these switches, blend function and equation, clear
// colour, array buffer, program, attribute arrays, and the textures of the units they use, unit 0
// being active then. Needs the same current GL context at both ends.
class GlStateGuard
{
public:
    GlStateGuard();
    ~GlStateGuard();

private:
    Q_DISABLE_COPY(GlStateGuard)

    std::array<GLboolean, 5> m_switches{};
    std::array<GLint, 4> m_blendFunction{};
    std::array<GLint, 2> m_blendEquation{};
    std::array<GLfloat, 4> m_clearColor{};
    std::array<GLint, 4> m_textures{};
    std::array<GLint, 2> m_attributeArrays{};
    GLint m_arrayBuffer = 0;
    GLint m_program = 0;
};

} // namespace ko::imagefx
