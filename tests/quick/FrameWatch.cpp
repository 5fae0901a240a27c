#include "tests/quick/FrameWatch.h"

#include <QtCore/QElapsedTimer>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>
#include <QtQuick/QQuickWindow>
#include <QtTest/QTest>

namespace ko::imagefx::test
{

namespace
{

// In milliseconds: several frames at 60 a second, and what a busy machine may need for one.
constexpr int quiet = 70;
constexpr int longestWait = 5000;

QImage boundPicture(const QSize &size)
{
    QImage picture(size, QImage::Format_RGBA8888_Premultiplied);
    QOpenGLContext::currentContext()->functions()->glReadPixels(
        0, 0, size.width(), size.height(), GL_RGBA, GL_UNSIGNED_BYTE, picture.bits());
    return picture.mirrored();
}

} // namespace

FrameWatch::FrameWatch(QQuickWindow *window, int pictures)
    : m_window(window), m_wantedPictures(pictures)
{
    QObject::connect(
        window, &QQuickWindow::afterRendering, &m_context, [this] { look(); },
        Qt::DirectConnection);
    QObject::connect(
        window, &QQuickWindow::frameSwapped, &m_context, [this] { ++m_frames; },
        Qt::DirectConnection);
}

FrameWatch::~FrameWatch() = default;

bool FrameWatch::waitFor(int frames) const
{
    return QTest::qWaitFor([this, frames] { return m_frames >= frames; }, longestWait);
}

void FrameWatch::waitForQuiet() const
{
    QElapsedTimer timer;
    timer.start();
    int seen = -1;
    while (seen != m_frames && timer.elapsed() < longestWait) {
        seen = m_frames;
        QTest::qWait(quiet);
    }
}

QList<QImage> FrameWatch::pictures() const
{
    const QMutexLocker lock(&m_mutex);
    return m_pictures;
}

QStringList FrameWatch::glErrors() const
{
    const QMutexLocker lock(&m_mutex);
    return m_glErrors;
}

void FrameWatch::look()
{
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    QStringList errors;
    for (GLenum error = gl->glGetError(); error != GL_NO_ERROR; error = gl->glGetError()) {
        errors.append(QStringLiteral("0x%1").arg(error, 0, 16));
    }
    const QMutexLocker lock(&m_mutex);
    if (!errors.isEmpty()) {
        m_glErrors.append(QStringLiteral("frame %1: %2").arg(m_frames).arg(errors.join(' ')));
    }
    if (m_pictures.size() < m_wantedPictures) {
        m_pictures.append(boundPicture(m_window->size() * m_window->effectiveDevicePixelRatio()));
    }
}

} // namespace ko::imagefx::test
