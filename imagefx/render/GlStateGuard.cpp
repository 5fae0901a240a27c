#include "imagefx/render/GlStateGuard.h"

#include "imagefx/render/QuadProgram.h"
#include "imagefx/render/TextureUnits.h"

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>

namespace ko::imagefx
{

namespace
{

constexpr std::array<GLenum, 5> switches{GL_BLEND, GL_SCISSOR_TEST, GL_STENCIL_TEST, GL_DEPTH_TEST,
                                         GL_CULL_FACE};
constexpr std::array<GLenum, 4> blendFunction{GL_BLEND_SRC_RGB, GL_BLEND_DST_RGB,
                                              GL_BLEND_SRC_ALPHA, GL_BLEND_DST_ALPHA};
constexpr std::array<GLenum, 2> blendEquation{GL_BLEND_EQUATION_RGB, GL_BLEND_EQUATION_ALPHA};
// Unit 0 last, since it stays active.
constexpr std::array<int, 4> units{maskGradientUnit, hueTableUnit, tableUnit, sourceUnit};
constexpr std::array<GLuint, 2> attributes{vertexAttribute, texCoordAttribute};

QOpenGLFunctions *functions()
{
    return QOpenGLContext::currentContext()->functions();
}

} // namespace

GlStateGuard::GlStateGuard()
{
    QOpenGLFunctions *gl = functions();
    for (std::size_t i = 0; i < switches.size(); ++i) {
        m_switches[i] = gl->glIsEnabled(switches[i]);
        gl->glDisable(switches[i]);
    }
    for (std::size_t i = 0; i < blendFunction.size(); ++i) {
        gl->glGetIntegerv(blendFunction[i], &m_blendFunction[i]);
    }
    for (std::size_t i = 0; i < blendEquation.size(); ++i) {
        gl->glGetIntegerv(blendEquation[i], &m_blendEquation[i]);
    }
    gl->glGetFloatv(GL_COLOR_CLEAR_VALUE, m_clearColor.data());
    for (std::size_t i = 0; i < units.size(); ++i) {
        activateTextureUnit(units[i]);
        gl->glGetIntegerv(GL_TEXTURE_BINDING_2D, &m_textures[i]);
    }
    for (std::size_t i = 0; i < attributes.size(); ++i) {
        gl->glGetVertexAttribiv(attributes[i], GL_VERTEX_ATTRIB_ARRAY_ENABLED,
                                &m_attributeArrays[i]);
    }
    gl->glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &m_arrayBuffer);
    gl->glGetIntegerv(GL_CURRENT_PROGRAM, &m_program);
}

GlStateGuard::~GlStateGuard()
{
    QOpenGLFunctions *gl = functions();
    for (std::size_t i = 0; i < switches.size(); ++i) {
        if (m_switches[i] == GL_TRUE) {
            gl->glEnable(switches[i]);
        } else {
            gl->glDisable(switches[i]);
        }
    }
    gl->glBlendFuncSeparate(GLenum(m_blendFunction[0]), GLenum(m_blendFunction[1]),
                            GLenum(m_blendFunction[2]), GLenum(m_blendFunction[3]));
    gl->glBlendEquationSeparate(GLenum(m_blendEquation[0]), GLenum(m_blendEquation[1]));
    gl->glClearColor(m_clearColor[0], m_clearColor[1], m_clearColor[2], m_clearColor[3]);
    for (std::size_t i = 0; i < units.size(); ++i) {
        bindTexture(units[i], GLuint(m_textures[i]));
    }
    for (std::size_t i = 0; i < attributes.size(); ++i) {
        if (m_attributeArrays[i] == GL_FALSE) {
            gl->glDisableVertexAttribArray(attributes[i]);
        }
    }
    gl->glBindBuffer(GL_ARRAY_BUFFER, GLuint(m_arrayBuffer));
    gl->glUseProgram(GLuint(m_program));
}

} // namespace ko::imagefx
