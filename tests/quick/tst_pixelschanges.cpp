#include "imagefx/quick/PixelBuffer.h"
#include "tests/quick/FrameWatch.h"
#include "tests/quick/OffscreenReference.h"
#include "tests/quick/QuickScene.h"
#include "tests/quick/RenderLog.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TestMain.h"

#include <QtGui/QPainter>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr QSize itemSize(60, 40);

// Items that are not shown, but painted into layers, and an item that is the source of another.
constexpr const char *layers = R"(
    Item {
        id: all
        property Item source
        property Item mask

        %1

        Rectangle {
            id: red
            objectName: "red"
            width: 60; height: 40; color: "red"
            layer.enabled: true; visible: false
        }
        Rectangle {
            id: white
            objectName: "white"
            width: 60; height: 40
            layer.enabled: true; visible: false
        }
        PixelBuffer {
            id: other
            objectName: "other"
            x: 60; width: 60; height: 40
            sourceItem: red
        }
        PixelBuffer {
            id: filled
            x: 120; width: 60; height: 40
            sourceItem: red
            imageEffects: ColorFillImageEffect { objectName: "fill"; color: "red" }
        }
        PixelBuffer {
            objectName: "buffer"
            width: 60; height: 40
            sourceItem: all.source
            mask: all.mask
        }
    })";

// The right half of it is white, the left one black.
QImage rightHalf()
{
    QImage image(itemSize, QImage::Format_RGBA8888);
    image.fill(Qt::black);
    QPainter(&image).fillRect(QRect(30, 0, 30, 40), Qt::white);
    return image;
}

QImage plain(const QColor &color)
{
    QImage image(itemSize, QImage::Format_RGBA8888_Premultiplied);
    image.fill(color);
    return image;
}

QImage cutInHalf(QImage picture)
{
    picture = picture.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    QPainter painter(&picture);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(QRect(0, 0, 30, 40), Qt::transparent);
    return picture;
}

// A scene whose frames are counted.
struct WatchedScene {
    explicit WatchedScene(const QSize &size) : scene(size), watch(scene.window()) {}
    // A hidden window draws no more, so that nobody calls the watch while it goes.
    ~WatchedScene() { scene.window()->hide(); }
    Q_DISABLE_COPY(WatchedScene)

    // What is there when all that the change brought about is done; no frame is asked for.
    QImage picture()
    {
        watch.waitForQuiet();
        return scene.grabNow().copy(QRect(QPoint(0, 0), itemSize));
    }

    QuickScene scene;
    FrameWatch watch;
};

} // namespace

// What an item shows when its source, its mask or their pictures change.
class PixelsChangesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aHiddenItemThatChangesIsFollowed_data();
    void aHiddenItemThatChangesIsFollowed();
    void aSceneOfHiddenItemsThatDoesNotChangeIsNotDrawnAgain();
    void aMaskThatIsTakenAwayCutsUntilItsTextureIsGone();
    void aMaskCutsAlsoWhileEffectsAreOff_data();
    void aMaskCutsAlsoWhileEffectsAreOff();
};

void PixelsChangesTest::aHiddenItemThatChangesIsFollowed_data()
{
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<QString>("changing");
    QTest::addColumn<bool>("asMask");
    QTest::newRow("source") << QByteArray("source: red") << "red" << false;
    QTest::newRow("mask") << QByteArray("source: white; mask: red") << "red" << true;
    QTest::newRow("source that another item shows")
        << QByteArray("source: other") << "red" << false;
    QTest::newRow("effect of another item") << QByteArray("source: filled") << "fill" << false;
}

void PixelsChangesTest::aHiddenItemThatChangesIsFollowed()
{
    QFETCH(const QByteArray, settings);
    QFETCH(const QString, changing);
    QFETCH(const bool, asMask);
    WatchedScene watched(QSize(180, 40));
    KORVEL_SHOW(watched.scene, QByteArray(layers).replace("%1", settings));
    auto *object = watched.scene.find<QObject>(changing);
    if (object == nullptr) {
        QFAIL("the layer is not there");
    }
    // Red is what counts of a mask, for all channels.
    const auto shown = [asMask](const QColor &color) {
        const int red = color.red();
        return plain(asMask ? QColor(255, 255, 255, red) : color);
    };
    KORVEL_COMPARE_PICTURES(watched.picture(), shown(Qt::red), windowTolerance);
    for (const QColor &color : {QColor("#66ff12"), QColor("#c01020"), QColor("#0000ff")}) {
        QVERIFY(object->setProperty("color", color));
        KORVEL_COMPARE_PICTURES(watched.picture(), shown(color), windowTolerance);
    }
    QCOMPARE(watched.scene.warnings(), QStringList());
}

