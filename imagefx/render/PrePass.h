#pragma once

#include <QtGui/QOpenGLShaderProgram>

class QOpenGLFramebufferObject;

namespace ko::imagefx
{

// The first of the two passes of blur and sharpen: a program of its own that reads "u_source" and
// "u_radius" and draws outside the frame of blend mode, mask and alpha. Belongs to the context it
// was created in.
class PrePass : public QOpenGLShaderProgram
{
    Q_OBJECT

public:
    explicit PrePass(const QByteArray &fragmentShader);

    // Draws `source` over the whole of `target`; the radius in pixels. Leaves unit 0 active.
    void draw(const QOpenGLFramebufferObject *source, QOpenGLFramebufferObject *target,
              float radius);

private:
    int m_vertexLocation;
    int m_texCoordLocation;
    int m_radiusLocation;
};

} // namespace ko::imagefx
