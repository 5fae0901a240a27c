#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/quick/PixelBuffer.h"
#include "imagefx/quick/SourceGeometry.h"
#include "tests/quick/OffscreenReference.h"
#include "tests/quick/QuickScene.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TestMain.h"

#include <QtQuick/QSGTexture>
#include <QtQuick/QSGTextureProvider>

#include <atomic>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

// What an item takes from other items: its source, the part of it, and its mask.
class PixelSourcesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everySourceItem_data();
    void everySourceItem();
    void aRectangleInALayer_data();
    void aRectangleInALayer();
    void anItemOfAnItemAddsItsEffects();
    void anImageInTheAtlasShowsItsOwnPart();
    void noSourceShowsNothing();
    void sourceRectSelectsAPart();
    void sourceRectIsStretchedOverTheItem();
    void withoutASourceRectTheMiddleIsCut_data();
    void withoutASourceRectTheMiddleIsCut();
    void theCropFollowsTheAtlas();
    void radiiFollowTheReferenceSize_data();
    void radiiFollowTheReferenceSize();
    void aMaskCutsThePicture_data();
    void aMaskCutsThePicture();
    void aMaskIsStretchedAndItsRedCounts();
    void aMaskCutsAfterTheEffects();
};

namespace
{

// Mixes the neighbours first, so that a flipped or shifted picture shows.
struct Stack {
    Stack()
    {
        blur.setRadius(3.3F);
        hsv.setHue(0.3F);
    }
    QList<ImageEffect *> list() { return {&blur, &hsv}; }
    void insertInto(PixelBuffer *item)
    {
        item->insertEffect(&blur);
        item->insertEffect(&hsv);
    }

    BlurImageEffect blur;
    HSVImageEffect hsv;
};

// Every pixel of a colour of its own.
QImage ramps(const QSize &size)
{
    QImage image(size, QImage::Format_RGBA8888);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            image.setPixelColor(x, y, QColor(x % 256, y % 256, (7 * x + 13 * y) % 256));
        }
    }
    return image;
}

QImage filled(const QSize &size, const QColor &color)
{
    QImage image(size, QImage::Format_RGBA8888_Premultiplied);
    image.fill(color);
    return image;
}

// Black on the left, white on the right.
QImage halves(const QSize &size)
{
    QImage image = filled(size, Qt::black);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = size.width() / 2; x < size.width(); ++x) {
            image.setPixelColor(x, y, Qt::white);
        }
    }
    return image;
}

PixelBuffer *bufferOf(const QuickScene &scene)
{
    return scene.find<PixelBuffer>(QStringLiteral("buffer"));
}

} // namespace

void PixelSourcesTest::everySourceItem_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<QImage>("picture");
    const QByteArray image = "Image { id: photograph; source: 'image://test/photograph'; ";
    const QByteArray below = image + "visible: false } ";
    const QByteArray effectSource =
        "ShaderEffectSource { id: source; width: 61; height: 47; sourceItem: photograph; ";
    const QPair<const char *, QImage> pictures[] = {{"opaque", opaquePicture()},
                                                    {"translucent", translucentPicture()}};
    for (const auto &named : pictures) {
        const QImage &picture = named.second;
        const auto row = [&](const char *what) -> QTestData & {
            return QTest::newRow((QByteArray(what) + ", " + named.first).constData());
        };
        row("image") << image + "}" << picture;
        row("hidden image") << image + "visible: false }" << picture;
        row("image with mipmaps") << image + "mipmap: true; visible: false }" << picture;
        row("image in a layer") << image + "layer.enabled: true }" << picture;
        row("hidden image in a layer")
            << image + "layer.enabled: true; visible: false }" << picture;
        row("effect source") << below + effectSource + "}" << picture;
        row("hidden effect source") << below + effectSource + "visible: false }" << picture;
        row("effect source that hides")
            << image + "} " + effectSource + "hideSource: true }" << picture;
        row("another item") << below + "PixelBuffer { id: source; width: 61; height: 47; "
                                       "sourceItem: photograph }"
                            << picture;
    }
}

