#pragma once

#include "HeadlessOptions.h"

#include <qpa/qplatformintegration.h>

#include <memory>

class HeadlessDisplay;
class HeadlessScreen;

// The platform "headless": windows, OpenGL and fonts without a monitor or a window system.
//
// If no EGL display can be opened it warns once and goes on without OpenGL: then
// hasCapability(OpenGL) is false, QOpenGLContext::create() fails, and raster windows still work.
class HeadlessIntegration : public QPlatformIntegration
{
public:
    explicit HeadlessIntegration(const HeadlessOptions &options);
    ~HeadlessIntegration() override;

    void initialize() override;
    bool hasCapability(Capability capability) const override;
    QPlatformWindow *createPlatformWindow(QWindow *window) const override;
    QPlatformBackingStore *createPlatformBackingStore(QWindow *window) const override;
    QPlatformOpenGLContext *createPlatformOpenGLContext(QOpenGLContext *context) const override;
    QPlatformOffscreenSurface *
    createPlatformOffscreenSurface(QOffscreenSurface *surface) const override;
    QAbstractEventDispatcher *createEventDispatcher() const override;
    QPlatformFontDatabase *fontDatabase() const override { return m_fontDatabase.get(); }
    QPlatformNativeInterface *nativeInterface() const override { return m_nativeInterface.get(); }
    QStringList themeNames() const override;

private:
    std::unique_ptr<HeadlessDisplay> m_display; // null: no OpenGL
    std::unique_ptr<QPlatformFontDatabase> m_fontDatabase;
    std::unique_ptr<QPlatformNativeInterface> m_nativeInterface;
    HeadlessScreen *m_screen; // owned by Qt between initialize() and the destructor
};
