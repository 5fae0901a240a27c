#include "tests/quick/GlSnapshot.h"

#include <QtCore/QStringList>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>
#include <QtGui/QOpenGLShaderProgram>

namespace ko::imagefx::test
{

namespace
{

struct Value {
    const char *name;
    GLenum key;
    int numbers;
};

constexpr std::array<Value, 33> values{{
    {"blend", GL_BLEND, 1},
    {"scissor test", GL_SCISSOR_TEST, 1},
    {"stencil test", GL_STENCIL_TEST, 1},
    {"depth test", GL_DEPTH_TEST, 1},
    {"cull face", GL_CULL_FACE, 1},
    {"dither", GL_DITHER, 1},
    {"polygon offset", GL_POLYGON_OFFSET_FILL, 1},
    {"blend source, colour", GL_BLEND_SRC_RGB, 1},
    {"blend target, colour", GL_BLEND_DST_RGB, 1},
    {"blend source, alpha", GL_BLEND_SRC_ALPHA, 1},
    {"blend target, alpha", GL_BLEND_DST_ALPHA, 1},
    {"blend equation, colour", GL_BLEND_EQUATION_RGB, 1},
    {"blend equation, alpha", GL_BLEND_EQUATION_ALPHA, 1},
    {"blend colour", GL_BLEND_COLOR, 4},
    {"clear colour", GL_COLOR_CLEAR_VALUE, 4},
    {"clear depth", GL_DEPTH_CLEAR_VALUE, 1},
    {"clear stencil", GL_STENCIL_CLEAR_VALUE, 1},
    {"colour mask", GL_COLOR_WRITEMASK, 4},
    {"depth mask", GL_DEPTH_WRITEMASK, 1},
    {"stencil mask", GL_STENCIL_WRITEMASK, 1},
    {"scissor box", GL_SCISSOR_BOX, 4},
    {"depth function", GL_DEPTH_FUNC, 1},
    {"stencil function", GL_STENCIL_FUNC, 1},
    {"stencil reference", GL_STENCIL_REF, 1},
    {"cull face mode", GL_CULL_FACE_MODE, 1},
    {"front face", GL_FRONT_FACE, 1},
    {"line width", GL_LINE_WIDTH, 1},
    {"program", GL_CURRENT_PROGRAM, 1},
    {"array buffer", GL_ARRAY_BUFFER_BINDING, 1},
    {"element buffer", GL_ELEMENT_ARRAY_BUFFER_BINDING, 1},
    {"pack alignment", GL_PACK_ALIGNMENT, 1},
    {"unpack alignment", GL_UNPACK_ALIGNMENT, 1},
    {"active texture", GL_ACTIVE_TEXTURE, 1},
}};

// What the library uses and a few more.
constexpr int textureUnits = 8;
constexpr GLuint attributes = 8;

QOpenGLFunctions *functions()
{
    return QOpenGLContext::currentContext()->functions();
}

QString text(const QVector<double> &numbers)
{
    QStringList texts;
    for (const double number : numbers) {
        texts.append(QString::number(number));
    }
    return texts.join(QLatin1Char(' '));
}

} // namespace

GlSnapshot snapshot()
{
    QOpenGLFunctions *gl = functions();
    GlSnapshot result;
    for (const Value &value : values) {
        std::array<GLfloat, 4> numbers{};
        gl->glGetFloatv(value.key, numbers.data());
        QVector<double> &stored = result[QLatin1String(value.name)];
        for (int i = 0; i < value.numbers; ++i) {
            stored.append(double(numbers.at(size_t(i))));
        }
    }
    for (GLuint i = 0; i < attributes; ++i) {
        GLint enabled = 0;
        gl->glGetVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
        result[QStringLiteral("attribute array %1").arg(i)] = {double(enabled)};
    }
    GLint active = 0;
    gl->glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    for (int unit = 0; unit < textureUnits; ++unit) {
        GLint bound = 0;
        gl->glActiveTexture(GLenum(GL_TEXTURE0 + unit));
        gl->glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
        result[QStringLiteral("texture of unit %1").arg(unit)] = {double(bound)};
    }
    gl->glActiveTexture(GLenum(active));
    return result;
}

QString difference(const GlSnapshot &actual, const GlSnapshot &expected)
{
    QStringList lines;
    for (auto it = expected.cbegin(); it != expected.cend(); ++it) {
        const QVector<double> found = actual.value(it.key());
        if (found != it.value()) {
            lines.append(
                QStringLiteral("%1 is %2, not %3").arg(it.key(), text(found), text(it.value())));
        }
    }
    return lines.join(QLatin1Char('\n'));
}

OddState::OddState() : m_program(std::make_unique<QOpenGLShaderProgram>())
{
    QOpenGLFunctions *gl = functions();
    gl->glGenTextures(int(m_textures.size()), m_textures.data());
    gl->glGenBuffers(1, &m_buffer);
    m_program->addShaderFromSourceCode(QOpenGLShader::Vertex,
                                       "void main() { gl_Position = vec4(0.0); }");
    m_program->addShaderFromSourceCode(QOpenGLShader::Fragment,
                                       "void main() { gl_FragColor = vec4(1.0); }");
    m_program->link();
}

OddState::~OddState()
{
    QOpenGLFunctions *gl = functions();
    gl->glDeleteTextures(int(m_textures.size()), m_textures.data());
    gl->glDeleteBuffers(1, &m_buffer);
}

void OddState::set(bool attributeArrays)
{
    QOpenGLFunctions *gl = functions();
    for (const GLenum test :
         {GL_BLEND, GL_SCISSOR_TEST, GL_STENCIL_TEST, GL_DEPTH_TEST, GL_CULL_FACE}) {
        gl->glEnable(test);
    }
    gl->glBlendFuncSeparate(GL_ZERO, GL_ONE, GL_DST_COLOR, GL_SRC_ALPHA);
    gl->glBlendEquationSeparate(GL_FUNC_REVERSE_SUBTRACT, GL_FUNC_SUBTRACT);
    gl->glScissor(1, 2, 0, 0);
    gl->glStencilFunc(GL_NEVER, 1, 0xff);
    gl->glDepthFunc(GL_NEVER);
    gl->glCullFace(GL_FRONT_AND_BACK);
    gl->glClearColor(0.25F, 0.5F, 0.75F, 0.125F);
    for (size_t i = 0; i < m_textures.size(); ++i) {
        gl->glActiveTexture(GLenum(GL_TEXTURE0 + i));
        gl->glBindTexture(GL_TEXTURE_2D, m_textures.at(i));
    }
    gl->glActiveTexture(GL_TEXTURE0);
    gl->glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
    for (const GLuint attribute : {0U, 1U}) {
        if (attributeArrays) {
            gl->glEnableVertexAttribArray(attribute);
        } else {
            gl->glDisableVertexAttribArray(attribute);
        }
    }
    gl->glUseProgram(m_program->programId());
}

} // namespace ko::imagefx::test
