#include "HeadlessWindow.h"

#include "HeadlessBackingStore.h"
#include "HeadlessDisplay.h"
#include "HeadlessScreen.h"

#include <QtCore/QVariant>
#include <QtGui/QGuiApplication>
#include <qpa/qwindowsysteminterface.h>

#include <thread>

HeadlessWindow::HeadlessWindow(QWindow *window, const HeadlessDisplay *display)
    : QPlatformWindow(window),
      m_display(display),
      m_format(display ? display->surfaceFormat(window->requestedFormat())
                       : window->requestedFormat())
{
    static WId lastId = 0;
    m_id = ++lastId;
}

HeadlessWindow::~HeadlessWindow()
{
    if (m_backingStore)
        m_backingStore->forgetWindow();
    headlessScreen()->remove(this);
    if (m_pbuffer != EGL_NO_SURFACE)
        eglDestroySurface(m_display->handle(), m_pbuffer);
}

void HeadlessWindow::initialize()
{
    const QSize unset(640, 480);
    setGeometry(initialGeometry(window(), windowGeometry(), unset.width(), unset.height()));
    if (window()->windowStates() != Qt::WindowNoState)
        setWindowState(window()->windowStates());
}

QRect HeadlessWindow::normalGeometry() const
{
    return m_normalGeometry.isNull() ? geometry() : m_normalGeometry;
}

void HeadlessWindow::setGeometry(const QRect &rect)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_size = rect.size();
    }
    QPlatformWindow::setGeometry(rect);
    QWindowSystemInterface::handleGeometryChange(window(), rect);
    if (m_exposed)
        QWindowSystemInterface::handleExposeEvent(window(), QRect(QPoint(), rect.size()));
}

void HeadlessWindow::setVisible(bool visible)
{
    if (visible == m_visible)
        return;
    m_visible = visible;
    if (visible)
        headlessScreen()->add(this);
    setExposed(visible && !(m_states & Qt::WindowMinimized));
    if (!visible)
        headlessScreen()->remove(this);
    else if (m_exposed && wantsActivation())
        requestActivateWindow();
}

void HeadlessWindow::setExposed(bool exposed)
{
    if (exposed == m_exposed)
        return;
    m_exposed = exposed;
    // A threaded renderer must have stopped drawing into the window before hiding returns.
    if (exposed)
        QWindowSystemInterface::handleExposeEvent(window(), QRect(QPoint(), geometry().size()));
    else
        QWindowSystemInterface::handleExposeEvent<QWindowSystemInterface::SynchronousDelivery>(
            window(), QRegion());
}

void HeadlessWindow::setWindowState(Qt::WindowStates states)
{
    if (states == m_states)
        return;
    m_states = states;
    if (states & (Qt::WindowMaximized | Qt::WindowFullScreen)) {
        if (m_normalGeometry.isNull())
            m_normalGeometry = geometry();
        setGeometry(screen()->geometry());
    } else if (!m_normalGeometry.isNull() && !(states & Qt::WindowMinimized)) {
        setGeometry(m_normalGeometry);
        m_normalGeometry = QRect();
    }
    QWindowSystemInterface::handleWindowStateChanged(window(), states);
    setExposed(m_visible && !(states & Qt::WindowMinimized));
}

void HeadlessWindow::raise()
{
    headlessScreen()->raise(this);
}

void HeadlessWindow::lower()
{
    headlessScreen()->lower(this);
}

void HeadlessWindow::requestActivateWindow()
{
    if (!m_exposed)
        return;
    headlessScreen()->raise(this);
    QWindowSystemInterface::handleWindowActivated(window());
}

bool HeadlessWindow::wantsActivation() const
{
    const Qt::WindowType type = window()->type();
    return m_exposed && window()->isTopLevel() && type != Qt::ToolTip && type != Qt::Popup &&
           !(window()->flags() & (Qt::WindowDoesNotAcceptFocus | Qt::WindowTransparentForInput)) &&
           !window()->property("_q_showWithoutActivating").toBool();
}

EGLSurface HeadlessWindow::pbuffer(EGLConfig config)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_display)
        return EGL_NO_SURFACE;
    const QSize size = m_size.expandedTo(QSize(1, 1));
    if (m_pbuffer != EGL_NO_SURFACE && m_pbufferSize == size && m_pbufferConfig == config)
        return m_pbuffer;
    const EGLint attributes[] = {EGL_WIDTH, size.width(), EGL_HEIGHT, size.height(), EGL_NONE};
    const EGLSurface previous = m_pbuffer;
    m_pbuffer = eglCreatePbufferSurface(m_display->handle(), config, attributes);
    m_pbufferSize = size;
    m_pbufferConfig = config;
    // Afterwards, so that the new surface is never mistaken for the old one, which stays alive
    // while a context holds it.
    if (previous != EGL_NO_SURFACE)
        eglDestroySurface(m_display->handle(), previous);
    return m_pbuffer;
}

void HeadlessWindow::waitForNextFrame()
{
    if (m_format.swapInterval() == 0)
        return;
    const auto period = std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(1.0 / HeadlessScreen::framesPerSecond));
    std::chrono::steady_clock::time_point frame;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        frame = qMax(m_nextFrame, std::chrono::steady_clock::now());
        m_nextFrame = frame + period;
    }
    std::this_thread::sleep_until(frame);
}

HeadlessScreen *HeadlessWindow::headlessScreen() const
{
    return static_cast<HeadlessScreen *>(screen());
}