void PixelSourcesTest::everySourceItem()
{
    QFETCH(const QByteArray, source);
    QFETCH(const QImage, picture);
    const QByteArray id = source.contains("id: source") ? "source" : "photograph";
    QuickScene scene(QSize(2 * picture.width(), picture.height()));
    scene.keepOutOfAtlas();
    scene.addPicture(QStringLiteral("photograph"), picture);
    // The item lies beside what a visible source shows of itself.
    KORVEL_SHOW(scene, "Item { " + source +
                           " PixelBuffer { objectName: 'buffer'; x: 61; width: 61; height: 47;"
                           " sourceItem: " +
                           id + " } }");
    KORVEL_COMPARE_PICTURES(scene.grab(bufferOf(scene)), picture, windowTolerance);
    Stack shown;
    Stack expected;
    shown.insertInto(bufferOf(scene));
    KORVEL_COMPARE_PICTURES(scene.grab(bufferOf(scene)),
                            OffscreenReference().draw(expected.list(), picture), windowTolerance);
    QCOMPARE(scene.warnings(), QStringList());
}

void PixelSourcesTest::aRectangleInALayer_data()
{
    QTest::addColumn<QByteArray>("settings");
    QTest::newRow("visible") << QByteArray("layer.enabled: true");
    QTest::newRow("hidden") << QByteArray("layer.enabled: true; visible: false");
    QTest::newRow("hidden and smooth")
        << QByteArray("layer.enabled: true; layer.smooth: true; visible: false");
}

void PixelSourcesTest::aRectangleInALayer()
{
    QFETCH(const QByteArray, settings);
    const QByteArray look = "width: 61; height: 47; gradient: Gradient {"
                            " GradientStop { position: 0; color: '#c0ff8000' }"
                            " GradientStop { position: 1; color: '#400040ff' } }";
    QuickScene plain(testPictureSize);
    KORVEL_SHOW(plain, "Item { Rectangle { " + look + " } }");
    const QImage rectangle = plain.grab();
    plain.window()->hide();

    QuickScene scene(QSize(122, 47));
    KORVEL_SHOW(scene, "Item { Rectangle { id: source; " + settings + "; " + look +
                           " } PixelBuffer { objectName: 'buffer'; x: 61; width: 61; height: 47; "
                           "sourceItem: source } }");
    KORVEL_COMPARE_PICTURES(scene.grab(bufferOf(scene)), rectangle, windowTolerance);
    Stack shown;
    Stack expected;
    shown.insertInto(bufferOf(scene));
    KORVEL_COMPARE_PICTURES(scene.grab(bufferOf(scene)),
                            OffscreenReference().draw(expected.list(), rectangle), windowTolerance);
}

void PixelSourcesTest::anItemOfAnItemAddsItsEffects()
{
    QuickScene scene(QSize(122, 47));
    scene.keepOutOfAtlas();
    scene.addPicture(QStringLiteral("photograph"), translucentPicture());
    KORVEL_SHOW(scene, R"(
        Item {
            Image { id: photograph; source: "image://test/photograph"; visible: false }
            PixelBuffer {
                id: first
                width: 61; height: 47
                sourceItem: photograph
                imageEffects: HSVImageEffect { hue: 0.4 }
            }
            PixelBuffer {
                objectName: "buffer"
                x: 61; width: 61; height: 47
                sourceItem: first
            }
        })");
    Stack shown;
    Stack expected;
    shown.insertInto(bufferOf(scene));
    HSVImageEffect first;
    first.setHue(0.4F);
    KORVEL_COMPARE_PICTURES(
        scene.grab(bufferOf(scene)),
        OffscreenReference().draw(QList<ImageEffect *>{&first} + expected.list(),
                                  translucentPicture()),
        windowTolerance);
}

