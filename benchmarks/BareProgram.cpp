#include "benchmarks/BareProgram.h"

#include "benchmarks/BareFramebuffer.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <cstring>

namespace ko::imagefx::benchmarks
{

namespace
{

constexpr GLuint vertexAttribute = 0;
constexpr GLuint texCoordAttribute = 1;
constexpr GLsizei stride = 4 * sizeof(GLfloat);
// GL takes an offset into a buffer in the guise of an address.
// NOLINTNEXTLINE(performance-no-int-to-ptr)
const void *const texCoordOffset = reinterpret_cast<const void *>(2 * sizeof(GLfloat));
// Position and texture coordinate of each corner, the same quad as the library's.
constexpr GLfloat quad[] = {-1, -1, 0, 0, 1, -1, 1, 0, -1, 1, 0, 1, 1, 1, 1, 1};

// The shaders are written for OpenGL ES; GLSL 1.10 knows no precision qualifiers.
const char *preamble()
{
    const auto *version = reinterpret_cast<const char *>(glGetString(GL_VERSION));
    const bool embedded = version != nullptr && std::strncmp(version, "OpenGL ES", 9) == 0;
    return embedded ? "" : "#define lowp\n#define mediump\n#define highp\n";
}

void attach(GLuint program, GLenum type, const std::string &text)
{
    const GLuint shader = glCreateShader(type);
    const char *const texts[] = {preamble(), text.c_str()};
    glShaderSource(shader, 2, texts, nullptr);
    glCompileShader(shader);
    glAttachShader(program, shader);
    glDeleteShader(shader); // the program keeps it
}

} // namespace

BareProgram::BareProgram(const std::string &vertexShader, const std::string &fragmentShader)
    : m_program(glCreateProgram())
{
    attach(m_program, GL_VERTEX_SHADER, vertexShader);
    attach(m_program, GL_FRAGMENT_SHADER, fragmentShader);
    glBindAttribLocation(m_program, vertexAttribute, "a_vertex");
    glBindAttribLocation(m_program, texCoordAttribute, "a_texCoord");
    glLinkProgram(m_program);

    glGenBuffers(1, &m_buffer);
    glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
    glBufferData(GL_ARRAY_BUFFER, sizeof(quad), quad, GL_STATIC_DRAW);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

BareProgram::~BareProgram()
{
    glDeleteBuffers(1, &m_buffer);
    glDeleteProgram(m_program);
}

bool BareProgram::isLinked() const
{
    GLint linked = GL_FALSE;
    glGetProgramiv(m_program, GL_LINK_STATUS, &linked);
    return linked == GL_TRUE;
}

bool BareProgram::setTextureUnit(const char *name, int unit)
{
    const GLint location = glGetUniformLocation(m_program, name);
    glUseProgram(m_program);
    glUniform1i(location, unit);
    glUseProgram(0);
    return location >= 0;
}

bool BareProgram::setUniform(const char *name, const std::vector<float> &components)
{
    const GLint location = glGetUniformLocation(m_program, name);
    glUseProgram(m_program);
    switch (components.size()) {
    case 1:
        glUniform1fv(location, 1, components.data());
        break;
    case 2:
        glUniform2fv(location, 1, components.data());
        break;
    case 3:
        glUniform3fv(location, 1, components.data());
        break;
    case 4:
        glUniform4fv(location, 1, components.data());
        break;
    default:
        return false;
    }
    glUseProgram(0);
    return location >= 0;
}

void BareProgram::draw(unsigned texture, const BareFramebuffer &target) const
{
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, texture);
    target.bind();
    glUseProgram(m_program);
    glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
    glEnableVertexAttribArray(vertexAttribute);
    glVertexAttribPointer(vertexAttribute, 2, GL_FLOAT, GL_FALSE, stride, nullptr);
    glEnableVertexAttribArray(texCoordAttribute);
    glVertexAttribPointer(texCoordAttribute, 2, GL_FLOAT, GL_FALSE, stride, texCoordOffset);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    glUseProgram(0);
}

} // namespace ko::imagefx::benchmarks
