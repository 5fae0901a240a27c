#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/quick/PixelBuffer.h"
#include "tests/core/SecondScreen.h"
#include "tests/quick/OffscreenReference.h"
#include "tests/quick/QuickScene.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TestMain.h"

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr QSize itemSize(40, 30);

// Before there is an application: a screen's resolution decides upon its ratio.
void scaleByResolution()
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
}
Q_CONSTRUCTOR_FUNCTION(scaleByResolution)

} // namespace

// What items show when their window gets to a screen of another density.
class PixelsScreensTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aFrozenItemKeepsItsPictureOnAnotherScreen_data();
    void aFrozenItemKeepsItsPictureOnAnotherScreen();
};

void PixelsScreensTest::aFrozenItemKeepsItsPictureOnAnotherScreen_data()
{
    QTest::addColumn<QByteArray>("parent");
    QTest::addColumn<bool>("moves");
    QTest::addColumn<int>("finer"); // than logical pixels, once the item is not frozen any more
    QTest::newRow("the window moves") << QByteArray("Item") << true << 1;
    QTest::newRow("the screen changes") << QByteArray("Item") << false << 1;
    QTest::newRow("the window moves, below a scope") << QByteArray("RenderScope") << true << 2;
    QTest::newRow("the screen changes, below a scope") << QByteArray("RenderScope") << false << 2;
}

void PixelsScreensTest::aFrozenItemKeepsItsPictureOnAnotherScreen()
{
    QFETCH(const QByteArray, parent);
    QFETCH(const bool, moves);
    QFETCH(const int, finer);
    const QImage photo = opaquePicture(2 * itemSize);
    SecondScreen second(moves ? 2 : 1);
    HSVImageEffect effect;
    effect.setHue(0.3F);
    QuickScene scene(2 * itemSize);
    scene.keepOutOfAtlas();
    scene.addPicture("photo", photo);
    QScreen *first = scene.window()->screen();
    if (!moves) {
        scene.window()->setScreen(second.screen());
    }
    // Texels are enlarged as they are.
    KORVEL_SHOW(scene, "Item { Image { id: photo; source: 'image://test/photo'; visible: false } " +
                           parent +
                           " { PixelBuffer { objectName: 'buffer'; width: 40; height: 30\n"
                           "smooth: false; sourceItem: photo } } }");
    auto *buffer = scene.find<PixelBuffer>("buffer");
    buffer->insertEffect(&effect);
    OffscreenReference reference;
    const QImage frozen = reference.draw({&effect}, photo, {itemSize});
    KORVEL_COMPARE_PICTURES(scene.grab(buffer), frozen, windowTolerance);

    buffer->freeze();
    effect.setHue(-0.2F);
    for (const int ratio : {2, 1, 2}) {
        if (moves) {
            scene.window()->setScreen(ratio == 1 ? first : second.screen());
            scene.window()->show();
            QVERIFY(QTest::qWaitForWindowExposed(scene.window()));
        } else {
            second.setRatio(ratio);
        }
        QCOMPARE(scene.window()->effectiveDevicePixelRatio(), qreal(ratio));
        for (int frame = 0; frame < 2; ++frame) {
            KORVEL_COMPARE_PICTURES(scene.grab(buffer), frozen.scaled(ratio * itemSize),
                                    windowTolerance);
            buffer->update();
        }
    }

    buffer->unfreeze();
    const QImage unfrozen = reference.draw({&effect}, photo, {finer * itemSize});
    KORVEL_COMPARE_PICTURES(scene.grab(buffer), unfrozen.scaled(2 * itemSize), windowTolerance);
}

KORVEL_TEST_MAIN(PixelsScreensTest)

#include "tst_pixelsscreens.moc"