void PixelSourcesTest::anImageInTheAtlasShowsItsOwnPart()
{
    const QSize size(24, 16);
    const QImage pictures[] = {ramps(size), translucentPicture(size), filled(size, Qt::green)};
    QuickScene scene(QSize(72, 16));
    for (int i = 0; i < 3; ++i) {
        scene.addPicture(QString::number(i), pictures[i]);
    }
    KORVEL_SHOW(scene, R"(
        Row {
            Repeater {
                model: 3
                PixelBuffer {
                    objectName: "buffer" + index
                    width: 24; height: 16
                    sourceItem: Image {
                        parent: scenery
                        objectName: "image" + index
                        source: "image://test/" + index
                    }
                }
            }
            Item { id: scenery; visible: false }
        })");
    std::atomic<int> inAtlas{0};
    connect(
        scene.window(), &QQuickWindow::afterRendering, this,
        [&scene, &inAtlas] {
            int found = 0;
            for (int i = 0; i < 3; ++i) {
                auto *buffer = scene.find<PixelBuffer>(QStringLiteral("buffer%1").arg(i));
                const QSGTexture *texture = buffer->sourceItem()->textureProvider()->texture();
                found += texture != nullptr && texture->isAtlasTexture() ? 1 : 0;
            }
            inAtlas = found;
        },
        Qt::DirectConnection);
    for (int i = 0; i < 3; ++i) {
        KORVEL_COMPARE_PICTURES(scene.grab(scene.item(QStringLiteral("buffer%1").arg(i))),
                                pictures[i], windowTolerance);
    }
    QCOMPARE(int(inAtlas), 3);
}

void PixelSourcesTest::noSourceShowsNothing()
{
    QuickScene scene(QSize(20, 10));
    KORVEL_SHOW(scene, "PixelBuffer { imageEffects: ColorFillImageEffect { color: 'red' } }");
    KORVEL_COMPARE_PICTURES(scene.grab(), filled(QSize(20, 10), Qt::transparent), 0.0);
}

void PixelSourcesTest::sourceRectSelectsAPart()
{
    const QImage picture = ramps(QSize(64, 32));
    QuickScene scene(QSize(32, 16));
    scene.keepOutOfAtlas();
    scene.addPicture(QStringLiteral("photograph"), picture);
    KORVEL_SHOW(scene, R"(
        Item {
            Image { id: photograph; source: "image://test/photograph"; visible: false }
            PixelBuffer { objectName: "buffer"; anchors.fill: parent; sourceItem: photograph }
        })");
    for (const QPoint &corner : {QPoint(0, 0), QPoint(16, 4), QPoint(32, 16)}) {
        bufferOf(scene)->setSourceRect({corner.x() / 64.0, corner.y() / 32.0, 0.5, 0.5});
        KORVEL_COMPARE_PICTURES(scene.grab(), picture.copy(QRect(corner, QSize(32, 16))), 0.0);
    }
}

void PixelSourcesTest::sourceRectIsStretchedOverTheItem()
{
    const QSize size(80, 50);
    QuickScene scene(size);
    scene.keepOutOfAtlas();
    scene.addPicture(QStringLiteral("photograph"), opaquePicture());
    KORVEL_SHOW(scene, R"(
        Item {
            Image { id: photograph; source: "image://test/photograph"; visible: false }
            PixelBuffer { objectName: "buffer"; anchors.fill: parent; sourceItem: photograph }
        })");
    Stack shown;
    Stack expected;
    shown.insertInto(bufferOf(scene));
    const QRectF rect(0.1, 0.3, 0.6, 0.25);
    bufferOf(scene)->setSourceRect(rect);
    // The larger one of the directions: downwards.
    const float scale = 50.0F / (0.25F * 47.0F);
    KORVEL_COMPARE_PICTURES(
        scene.grab(),
        OffscreenReference().draw(expected.list(), opaquePicture(), {size, rect, scale}),
        windowTolerance);
}

void PixelSourcesTest::withoutASourceRectTheMiddleIsCut_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QRect>("part");
    QTest::newRow("wide picture") << QSize(200, 100) << QRect(50, 0, 100, 100);
    QTest::newRow("tall picture") << QSize(100, 200) << QRect(0, 50, 100, 100);
    QTest::newRow("same aspect ratio") << QSize(120, 80) << QRect(0, 0, 120, 80);
    QTest::newRow("wide item") << QSize(100, 100) << QRect(0, 25, 100, 50);
}

