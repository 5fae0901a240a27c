#include "HeadlessDisplay.h"

#include <QtCore/QLoggingCategory>
#include <QtCore/QVector>
#include <QtEglSupport/private/qeglconvenience_p.h>

#include <EGL/eglext.h>

Q_LOGGING_CATEGORY(lcHeadless, "headless.display", QtInfoMsg)

namespace
{

struct Candidate {
    QByteArray name;
    EGLenum platform; // EGL_NONE: EGL_DEFAULT_DISPLAY
    void *nativeDisplay;
};

// Client extensions, asked for without a display: whole words, never a prefix of another name.
bool hasExtension(const char *list, const char *name)
{
    return QByteArray(list).split(' ').contains(name);
}

QVector<Candidate> devices(bool hardware)
{
    QVector<Candidate> found;
    const char *client = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    const bool queryable = hasExtension(client, "EGL_EXT_device_base") ||
                           (hasExtension(client, "EGL_EXT_device_enumeration") &&
                            hasExtension(client, "EGL_EXT_device_query"));
    if (!queryable || !hasExtension(client, "EGL_EXT_platform_device"))
        return found;
    const auto queryDevices =
        reinterpret_cast<PFNEGLQUERYDEVICESEXTPROC>(eglGetProcAddress("eglQueryDevicesEXT"));
    const auto queryDeviceString = reinterpret_cast<PFNEGLQUERYDEVICESTRINGEXTPROC>(
        eglGetProcAddress("eglQueryDeviceStringEXT"));
    EGLint count = 0;
    if (!queryDevices || !queryDeviceString || !queryDevices(0, nullptr, &count))
        return found;
    QVector<EGLDeviceEXT> handles(count);
    if (!queryDevices(count, handles.data(), &count))
        return found;
    for (int i = 0; i < count; ++i) {
        const char *extensions = queryDeviceString(handles[i], EGL_EXTENSIONS);
        if (hardware != hasExtension(extensions, "EGL_MESA_device_software"))
            found.append({"device " + QByteArray::number(i), EGL_PLATFORM_DEVICE_EXT, handles[i]});
    }
    return found;
}

QVector<Candidate> surfaceless()
{
    const char *client = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    if (!hasExtension(client, "EGL_MESA_platform_surfaceless"))
        return {};
    return {{"surfaceless", EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY}};
}

QVector<Candidate> candidates(HeadlessOptions::Display kind)
{
    const QVector<Candidate> fallback = {{"default", EGL_NONE, EGL_DEFAULT_DISPLAY}};
    switch (kind) {
    case HeadlessOptions::Display::Device:
        return devices(true) + devices(false);
    case HeadlessOptions::Display::Surfaceless:
        return surfaceless();
    case HeadlessOptions::Display::Default:
        return fallback;
    case HeadlessOptions::Display::Automatic:
        break;
    }
    return devices(true) + surfaceless() + devices(false) + fallback;
}

EGLDisplay displayOf(const Candidate &candidate)
{
    if (candidate.platform == EGL_NONE)
        return eglGetDisplay(EGL_DEFAULT_DISPLAY);
    const auto getPlatformDisplay = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
        eglGetProcAddress("eglGetPlatformDisplayEXT"));
    if (!getPlatformDisplay)
        return EGL_NO_DISPLAY;
    return getPlatformDisplay(candidate.platform, candidate.nativeDisplay, nullptr);
}

EGLint renderableBit(const QSurfaceFormat &format)
{
    if (format.renderableType() == QSurfaceFormat::OpenGL)
        return EGL_OPENGL_BIT;
    return format.majorVersion() >= 3 ? EGL_OPENGL_ES3_BIT : EGL_OPENGL_ES2_BIT;
}

// Drivers list configurations with more colour bits first, 10-10-10-2 and half floats among them.
bool isRgba8(EGLDisplay display, EGLConfig config)
{
    for (const EGLint attribute : {EGL_RED_SIZE, EGL_GREEN_SIZE, EGL_BLUE_SIZE, EGL_ALPHA_SIZE}) {
        EGLint bits = 0;
        if (!eglGetConfigAttrib(display, config, attribute, &bits) || bits != 8)
            return false;
    }
    return true;
}

EGLConfig chooseRgba8(EGLDisplay display, EGLint renderable, EGLint depth, EGLint stencil,
                      EGLint samples)
{
    const EGLint attributes[] = {EGL_SURFACE_TYPE,
                                 EGL_PBUFFER_BIT,
                                 EGL_RENDERABLE_TYPE,
                                 renderable,
                                 EGL_RED_SIZE,
                                 8,
                                 EGL_GREEN_SIZE,
                                 8,
                                 EGL_BLUE_SIZE,
                                 8,
                                 EGL_ALPHA_SIZE,
                                 8,
                                 EGL_DEPTH_SIZE,
                                 depth,
                                 EGL_STENCIL_SIZE,
                                 stencil,
                                 EGL_SAMPLE_BUFFERS,
                                 samples > 0 ? 1 : 0,
                                 EGL_SAMPLES,
                                 samples,
                                 EGL_NONE};
    EGLint count = 0;
    if (!eglChooseConfig(display, attributes, nullptr, 0, &count) || count == 0)
        return nullptr;
    QVector<EGLConfig> configs(count);
    if (!eglChooseConfig(display, attributes, configs.data(), count, &count))
        return nullptr;
    for (int i = 0; i < count; ++i) {
        if (isRgba8(display, configs.at(i)))
            return configs.at(i);
    }
    return nullptr;
}

} // namespace