void PixelsChangesTest::aSceneOfHiddenItemsThatDoesNotChangeIsNotDrawnAgain()
{
    WatchedScene watched(QSize(180, 40));
    KORVEL_SHOW(watched.scene, QByteArray(layers).replace("%1", "source: other; mask: white"));
    QVERIFY(watched.scene.find<QObject>("red")->setProperty("color", QColor(Qt::blue)));
    QVERIFY(watched.scene.find<QObject>("white")->setProperty("color", QColor(Qt::yellow)));
    watched.watch.waitForQuiet();
    RenderLog log;
    const int before = watched.watch.frames();
    QTest::qWait(500);
    QCOMPARE(watched.watch.frames(), before);
    QCOMPARE(log.taken(), QStringList());
    KORVEL_COMPARE_PICTURES(watched.picture(), plain(Qt::blue), windowTolerance);
}

void PixelsChangesTest::aMaskThatIsTakenAwayCutsUntilItsTextureIsGone()
{
    const QImage photo = opaquePicture(itemSize);
    QuickScene scene(itemSize);
    scene.keepOutOfAtlas();
    scene.addPicture("photo", photo);
    scene.addPicture("mask", rightHalf());
    // Without a cache the mask's texture goes with the last item that shows it.
    KORVEL_SHOW(scene, R"(
        Item {
            Image { id: photo; source: "image://test/photo"; visible: false }
            Image { id: half; objectName: "mask"; source: "image://test/mask"; cache: false
                    visible: false }
            PixelBuffer { objectName: "buffer"; anchors.fill: parent; sourceItem: photo
                          mask: half }
        })");
    auto *buffer = scene.find<PixelBuffer>("buffer");
    KORVEL_COMPARE_PICTURES(scene.grab(), cutInHalf(photo), 0.0);
    buffer->setMask(nullptr);
    KORVEL_COMPARE_PICTURES(scene.grab(), cutInHalf(photo), 0.0);
    buffer->update();
    KORVEL_COMPARE_PICTURES(scene.grab(), cutInHalf(photo), 0.0);
    delete scene.item("mask");
    QVERIFY(scene.settle());
    buffer->update();
    KORVEL_COMPARE_PICTURES(scene.grab(), photo, 0.0);
}

void PixelsChangesTest::aMaskCutsAlsoWhileEffectsAreOff_data()
{
    QTest::addColumn<bool>("fromTheStart");
    QTest::newRow("from the start") << true;
    QTest::newRow("after a while") << false;
}

void PixelsChangesTest::aMaskCutsAlsoWhileEffectsAreOff()
{
    QFETCH(const bool, fromTheStart);
    const QImage photo = opaquePicture(itemSize);
    QuickScene scene(itemSize);
    scene.keepOutOfAtlas();
    scene.addPicture("photo", photo);
    scene.addPicture("mask", rightHalf());
    KORVEL_SHOW(scene, QByteArray(R"(
        Item {
            Image { id: photo; source: "image://test/photo"; visible: false }
            Image { id: half; source: "image://test/mask"; visible: false }
            PixelBuffer {
                objectName: "buffer"
                anchors.fill: parent
                sourceItem: photo
                mask: half
                imageEffectsEnabled: %1
                imageEffects: ColorFillImageEffect { color: "lime" }
            }
        })")
                           .replace("%1", fromTheStart ? "false" : "true"));
    auto *buffer = scene.find<PixelBuffer>("buffer");
    if (!fromTheStart) {
        KORVEL_COMPARE_PICTURES(scene.grab(), cutInHalf(plain(QColor(0, 255, 0))), windowTolerance);
        buffer->setImageEffectsEnabled(false);
    }
    KORVEL_COMPARE_PICTURES(scene.grab(), cutInHalf(photo), 0.0);
    buffer->setImageEffectsEnabled(true);
    KORVEL_COMPARE_PICTURES(scene.grab(), cutInHalf(plain(QColor(0, 255, 0))), windowTolerance);
}

KORVEL_TEST_MAIN(PixelsChangesTest)

#include "tst_pixelschanges.moc"
