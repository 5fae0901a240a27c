#pragma once

#include <QtEglSupport/private/qeglplatformcontext_p.h>

class HeadlessDisplay;
class HeadlessWindow;

// An OpenGL (ES) context without a window system. Lives on whatever thread makes it current; the
// display must outlive it. `isValid()` is false if the driver refuses the format.
class HeadlessContext : public QEGLPlatformContext
{
public:
    // `config` comes from display.config(format). A non-null `nativeHandle`
    // (a QEGLNativeContext) is adopted rather than owned.
    HeadlessContext(const HeadlessDisplay &display, EGLConfig config, const QSurfaceFormat &format,
                    QPlatformOpenGLContext *share, const QVariant &nativeHandle);

    // False if the surface is a window whose pbuffer cannot be made (too large, say).
    bool makeCurrent(QPlatformSurface *surface) override;

    // Waits for the frame to be drawn and, for a window, until its next 60th of a second, as a
    // monitor would. A swap interval of 0 in the window's format lifts that limit.
    void swapBuffers(QPlatformSurface *surface) override;

protected:
    EGLSurface eglSurfaceForPlatformSurface(QPlatformSurface *surface) override;
    EGLSurface createTemporaryOffscreenSurface() override;

private:
    static HeadlessWindow *windowOf(QPlatformSurface *surface);
};
