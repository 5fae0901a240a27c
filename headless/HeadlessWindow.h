#pragma once

#include <EGL/egl.h>
#include <QtGui/QSurfaceFormat>
#include <qpa/qplatformwindow.h>

#include <chrono>
#include <mutex>

class HeadlessBackingStore;
class HeadlessDisplay;
class HeadlessScreen;

// A window that is never seen: exposed as soon as it is shown, activated unless its type or flags
// say otherwise, and placed wherever the program wants it. GUI thread, except where stated.
class HeadlessWindow : public QPlatformWindow
{
public:
    // `display` may be null (no OpenGL) and must outlive the window.
    HeadlessWindow(QWindow *window, const HeadlessDisplay *display);
    ~HeadlessWindow() override;

    void initialize() override;
    QSurfaceFormat format() const override { return m_format; }
    WId winId() const override { return m_id; }
    bool isExposed() const override { return m_exposed; }
    QRect normalGeometry() const override;

    void setGeometry(const QRect &rect) override;
    void setVisible(bool visible) override;
    void setWindowState(Qt::WindowStates states) override;
    void raise() override;
    void lower() override;
    void requestActivateWindow() override;

    // Nothing to do where no window system decorates, places or composes windows, and where no
    // other program competes for input.
    void setParent(const QPlatformWindow *) override {}
    void propagateSizeHints() override {}
    void setOpacity(qreal) override {}
    void setMask(const QRegion &) override {}
    bool setKeyboardGrabEnabled(bool) override { return true; }
    bool setMouseGrabEnabled(bool) override { return true; }

    // Whether the window may be activated without being asked to.
    bool wantsActivation() const;

    // The pbuffer that stands for the window's contents, as large as the window: made on first
    // use, and again (with undefined contents) after a resize or for another configuration.
    // EGL_NO_SURFACE if that fails. Any thread.
    EGLSurface pbuffer(EGLConfig config);

    // Sleeps until a 60th of a second after it last returned; at once if that time has passed, or
    // if the window's swap interval is 0. Any thread.
    void waitForNextFrame();

    // What a raster window shows; null until it was painted. Not owned.
    HeadlessBackingStore *backingStore() const { return m_backingStore; }
    void setBackingStore(HeadlessBackingStore *store) { m_backingStore = store; }

private:
    HeadlessScreen *headlessScreen() const;
    void setExposed(bool exposed);

    const HeadlessDisplay *m_display;
    QSurfaceFormat m_format;
    WId m_id;
    bool m_visible = false;
    bool m_exposed = false;
    Qt::WindowStates m_states = Qt::WindowNoState;
    QRect m_normalGeometry; // null unless the window fills the screen
    HeadlessBackingStore *m_backingStore = nullptr;

    std::mutex m_mutex; // guards what follows
    QSize m_size;
    EGLSurface m_pbuffer = EGL_NO_SURFACE;
    EGLConfig m_pbufferConfig = nullptr;
    QSize m_pbufferSize;
    std::chrono::steady_clock::time_point m_nextFrame;
};
