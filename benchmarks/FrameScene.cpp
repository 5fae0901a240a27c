#include "benchmarks/FrameScene.h"

#include "benchmarks/Fixture.h"

#include "imagefx/quick/PixelBuffer.h"

#include <QtGui/QOpenGLContext>
#include <QtQuick/QSGTexture>

namespace ko::imagefx::benchmarks
{

class PictureItem::Provider : public QSGTextureProvider
{
public:
    explicit Provider(QSGTexture *texture) : m_texture(texture) {}

    QSGTexture *texture() const override { return m_texture.get(); }

private:
    const std::unique_ptr<QSGTexture> m_texture;
};

PictureItem::PictureItem(const QImage &picture, QQuickItem *parent)
    : QQuickItem(parent), m_picture(picture)
{
}

QSGTextureProvider *PictureItem::textureProvider() const
{
    if (!m_provider) {
        m_provider = std::make_unique<Provider>(window()->createTextureFromImage(m_picture));
    }
    return m_provider.get();
}

FrameScene::FrameScene(const QImage &picture)
    : m_window(&m_control), m_target(picture.size(), QOpenGLFramebufferObject::CombinedDepthStencil)
{
    m_window.setColor(Qt::transparent);
    m_window.setGeometry(QRect(QPoint(), picture.size()));
    m_window.contentItem()->setSize(picture.size());
    m_control.initialize(QOpenGLContext::currentContext());
    m_window.setRenderTarget(&m_target);
    m_source = std::make_unique<PictureItem>(picture, m_window.contentItem());
    m_item = std::make_unique<PixelBuffer>(m_window.contentItem());
    m_item->setSize(picture.size());
    m_item->setSourceItem(m_source.get());
}

FrameScene::~FrameScene()
{
    m_item.reset();
    m_source.reset();
    m_control.invalidate();
}

void FrameScene::draw()
{
    m_control.polishItems();
    m_control.sync();
    m_control.render();
}

QImage FrameScene::read()
{
    m_target.bind();
    QImage picture = readBound(m_target.size());
    m_target.release();
    return picture;
}

} // namespace ko::imagefx::benchmarks
