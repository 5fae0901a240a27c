#include "HeadlessContext.h"

#include "HeadlessDisplay.h"
#include "HeadlessWindow.h"

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>

// A context that is first made current without any surface starts with its draw buffer set to
// GL_NONE, and would then draw nothing into a window. Hence a temporary pbuffer.
HeadlessContext::HeadlessContext(const HeadlessDisplay &display, EGLConfig config,
                                 const QSurfaceFormat &format, QPlatformOpenGLContext *share,
                                 const QVariant &nativeHandle)
    : QEGLPlatformContext(display.resolved(format), share, display.handle(), &config, nativeHandle,
                          NoSurfaceless)
{
}

bool HeadlessContext::makeCurrent(QPlatformSurface *surface)
{
    // Without this check EGL would take the missing surface as a wish for none, and a window's
    // frames would go nowhere without an error.
    if (windowOf(surface) && eglSurfaceForPlatformSurface(surface) == EGL_NO_SURFACE) {
        qWarning("headless: no surface for a window of %d x %d pixels",
                 windowOf(surface)->geometry().width(), windowOf(surface)->geometry().height());
        return false;
    }
    return QEGLPlatformContext::makeCurrent(surface);
}

void HeadlessContext::swapBuffers(QPlatformSurface *surface)
{
    HeadlessWindow *window = windowOf(surface);
    if (!window) {
        context()->functions()->glFlush();
        return;
    }
    // Nothing else would hold back a program that draws faster than the GPU.
    context()->functions()->glFinish();
    window->waitForNextFrame();
}

EGLSurface HeadlessContext::eglSurfaceForPlatformSurface(QPlatformSurface *surface)
{
    HeadlessWindow *window = windowOf(surface);
    return window ? window->pbuffer(eglConfig()) : EGL_NO_SURFACE;
}

EGLSurface HeadlessContext::createTemporaryOffscreenSurface()
{
    const EGLint size[] = {EGL_WIDTH, 1, EGL_HEIGHT, 1, EGL_NONE};
    return eglCreatePbufferSurface(eglDisplay(), eglConfig(), size);
}

HeadlessWindow *HeadlessContext::windowOf(QPlatformSurface *surface)
{
    if (surface->surface()->surfaceClass() != QSurface::Window)
        return nullptr;
    return static_cast<HeadlessWindow *>(surface);
}
