#pragma once

#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>

namespace ko::contactsheet
{

// A GL context without a window, current while the object lives. Needs a QGuiApplication.
class OffscreenGl
{
public:
    // Throws an Error where there is no OpenGL.
    OffscreenGl();

private:
    Q_DISABLE_COPY(OffscreenGl)

    QOffscreenSurface m_surface;
    QOpenGLContext m_context;
};

} // namespace ko::contactsheet
