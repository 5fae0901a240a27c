#pragma once

#include <qpa/qplatformnativeinterface.h>

class HeadlessDisplay;

// EGL handles for programs that share textures with other libraries: "egldisplay" for the
// integration and for a context, "eglcontext" and "eglconfig" for a context. Null for anything
// else. Contexts must be read on the thread that owns them.
class HeadlessNativeInterface : public QPlatformNativeInterface
{
public:
    // `display` may be null (no OpenGL) and must outlive the object.
    explicit HeadlessNativeInterface(const HeadlessDisplay *display) : m_display(display) {}

    void *nativeResourceForIntegration(const QByteArray &resource) override;
    void *nativeResourceForContext(const QByteArray &resource, QOpenGLContext *context) override;

private:
    const HeadlessDisplay *m_display;
};
