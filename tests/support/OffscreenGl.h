#pragma once

#include <QtGui/QImage>
#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>

#include <memory>

class QOpenGLFramebufferObject;

namespace ko::imagefx::test
{

// A GL context of its own with an offscreen surface, current from construction on.
class OffscreenGl
{
public:
    explicit OffscreenGl(const QSurfaceFormat &format = QSurfaceFormat(),
                         QOpenGLContext *shareContext = nullptr);

    // False when the machine gave no context; nothing else may be called then.
    bool isValid() const { return m_valid; }
    QOpenGLContext *context() { return &m_context; }
    bool makeCurrent() { return m_context.makeCurrent(&m_surface); }
    void doneCurrent() { m_context.doneCurrent(); }

private:
    QOffscreenSurface m_surface;
    QOpenGLContext m_context;
    bool m_valid = false;
};

// The framebuffer's colour as RGBA8888, row 0 first: its bottom row is the image's first scan line.
// The bytes are what the framebuffer holds, premultiplied when that is. A pending GL error fails
// the running test.
QImage readBack(QOpenGLFramebufferObject *framebuffer);

// A new texture of RGBA8888 bytes as they are, nearest filtering, clamped; delete it with
// glDeleteTextures.
GLuint uploadRgba(const QImage &image);

} // namespace ko::imagefx::test
