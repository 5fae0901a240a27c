#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QStringList>
#include <QtGui/QColor>
#include <QtGui/QImage>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickView>

#include <atomic>
#include <memory>

namespace ko::imagefx::test
{

// While it lives it collects the warnings of all threads, those of QML among them, and passes every
// message on. One at a time.
class WarningCollector
{
public:
    WarningCollector();
    ~WarningCollector();

    QStringList warnings() const;

private:
    Q_DISABLE_COPY(WarningCollector)
};

// As Format_RGBA8888_Premultiplied; the bytes of Format_RGBA8888 count as that already.
QImage premultiplied(const QImage &picture);

// A QML scene in a window of its own, drawn by the scene graph with the render loop that
// QSG_RENDER_LOOP names. GUI thread.
class QuickScene
{
public:
    // `size` in logical pixels. The default background lets the pictures keep their alpha.
    explicit QuickScene(const QSize &size, const QColor &background = Qt::transparent);
    // Returns when the render thread is gone for good: a program that ends earlier lets the driver
    // tidy up twice, by the thread and at exit.
    ~QuickScene();

    // Makes the picture available to the scene as "image://test/NAME". The bytes of RGBA8888 count
    // as premultiplied.
    void addPicture(const QString &name, const QImage &picture);

    // Small pictures have textures of their own then, not places in the atlas. Before show().
    void keepOutOfAtlas();

    // Shows one object, with Qt Quick, Korvel.Core and Korvel.ImageFx imported; it takes the
    // window's size. Empty when it is on the screen, drawn by several frames; otherwise what went
    // wrong.
    QByteArray show(const QByteArray &qml);
    // The same for a file, which has its own imports.
    QByteArray showFile(const QString &path);

    QQuickView *window() { return m_view.get(); }
    QQuickItem *root() const { return m_view->rootObject(); }

    // The object of that name, below the root or the root itself; null when there is none.
    template <typename T>
    T *find(const QString &objectName) const
    {
        return qobject_cast<T *>(findObject(objectName));
    }
    QQuickItem *item(const QString &objectName) const { return find<QQuickItem>(objectName); }

    // Draws a few frames, so that whatever one frame left for the next is on the screen. False
    // when the window does not draw.
    bool settle();
    // The next frame, for changes that are complete with it; otherwise like grab().
    QImage grabNow();
    // The window in device pixels, settled, in RGBA8888 with premultiplied bytes.
    QImage grab();
    // What the item covers of it; the item is not rotated.
    QImage grab(const QQuickItem *item);

    // All of this scene's life; an OpenGL error that a frame left pending is one, too.
    QStringList warnings() const { return m_warnings.warnings(); }

private:
    Q_DISABLE_COPY(QuickScene)

    void watchFrame();
    QByteArray showComponent(class QQmlComponent *component);
    QObject *findObject(const QString &objectName) const;

    WarningCollector m_warnings;
    QMap<QString, QImage> m_pictures;
    std::unique_ptr<QQuickView> m_view;
    std::atomic<long> m_renderThread{0}; // as the system numbers it
};

} // namespace ko::imagefx::test

// Fails the running test function unless the scene shows the text.
#define KORVEL_SHOW(scene, qml)                                                                    \
    do {                                                                                           \
        const QByteArray failure_ = (scene).show(qml);                                             \
        QVERIFY2(failure_.isEmpty(), failure_.constData());                                        \
    } while (false)