std::unique_ptr<HeadlessDisplay> HeadlessDisplay::open(HeadlessOptions::Display kind)
{
    for (const Candidate &candidate : candidates(kind)) {
        const EGLDisplay handle = displayOf(candidate);
        if (handle == EGL_NO_DISPLAY || !eglInitialize(handle, nullptr, nullptr)) {
            qCDebug(lcHeadless, "%s: not initialised, EGL error 0x%x", candidate.name.constData(),
                    unsigned(eglGetError()));
            continue;
        }
        std::unique_ptr<HeadlessDisplay> display(new HeadlessDisplay(handle));
        QString reason;
        if (display->isUsable(&reason)) {
            qCDebug(lcHeadless, "%s: in use", candidate.name.constData());
            return display;
        }
        qCDebug(lcHeadless, "%s: %s", candidate.name.constData(), qUtf8Printable(reason));
    }
    return nullptr;
}

HeadlessDisplay::~HeadlessDisplay()
{
    eglTerminate(m_handle);
    eglReleaseThread();
}

// A driver may initialise on a machine whose device it cannot open, and fails only here.
bool HeadlessDisplay::isUsable(QString *reason)
{
    if (!q_hasEglExtension(m_handle, "EGL_KHR_surfaceless_context")) {
        *reason = QStringLiteral("no EGL_KHR_surfaceless_context");
        return false;
    }
    const struct {
        EGLenum api;
        EGLint renderable;
    } apis[] = {{EGL_OPENGL_API, EGL_OPENGL_BIT}, {EGL_OPENGL_ES_API, EGL_OPENGL_ES2_BIT}};
    for (const auto &candidate : apis) {
        const EGLConfig config = chooseRgba8(m_handle, candidate.renderable, 24, 8, 0);
        if (!config || !eglBindAPI(candidate.api))
            continue;
        const EGLint es2[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
        const EGLContext context = eglCreateContext(
            m_handle, config, EGL_NO_CONTEXT, candidate.api == EGL_OPENGL_ES_API ? es2 : nullptr);
        if (context == EGL_NO_CONTEXT)
            continue;
        eglDestroyContext(m_handle, context);
        m_hasOpenGL = candidate.api == EGL_OPENGL_API;
        return true;
    }
    *reason = QStringLiteral("no OpenGL or OpenGL ES 2 context with 8 bits a channel");
    return false;
}

QSurfaceFormat HeadlessDisplay::resolved(const QSurfaceFormat &requested) const
{
    QSurfaceFormat format = requested;
    if (format.renderableType() == QSurfaceFormat::DefaultRenderableType)
        format.setRenderableType(m_hasOpenGL ? QSurfaceFormat::OpenGL : QSurfaceFormat::OpenGLES);
    // EGL reads an absent profile as core, and a forward-compatible context lacks GL_ALPHA too.
    if (format.renderableType() == QSurfaceFormat::OpenGL &&
        format.profile() != QSurfaceFormat::CoreProfile) {
        format.setProfile(QSurfaceFormat::CompatibilityProfile);
        format.setOption(QSurfaceFormat::DeprecatedFunctions);
    }
    return format;
}

EGLConfig HeadlessDisplay::config(const QSurfaceFormat &requested) const
{
    const QSurfaceFormat format = resolved(requested);
    const int depth = qMax(24, format.depthBufferSize());
    const int stencil = qMax(8, format.stencilBufferSize());
    const EGLint renderable = renderableBit(format);
    for (int samples = qMax(0, format.samples()); samples > 0; samples /= 2) {
        if (EGLConfig config = chooseRgba8(m_handle, renderable, depth, stencil, samples))
            return config;
    }
    if (EGLConfig config = chooseRgba8(m_handle, renderable, depth, stencil, 0))
        return config;
    return chooseRgba8(m_handle, renderable, 24, 8, 0);
}

QSurfaceFormat HeadlessDisplay::surfaceFormat(const QSurfaceFormat &requested) const
{
    const EGLConfig chosen = config(requested);
    if (!chosen)
        return requested;
    QSurfaceFormat format = q_glFormatFromConfig(m_handle, chosen, resolved(requested));
    format.setSwapInterval(requested.swapInterval());
    return format;
}
