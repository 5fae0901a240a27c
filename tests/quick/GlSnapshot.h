#pragma once

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtGui/qopengl.h>

#include <array>
#include <memory>

class QOpenGLShaderProgram;

namespace ko::imagefx::test
{

// What the current context's state is: switches, blending, clear colour, tests, write masks,
// program, buffers, attribute arrays, textures of all units that the library uses, the active one,
// and the transfer alignments. Not the framebuffer, nor the viewport that belongs to it.
using GlSnapshot = QMap<QString, QVector<double>>;

GlSnapshot snapshot();
// What differs, one line a piece of state; empty when nothing does.
QString difference(const GlSnapshot &actual, const GlSnapshot &expected);

// Objects of the current context, and a state made of them that no pass would draw right with.
// Every test rejects every pixel.
class OddState
{
public:
    OddState();
    // In the same context.
    ~OddState();

    // With the attribute arrays that the passes use enabled, or not.
    void set(bool attributeArrays);

private:
    Q_DISABLE_COPY(OddState)

    std::array<GLuint, 5> m_textures{};
    GLuint m_buffer = 0;
    std::unique_ptr<QOpenGLShaderProgram> m_program;
};

} // namespace ko::imagefx::test
