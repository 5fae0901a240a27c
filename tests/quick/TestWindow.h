#pragma once

#include "tests/quick/FrameWatch.h"

#include <QtGui/QImage>
#include <QtQml/QQmlEngine>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>

#include <memory>

namespace ko::imagefx::test
{

// An engine whose items may be shown in any window, with the library's types and the folder of this
// file imported. The pictures "image://test/photo" and "image://test/mask" exist.
class Stage
{
public:
    Stage();
    ~Stage();

    // The one item of the text, which belongs to the caller; null, with warnings, when there is
    // none.
    std::unique_ptr<QQuickItem> create(const QByteArray &qml);

private:
    Q_DISABLE_COPY(Stage)

    QQmlEngine m_engine;
};

// A white window of its own with what OpenGL, and its debug output where the driver has that, say
// about its frames. GUI thread.
class TestWindow
{
public:
    explicit TestWindow(const QSize &size = QSize(120, 100));
    // Items in it that belong to somebody lose it and stay alive.
    ~TestWindow();

    QQuickWindow *operator->() { return &m_window; }
    QQuickItem *root() { return m_window.contentItem(); }
    const FrameWatch &watch() const { return m_watch; }

    // False when it is not on the screen in a few seconds.
    bool show();
    // Draws a few frames. False when the window does not draw.
    bool settle();
    // The window, settled, in RGBA8888.
    QImage grab();
    // The part that an upright item covers.
    QImage grab(const QQuickItem *item);
    // Everything that went wrong in OpenGL, in this window and, since windows may share a context,
    // in what the driver told of any so far; empty when nothing did.
    QString errors() const;

private:
    Q_DISABLE_COPY(TestWindow)

    QQuickWindow m_window;
    FrameWatch m_watch;
    QObject m_context;
};

} // namespace ko::imagefx::test
