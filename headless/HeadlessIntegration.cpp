#include "HeadlessIntegration.h"

#include "HeadlessBackingStore.h"
#include "HeadlessContext.h"
#include "HeadlessDisplay.h"
#include "HeadlessNativeInterface.h"
#include "HeadlessOffscreenSurface.h"
#include "HeadlessScreen.h"
#include "HeadlessWindow.h"

#include <QtEventDispatcherSupport/private/qgenericunixeventdispatcher_p.h>
#include <QtFontDatabaseSupport/private/qgenericunixfontdatabase_p.h>
#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>
#include <QtPlatformHeaders/qeglnativecontext.h>
#include <qpa/qwindowsysteminterface.h>

HeadlessIntegration::HeadlessIntegration(const HeadlessOptions &options)
    : m_fontDatabase(new QGenericUnixFontDatabase), m_screen(new HeadlessScreen(options.screenSize))
{
    if (options.valid) {
        m_display = HeadlessDisplay::open(options.display);
        if (!m_display)
            qWarning("headless: no EGL display can be opened; OpenGL stays unavailable. "
                     "QT_LOGGING_RULES=headless.*=true tells what was tried.");
    }
    m_nativeInterface.reset(new HeadlessNativeInterface(m_display.get()));
}

HeadlessIntegration::~HeadlessIntegration()
{
    QWindowSystemInterface::handleScreenRemoved(m_screen);
}

void HeadlessIntegration::initialize()
{
    QWindowSystemInterface::handleScreenAdded(m_screen);
}

bool HeadlessIntegration::hasCapability(Capability capability) const
{
    switch (capability) {
    case OpenGL:
    case ThreadedOpenGL:
    case RasterGLSurface:
    case AllGLFunctionsQueryable:
        return m_display != nullptr;
    case ThreadedPixmaps:
    case MultipleWindows:
    case NonFullScreenWindows:
    case NativeWidgets:
    case WindowManagement:
    case WindowActivation:
        return true;
    default:
        return false;
    }
}

QPlatformWindow *HeadlessIntegration::createPlatformWindow(QWindow *window) const
{
    return new HeadlessWindow(window, m_display.get());
}

QPlatformBackingStore *HeadlessIntegration::createPlatformBackingStore(QWindow *window) const
{
    return new HeadlessBackingStore(window);
}

QPlatformOpenGLContext *
HeadlessIntegration::createPlatformOpenGLContext(QOpenGLContext *context) const
{
    const EGLConfig config = m_display ? m_display->config(context->format()) : nullptr;
    if (!config)
        return nullptr;
    auto handle = std::make_unique<HeadlessContext>(
        *m_display, config, context->format(), context->shareHandle(), context->nativeHandle());
    if (!handle->isValid())
        return nullptr;
    if (context->nativeHandle().isNull()) {
        context->setNativeHandle(
            QVariant::fromValue(QEGLNativeContext(handle->eglContext(), m_display->handle())));
    }
    return handle.release();
}

QPlatformOffscreenSurface *
HeadlessIntegration::createPlatformOffscreenSurface(QOffscreenSurface *surface) const
{
    const QSurfaceFormat requested = surface->requestedFormat();
    return new HeadlessOffscreenSurface(surface, m_display ? m_display->surfaceFormat(requested)
                                                           : requested);
}

QAbstractEventDispatcher *HeadlessIntegration::createEventDispatcher() const
{
    return createUnixEventDispatcher();
}

// One of its own, so that no desktop session's theme finds its way into what a program draws.
QStringList HeadlessIntegration::themeNames() const
{
    return {QStringLiteral("headless")};
}
