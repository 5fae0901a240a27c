#include "core/RenderScope.h"
#include "imagefx/quick/PixelBuffer.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/PixelBufferState.h"
#include "tests/quick/OffscreenReference.h"
#include "tests/quick/QuickScene.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TestEffect.h"
#include "tests/support/TestMain.h"

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>
#include <QtGui/QPainter>
#include <QtQuick/QSGTexture>
#include <QtQuick/QSGTextureProvider>

#include <atomic>

using namespace ko;
using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

std::atomic<float> seenRenderScale{0.0F};

// Leaves the picture as it is and tells the render scale that it was drawn with.
class ScaleState : public TestEffectState
{
public:
    void updatePass(const QSharedPointer<ImageEffectPass> &pass,
                    const PixelBufferState *pbs) override
    {
        seenRenderScale = pbs->renderScale;
        TestEffectState::updatePass(pass, pbs);
    }
};

class ScaleEffect : public TestEffect
{
protected:
    ImageEffectState *createState() const override { return new ScaleState; }
};

// Follows the size of an item's framebuffer, from frame to frame.
class FramebufferSize
{
public:
    explicit FramebufferSize(PixelBuffer *buffer) : m_window(buffer->window())
    {
        // A provider can be asked for on the render thread only, and not outside a window.
        QObject::connect(
            m_window, &QQuickWindow::afterSynchronizing, &m_context,
            [this, buffer] {
                if (buffer->window() != nullptr) {
                    const QSize size = buffer->textureProvider()->texture()->textureSize();
                    m_width = size.width();
                    m_height = size.height();
                }
            },
            Qt::DirectConnection);
    }
    // A hidden window draws no more.
    ~FramebufferSize() { m_window->hide(); }
    Q_DISABLE_COPY(FramebufferSize)

    QSize size() const { return {m_width, m_height}; }

private:
    QQuickWindow *const m_window;
    QObject m_context;
    std::atomic<int> m_width{0};
    std::atomic<int> m_height{0};
};

void clearToWhite()
{
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    gl->glClearColor(1.0F, 1.0F, 1.0F, 1.0F);
    gl->glClear(GL_COLOR_BUFFER_BIT);
}

QImage without(const QImage &picture, const QRect &rect)
{
    QImage rest = picture;
    QPainter painter(&rest);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(rect, Qt::transparent);
    return rest;
}

} // namespace

// How many pixels an item's picture has, and how it looks where it is shown in another size.
class PixelsSizesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aFractionOfALogicalPixelDoesNotCount_data();
    void aFractionOfALogicalPixelDoesNotCount();
    void withoutItsScopeAnItemHasItsOwnSize_data();
    void withoutItsScopeAnItemHasItsOwnSize();
    void aPictureTooLargeForOpenGlHarmsNobodyAndComesBack_data();
    void aPictureTooLargeForOpenGlHarmsNobodyAndComesBack();
    void anItemThatIsNotSmoothIsInterpolatedByTheItemThatShowsIt();
};

void PixelsSizesTest::aFractionOfALogicalPixelDoesNotCount_data()
{
    QTest::addColumn<double>("ratio");
    QTest::addColumn<QSizeF>("size");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("without a scope") << 0.0 << QSizeF(40.7, 30.9) << QSize(40, 30);
    QTest::newRow("scope of 1") << 1.0 << QSizeF(40.7, 30.9) << QSize(40, 30);
    QTest::newRow("scope of 1.5") << 1.5 << QSizeF(40.7, 30.9) << QSize(60, 45);
    QTest::newRow("scope of 2") << 2.0 << QSizeF(40.7, 30.9) << QSize(80, 60);
    QTest::newRow("nearly one more") << 1.5 << QSizeF(40.999, 30.999) << QSize(60, 45);
    QTest::newRow("hardly more") << 1.5 << QSizeF(40.001, 30.001) << QSize(60, 45);
}

void PixelsSizesTest::aFractionOfALogicalPixelDoesNotCount()
{
    QFETCH(const double, ratio);
    QFETCH(const QSizeF, size);
    QFETCH(const QSize, expected);
    ScaleEffect effect;
    QuickScene scene(QSize(60, 40));
    scene.keepOutOfAtlas();
    scene.addPicture("photo", opaquePicture(QSize(80, 60)));
    const QByteArray parent = ratio == 0.0
                                  ? QByteArray("Item {")
                                  : "RenderScope { pixelRatio: " + QByteArray::number(ratio) + ";";
    KORVEL_SHOW(scene, "Item { Image { id: photo; source: 'image://test/photo'; visible: false }" +
                           parent +
                           "PixelBuffer { objectName: 'buffer'; sourceItem: photo\n"
                           "sourceRect: Qt.rect(0, 0, 1, 1) } } }");
    auto *buffer = scene.find<PixelBuffer>("buffer");
    buffer->insertEffect(&effect);
    buffer->setSize(size);
    const FramebufferSize framebuffer(buffer);
    seenRenderScale = 0.0F;
    buffer->update();
    QVERIFY(scene.settle());
    QCOMPARE(framebuffer.size(), expected);
    // Of logical pixels to those of the picture, whatever the scope says.
    QCOMPARE(float(seenRenderScale), 0.5F);
}

void PixelsSizesTest::withoutItsScopeAnItemHasItsOwnSize_data()
{
    QTest::addColumn<bool>("below");
    QTest::newRow("the item is below it to the end") << true;
    QTest::newRow("the item has left it") << false;
}