void PixelSourcesTest::withoutASourceRectTheMiddleIsCut()
{
    QFETCH(const QSize, picture);
    QFETCH(const QRect, part);
    QuickScene scene(part.size());
    scene.keepOutOfAtlas();
    scene.addPicture(QStringLiteral("photograph"), ramps(picture));
    KORVEL_SHOW(scene, R"(
        Item {
            Image { id: photograph; source: "image://test/photograph"; visible: false }
            PixelBuffer { objectName: "buffer"; anchors.fill: parent; sourceItem: photograph }
        })");
    KORVEL_COMPARE_PICTURES(scene.grab(), ramps(picture).copy(part), 0.0);
    // As many pixels of the item as of the picture, so the radii are as set.
    Stack shown;
    Stack expected;
    shown.insertInto(bufferOf(scene));
    KORVEL_COMPARE_PICTURES(scene.grab(),
                            OffscreenReference().draw(expected.list(), ramps(picture).copy(part)),
                            windowTolerance);
}

void PixelSourcesTest::theCropFollowsTheAtlas()
{
    const QRectF whole(0.0, 0.0, 1.0, 1.0);
    const QRectF place(0.5, 0.25, 0.125, 0.25);
    QCOMPARE(centredCrop(QSize(200, 100), whole, QSizeF(100, 100)), QRectF(0.25, 0.0, 0.5, 1.0));
    QCOMPARE(centredCrop(QSize(100, 200), whole, QSizeF(100, 100)), QRectF(0.0, 0.25, 1.0, 0.5));
    QCOMPARE(centredCrop(QSize(100, 100), whole, QSizeF(50, 50)), whole);
    QCOMPARE(centredCrop(QSize(100, 100), place, QSizeF(50, 50)), place);
    QCOMPARE(centredCrop(QSize(200, 100), place, QSizeF(100, 100)),
             QRectF(0.75, 0.25, 0.0625, 0.25));
    QCOMPARE(centredCrop(QSize(100, 200), place, QSizeF(100, 100)), QRectF(0.5, 0.5, 0.125, 0.125));
}

void PixelSourcesTest::radiiFollowTheReferenceSize_data()
{
    QTest::addColumn<QSize>("referenceSize");
    QTest::addColumn<float>("scale");
    QTest::newRow("unset") << QSize() << 1.0F;
    QTest::newRow("twice as large") << QSize(122, 94) << 0.5F;
    QTest::newRow("half as large") << QSize(30, 23) << 47.0F / 23.0F;
    QTest::newRow("of another shape") << QSize(122, 47) << 1.0F;
    QTest::newRow("without height") << QSize(122, 0) << 1.0F;
    QTest::newRow("negative") << QSize(-5, 94) << 1.0F;
}

void PixelSourcesTest::radiiFollowTheReferenceSize()
{
    QFETCH(const QSize, referenceSize);
    QFETCH(const float, scale);
    QuickScene scene(testPictureSize);
    scene.keepOutOfAtlas();
    scene.addPicture(QStringLiteral("photograph"), opaquePicture());
    KORVEL_SHOW(scene, R"(
        Item {
            Image { id: photograph; source: "image://test/photograph"; visible: false }
            PixelBuffer { objectName: "buffer"; anchors.fill: parent; sourceItem: photograph }
        })");
    Stack shown;
    Stack expected;
    shown.insertInto(bufferOf(scene));
    bufferOf(scene)->setReferenceSize(referenceSize);
    const Showing showing{testPictureSize, {0.0, 0.0, 1.0, 1.0}, scale};
    KORVEL_COMPARE_PICTURES(scene.grab(),
                            OffscreenReference().draw(expected.list(), opaquePicture(), showing),
                            windowTolerance);
}

void PixelSourcesTest::aMaskCutsThePicture_data()
{
    QTest::addColumn<bool>("withEffects");
    QTest::newRow("without effects") << false;
    QTest::newRow("with effects") << true;
}

