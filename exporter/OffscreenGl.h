#pragma once

#include "exporter/Failure.h"

#include <QtCore/QByteArray>
#include <QtCore/QSize>
#include <QtCore/QString>

#include <memory>

class QGuiApplication;
class QOffscreenSurface;
class QOpenGLContext;

namespace ko::exporter
{

// A GL context without a window, started when it is first needed and current from then on, until it
// is destroyed. Lives on the main thread. Where no application object exists it brings its own.
class OffscreenGl
{
public:
    // `platform`: the name of a Qt platform plug-in, perhaps with parameters.
    explicit OffscreenGl(const QString &platform);
    ~OffscreenGl();

    // Makes the context current; a failure names `picture`. A platform plug-in that would end the
    // program ends it with the same message and exit code.
    Outcome start(const QString &picture);
    // The width and height up to which a picture can be drawn, in pixels. Only after start().
    int largestSide() const;
    // What GL calls the device, or program, that draws. Only after start().
    QByteArray renderer() const;

private:
    Q_DISABLE_COPY(OffscreenGl)

    void createApplication();
    bool makeCurrent();

    const QString m_platform;
    // The application keeps references to these.
    int m_argc = 0;
    QByteArray m_arguments[3];
    char *m_argv[4] = {};

    std::unique_ptr<QGuiApplication> m_application;
    std::unique_ptr<QOffscreenSurface> m_surface;
    std::unique_ptr<QOpenGLContext> m_context;
};

} // namespace ko::exporter
