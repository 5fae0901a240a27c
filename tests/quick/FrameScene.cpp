#include "tests/quick/FrameScene.h"

#include "core/RenderScope.h"
#include "imagefx/quick/PixelBuffer.h"

#include <QtQuick/QSGTextureProvider>
#include <QtTest/QTest>

namespace ko::imagefx::test
{

namespace
{

// Too wide for the texture atlas, in which a picture would have neighbours.
QImage plain(const QColor &color)
{
    QImage image(400, 2, QImage::Format_RGBA8888);
    image.fill(color);
    return image;
}

} // namespace

FrameScene::FrameScene() : m_scene(QSize(60, 40)), m_watch(m_scene.window())
{
    m_scene.addPicture("red", plain(Qt::red));
    m_scene.addPicture("lime", plain(Qt::green));
    m_scene.addPicture("blue", plain(Qt::blue));
}

// A hidden window draws no more, so that nobody calls the watch while it goes.
FrameScene::~FrameScene()
{
    m_scene.window()->hide();
}

QByteArray FrameScene::show()
{
    QByteArray failure =
        m_scene.show("Item {\n"
                     "Image { objectName: 'red'; source: 'image://test/red'; visible: false }\n"
                     "Image { objectName: 'lime'; source: 'image://test/lime'; visible: false }\n"
                     "RenderScope { objectName: 'scope'; pixelRatio: 1; anchors.fill: parent\n"
                     "PixelBuffer { objectName: 'buffer'; width: 20; height: 20 } } }");
    if (!failure.isEmpty()) {
        return failure;
    }
    buffer = m_scene.find<PixelBuffer>("buffer");
    scope = m_scene.find<RenderScope>("scope");
    red = m_scene.item("red");
    lime = m_scene.item("lime");
    QObject::connect(
        m_scene.window(), &QQuickWindow::afterSynchronizing, &m_context,
        [this] { listenToProvider(); }, Qt::DirectConnection);
    buffer->setSourceItem(red);
    waitForQuiet();
    log.taken();
    return m_repaints > 0 ? QByteArray() : QByteArray("the item is not drawn");
}

QColor FrameScene::color()
{
    const QImage picture = m_scene.grab(buffer);
    const QColor first = picture.pixelColor(0, 0);
    QImage same(picture.size(), picture.format());
    same.fill(first);
    return same == picture ? first : QColor();
}

int FrameScene::repaints(const std::function<void()> &act, int expected)
{
    const int before = m_repaints;
    const int frames = m_watch.frames();
    act();
    static_cast<void>(QTest::qWaitFor([&] { return m_repaints >= before + expected; }));
    waitForQuiet();
    return expected == 0 && m_watch.frames() != frames ? -1 : m_repaints - before;
}

QStringList FrameScene::logged(const std::function<void()> &act)
{
    waitForQuiet();
    log.taken();
    repaints(act, 1);
    return log.takenShort();
}

QStringList FrameScene::loggedAgain()
{
    return logged([this] { buffer->update(); });
}

// An item's texture provider tells of every time the item was drawn, or left as it is because it is
// frozen, and can be asked for on the render thread only.
void FrameScene::listenToProvider()
{
    QSGTextureProvider *provider = m_listening ? nullptr : buffer->textureProvider();
    if (provider != nullptr) {
        m_listening = true;
        QObject::connect(
            provider, &QSGTextureProvider::textureChanged, &m_context, [this] { ++m_repaints; },
            Qt::DirectConnection);
    }
}

} // namespace ko::imagefx::test
