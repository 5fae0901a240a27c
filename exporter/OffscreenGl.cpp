#include "exporter/OffscreenGl.h"

#include "exporter/ErrorCapture.h"

#include <HeadlessImport.h>

#include <QtGui/QGuiApplication>
#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>

#include <algorithm>
#include <optional>
#include <unistd.h>

namespace ko::exporter
{

namespace
{

Failure unavailable(const QString &picture, const QString &platform)
{
    return {ExitCode::NoOpenGl,
            QStringLiteral("OpenGL is not available on the platform \"%1\", so %2 cannot be drawn; "
                           "QT_LOGGING_RULES=headless.*=true tells more")
                .arg(platform, picture)};
}

// A platform plug-in that finds no display ends the program with an abort. While this lives, the
// program ends with the failure's line and exit code instead.
class FatalMessageGuard
{
public:
    explicit FatalMessageGuard(const Failure &failure)
    {
        s_failure = &failure;
        s_previous = qInstallMessageHandler(handle);
    }
    ~FatalMessageGuard() { qInstallMessageHandler(s_previous); }

private:
    Q_DISABLE_COPY(FatalMessageGuard)

    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &text)
    {
        if (type == QtFatalMsg) {
            reportLine(s_failure->message);
            _exit(int(s_failure->code));
        }
        if (s_previous != nullptr) {
            s_previous(type, context, text);
        }
    }

    static inline const Failure *s_failure = nullptr;
    static inline QtMessageHandler s_previous = nullptr;
};

} // namespace

OffscreenGl::OffscreenGl(const QString &platform) : m_platform(platform) {}

OffscreenGl::~OffscreenGl()
{
    if (m_context) {
        m_context->doneCurrent();
    }
}

Outcome OffscreenGl::start(const QString &picture)
{
    if (m_context) {
        return {};
    }
    // Someone who sets logging rules wants to see what drivers and plug-ins print.
    std::optional<ErrorCapture> capture;
    if (!qEnvironmentVariableIsSet("QT_LOGGING_RULES")) {
        capture.emplace();
    }
    const Failure failure = unavailable(picture, m_platform);
    const FatalMessageGuard guard(failure);
    createApplication();
    if (!makeCurrent()) {
        m_context.reset();
        m_surface.reset();
        return failure;
    }
    return {};
}

void OffscreenGl::createApplication()
{
    if (QCoreApplication::instance() != nullptr) {
        return;
    }
    // None of the program's own arguments: Qt would take out those that it knows.
    m_arguments[0] = "korvel-image-exporter";
    m_arguments[1] = "-platform";
    m_arguments[2] = m_platform.toLocal8Bit();
    for (QByteArray &argument : m_arguments) {
        m_argv[m_argc++] = argument.data();
    }
    m_application = std::make_unique<QGuiApplication>(m_argc, m_argv);
}

bool OffscreenGl::makeCurrent()
{
    m_context = std::make_unique<QOpenGLContext>();
    if (!m_context->create()) {
        return false;
    }
    m_surface = std::make_unique<QOffscreenSurface>();
    m_surface->setFormat(m_context->format());
    m_surface->create();
    return m_surface->isValid() && m_context->makeCurrent(m_surface.get()) &&
           QOpenGLFramebufferObject::hasOpenGLFramebufferObjects();
}

int OffscreenGl::largestSide() const
{
    QOpenGLFunctions *gl = m_context->functions();
    GLint texture = 0;
    GLint viewport[2] = {};
    gl->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &texture);
    gl->glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
    return std::min({texture, viewport[0], viewport[1]});
}

QByteArray OffscreenGl::renderer() const
{
    return reinterpret_cast<const char *>(m_context->functions()->glGetString(GL_RENDERER));
}

} // namespace ko::exporter
