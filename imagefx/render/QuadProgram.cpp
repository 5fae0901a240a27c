#include "imagefx/render/QuadProgram.h"

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>
#include <QtGui/QOpenGLShaderProgram>

namespace ko::imagefx
{

const QuadVertices quadVertices{QVector3D(-1, -1, 0), QVector3D(1, -1, 0), QVector3D(-1, 1, 0),
                                QVector3D(1, 1, 0)};
const QuadTexCoords quadTexCoords{QVector2D(0, 0), QVector2D(1, 0), QVector2D(0, 1),
                                  QVector2D(1, 1)};

void linkQuadProgram(QOpenGLShaderProgram *program, const QByteArray &vertexShader,
                     const QByteArray &fragmentShader)
{
    auto *vertex = new QOpenGLShader(QOpenGLShader::Vertex, program);
    vertex->compileSourceCode(vertexShader);
    program->addShader(vertex);
    auto *fragment = new QOpenGLShader(QOpenGLShader::Fragment, program);
    fragment->compileSourceCode(fragmentShader);
    program->addShader(fragment);
    for (const char *name : {"a_vertex", "a_Vertex"}) {
        program->bindAttributeLocation(name, vertexAttribute);
    }
    for (const char *name : {"a_texCoord", "a_TexCoord"}) {
        program->bindAttributeLocation(name, texCoordAttribute);
    }
    program->link();
}

void drawQuad(QOpenGLShaderProgram *program, int vertexLocation, int texCoordLocation,
              const QuadTexCoords &texCoords)
{
    // Without a program a compatibility context would draw with the fixed pipeline.
    if (!program->isLinked() || !program->bind()) {
        return;
    }
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    // With a buffer bound the addresses below would be taken as offsets into it.
    gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
    program->enableAttributeArray(vertexLocation);
    program->setAttributeArray(vertexLocation, quadVertices.data());
    program->enableAttributeArray(texCoordLocation);
    program->setAttributeArray(texCoordLocation, texCoords.data());
    gl->glDrawArrays(GL_TRIANGLE_STRIP, 0, int(quadVertices.size()));
    // The caller's coordinates may be gone before the next draw that sets none.
    program->setAttributeArray(texCoordLocation, quadTexCoords.data());
    program->release();
}

} // namespace ko::imagefx
