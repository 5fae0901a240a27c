#pragma once

#include <QtGui/QImage>
#include <qpa/qplatformbackingstore.h>

class HeadlessWindow;

// The picture that a raster window paints into, kept in memory. It is transparent to begin with
// where the window's format asks for an alpha channel. GUI thread.
class HeadlessBackingStore : public QPlatformBackingStore
{
public:
    explicit HeadlessBackingStore(QWindow *window) : QPlatformBackingStore(window) {}
    ~HeadlessBackingStore() override;

    QPaintDevice *paintDevice() override { return &m_image; }
    void resize(const QSize &size, const QRegion &staticContents) override;
    void beginPaint(const QRegion &region) override;
    void flush(QWindow *window, const QRegion &region, const QPoint &offset) override;
    QImage toImage() const override { return m_image; }

    const QImage &image() const { return m_image; }

    // The window is about to be deleted.
    void forgetWindow() { m_shownIn = nullptr; }

private:
    QImage m_image;
    HeadlessWindow *m_shownIn = nullptr;
};