void PixelsSizesTest::withoutItsScopeAnItemHasItsOwnSize()
{
    QFETCH(const bool, below);
    const QImage photo = opaquePicture(QSize(40, 30));
    QuickScene scene(photo.size());
    scene.keepOutOfAtlas();
    scene.addPicture("photo", photo);
    KORVEL_SHOW(scene, R"(
        Item {
            Image { id: photo; source: "image://test/photo"; visible: false }
            RenderScope {
                objectName: "scope"
                pixelRatio: 2
                PixelBuffer { objectName: "buffer"; width: 40; height: 30; sourceItem: photo }
            }
        })");
    auto *buffer = scene.find<PixelBuffer>("buffer");
    const FramebufferSize framebuffer(buffer);
    QVERIFY(scene.settle());
    QCOMPARE(framebuffer.size(), QSize(80, 60));
    auto *scope = scene.find<RenderScope>("scope");
    buffer->setParent(scene.root()); // so that it outlives the scope
    if (below) {
        delete scope;
        QVERIFY(scene.settle());
        buffer->setParentItem(scene.root());
    } else {
        buffer->setParentItem(scene.root());
        delete scope;
    }
    buffer->update();
    KORVEL_COMPARE_PICTURES(scene.grab(), photo, windowTolerance);
    QCOMPARE(framebuffer.size(), QSize(40, 30));
    QCOMPARE(scene.warnings(), QStringList());
}

void PixelsSizesTest::aPictureTooLargeForOpenGlHarmsNobodyAndComesBack_data()
{
    QTest::addColumn<QByteArray>("settings");
    QTest::newRow("without effects") << QByteArray();
    QTest::newRow("with effects and a mask")
        << QByteArray("mask: photo; imageEffects: [HSVImageEffect { hue: 0.3 },\n"
                      "BlurImageEffect { radius: 3 }, HSVImageEffect { saturation: 0.2 }]");
}

void PixelsSizesTest::aPictureTooLargeForOpenGlHarmsNobodyAndComesBack()
{
    QFETCH(const QByteArray, settings);
    constexpr QRect place(50, 5, 40, 30);
    QuickScene scene(QSize(150, 40));
    scene.keepOutOfAtlas();
    // The application draws the background: whatever an item draws elsewhere stays to be seen.
    scene.window()->setClearBeforeRendering(false);
    connect(scene.window(), &QQuickWindow::beforeRendering, scene.window(), clearToWhite,
            Qt::DirectConnection);
    scene.addPicture("photo", opaquePicture(QSize(40, 30)));
    KORVEL_SHOW(scene, QByteArray(R"(
        Item {
            Image { id: photo; x: 5; y: 5; source: "image://test/photo" }
            Text { text: "neighbour" }
            RenderScope {
                objectName: "scope"
                pixelRatio: 1
                PixelBuffer { objectName: "buffer"; x: 50; y: 5; width: 40; height: 30
                              sourceItem: photo; %1 }
            }
            PixelBuffer {
                objectName: "neighbour"
                x: 100; y: 5; width: 40; height: 30
                sourceItem: photo
                imageEffects: [BlurImageEffect { radius: 2 }, HSVImageEffect { hue: 0.6 }]
            }
        })")
                           .replace("%1", settings));
    const QImage before = scene.grab();
    auto *scope = scene.find<RenderScope>("scope");
    auto *buffer = scene.find<PixelBuffer>("buffer");
    scope->setPixelRatio(2000);
    for (int i = 0; i < 3; ++i) {
        buffer->update();
        scene.find<PixelBuffer>("neighbour")->update();
        KORVEL_COMPARE_PICTURES(without(scene.grab(), place), without(before, place), 0.0);
    }
    scope->setPixelRatio(1);
    buffer->update();
    KORVEL_COMPARE_PICTURES(scene.grab(), before, 0.0);
}

void PixelsSizesTest::anItemThatIsNotSmoothIsInterpolatedByTheItemThatShowsIt()
{
    constexpr int enlargement = 4;
    QImage picture(QSize(20, 10), QImage::Format_RGBA8888);
    picture.fill(Qt::black);
    QPainter(&picture).fillRect(QRect(10, 0, 10, 10), Qt::white);
    QuickScene scene(QSize(80, 60));
    scene.keepOutOfAtlas();
    scene.addPicture("photo", picture);
    KORVEL_SHOW(scene, R"(
        Item {
            Image { id: photo; source: "image://test/photo"; visible: false }
            PixelBuffer { id: small; objectName: "small"; smooth: false
                          y: 45; width: 20; height: 10; sourceItem: photo }
            PixelBuffer { objectName: "buffer"; width: 80; height: 40; sourceItem: small }
        })");
    auto *buffer = scene.find<PixelBuffer>("buffer");
    const auto expected = [](int x, int) {
        const double texel = (x + 0.5) / enlargement - 0.5;
        const double level = 255.0 * qBound(0.0, texel - 9.0, 1.0);
        return PixelRange{{{level, level}, {level, level}, {level, level}, {255.0, 255.0}}};
    };
    for (int i = 0; i < 3; ++i) {
        KORVEL_COMPARE_PICTURES(scene.grab(buffer), ExpectedPixel(expected), windowTolerance);
        scene.item("small")->update();
        QVERIFY(scene.settle());
        buffer->update();
    }
}

KORVEL_TEST_MAIN(PixelsSizesTest)

#include "tst_pixelssizes.moc"