void PixelSourcesTest::aMaskCutsThePicture()
{
    QFETCH(const bool, withEffects);
    const QImage picture = translucentPicture(QSize(60, 40));
    QuickScene scene(picture.size());
    scene.keepOutOfAtlas();
    scene.addPicture(QStringLiteral("photograph"), picture);
    scene.addPicture(QStringLiteral("mask"), halves(picture.size()));
    KORVEL_SHOW(scene, R"(
        Item {
            Image { id: photograph; source: "image://test/photograph"; visible: false }
            Image { id: cut; objectName: "cut"; source: "image://test/mask"; visible: false }
            PixelBuffer { objectName: "buffer"; anchors.fill: parent; sourceItem: photograph }
        })");
    Stack shown;
    Stack third;
    if (withEffects) {
        shown.insertInto(bufferOf(scene));
    }
    // Even and odd numbers of passes end in different framebuffers.
    for (int passes = 0; passes < 2; ++passes) {
        bufferOf(scene)->setMask(nullptr);
        const QImage uncut = passes == 0 ? scene.grab() : QImage();
        bufferOf(scene)->setMask(scene.item(QStringLiteral("cut")));
        QImage whole = uncut;
        if (passes == 1) {
            bufferOf(scene)->insertEffect(&third.hsv);
            Stack expected;
            Stack last;
            QList<ImageEffect *> list = withEffects ? expected.list() : QList<ImageEffect *>();
            list.append(&last.hsv);
            whole = OffscreenReference().draw(list, picture);
        }
        const QImage cut = scene.grab();
        const QRect left(0, 0, 30, 40);
        KORVEL_COMPARE_PICTURES(cut.copy(left), filled(left.size(), Qt::transparent), 0.0);
        KORVEL_COMPARE_PICTURES(cut.copy(left.translated(30, 0)),
                                whole.copy(left.translated(30, 0)),
                                passes == 0 ? 0.0 : windowTolerance);
    }
}

void PixelSourcesTest::aMaskIsStretchedAndItsRedCounts()
{
    const QImage picture = translucentPicture(QSize(60, 40));
    QuickScene scene(picture.size());
    scene.keepOutOfAtlas();
    scene.addPicture(QStringLiteral("photograph"), picture);
    KORVEL_SHOW(scene, R"(
        Item {
            Image { id: photograph; source: "image://test/photograph"; visible: false }
            Rectangle { id: cut; width: 7; height: 5; color: "#66ff12"; layer.enabled: true
                        visible: false }
            PixelBuffer { anchors.fill: parent; sourceItem: photograph; mask: cut }
        })");
    const auto expected = [&picture](int x, int y) {
        const uchar *pixel = picture.constScanLine(y) + ptrdiff_t(4) * x;
        PixelRange range;
        for (size_t i = 0; i < range.size(); ++i) {
            range[i].low = range[i].high = pixel[i] * 0x66 / 255.0;
        }
        return range;
    };
    KORVEL_COMPARE_PICTURES(scene.grab(), ExpectedPixel(expected), windowTolerance);
}

// A blur would smear a cut that came before it.
void PixelSourcesTest::aMaskCutsAfterTheEffects()
{
    const QImage picture = opaquePicture(QSize(60, 40));
    QuickScene scene(picture.size());
    scene.keepOutOfAtlas();
    scene.addPicture(QStringLiteral("photograph"), picture);
    scene.addPicture(QStringLiteral("mask"), halves(picture.size()));
    KORVEL_SHOW(scene, R"(
        Item {
            Image { id: photograph; source: "image://test/photograph"; visible: false }
            Image { id: cut; source: "image://test/mask"; visible: false }
            PixelBuffer {
                anchors.fill: parent; sourceItem: photograph; mask: cut
                imageEffects: BlurImageEffect { radius: 9.3 }
            }
        })");
    BlurImageEffect blur;
    blur.setRadius(9.3F);
    const QRect right(30, 0, 30, 40);
    KORVEL_COMPARE_PICTURES(scene.grab().copy(right),
                            OffscreenReference().draw({&blur}, picture).copy(right),
                            windowTolerance);
}

KORVEL_TEST_MAIN(PixelSourcesTest)
#include "tst_pixelssources.moc"
