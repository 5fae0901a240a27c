#pragma once

#include <QtCore/QVector>
#include <qpa/qplatformscreen.h>

class HeadlessWindow;

// The only screen: 32 bits a pixel, 60 Hz, 96 dots an inch. It keeps the stacking order of the
// windows that are shown. GUI thread.
class HeadlessScreen : public QPlatformScreen
{
public:
    static constexpr int framesPerSecond = 60;

    explicit HeadlessScreen(const QSize &size) : m_size(size) {}

    QRect geometry() const override { return QRect(QPoint(), m_size); }
    int depth() const override { return 32; }
    QImage::Format format() const override { return QImage::Format_RGB32; }
    QSizeF physicalSize() const override;
    QDpi logicalDpi() const override { return QDpi(96, 96); }
    qreal refreshRate() const override { return framesPerSecond; }
    QString name() const override { return QStringLiteral("headless"); }
    QWindow *topLevelAt(const QPoint &point) const override;

    // What raster windows last painted: of the window with this id, or of all of them, stacked, if
    // it is 0. A negative width or height reaches to the edge. Windows drawn with OpenGL are left
    // out: their contents belong to another thread's context.
    QPixmap grabWindow(WId id, int x, int y, int width, int height) const override;

    void add(HeadlessWindow *window);    // on top
    void remove(HeadlessWindow *window); // the highest one left that wants it gets active instead
    void raise(HeadlessWindow *window);
    void lower(HeadlessWindow *window);

private:
    QSize m_size;
    QVector<HeadlessWindow *> m_stack; // lowest first, not owned
};
