#pragma once

#include <QtGui/QImage>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickRenderControl>
#include <QtQuick/QQuickWindow>
#include <QtQuick/QSGTextureProvider>

#include <memory>

namespace ko::imagefx
{
class PixelBuffer;
}

namespace ko::imagefx::benchmarks
{

// An item that shows nothing and offers a picture as its texture.
class PictureItem : public QQuickItem
{
public:
    PictureItem(const QImage &picture, QQuickItem *parent);

    bool isTextureProvider() const override { return true; }
    QSGTextureProvider *textureProvider() const override;

private:
    class Provider;

    const QImage m_picture;
    mutable std::unique_ptr<QSGTextureProvider> m_provider;
};

// A window that is drawn into a framebuffer, on the calling thread and in its context, with one
// PixelBuffer that fills it and shows a picture of the same size.
class FrameScene
{
public:
    explicit FrameScene(const QImage &picture);
    ~FrameScene();

    PixelBuffer *item() { return m_item.get(); }
    // Draws the window; the item, only when it has asked for it.
    void draw();
    // What the window shows, bottom row first.
    QImage read();

private:
    QQuickRenderControl m_control;
    QQuickWindow m_window;
    QOpenGLFramebufferObject m_target;
    std::unique_ptr<PictureItem> m_source;
    std::unique_ptr<PixelBuffer> m_item;
};

} // namespace ko::imagefx::benchmarks
