#include "core/RenderScope.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/quick/PixelBuffer.h"
#include "tests/quick/OffscreenReference.h"
#include "tests/quick/QuickScene.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TestMain.h"

using namespace ko;
using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr QSize itemSize(40, 30);
const QSize pictureSize(80, 60);
// Of the item to the picture; how fine the framebuffer is does not count.
constexpr float renderScale = 0.5F;

// `scale` brings the texels of the item onto the pixels of the window.
constexpr const char *sceneText = R"(
    Item {
        Image { id: photograph; source: 'image://test/photograph'; visible: false }
        RenderScope {
            objectName: 'scope'
            PixelBuffer {
                objectName: 'buffer'
                width: 40; height: 30; transformOrigin: Item.TopLeft; smooth: false
                sourceItem: photograph
            }
        }
    })";

struct Stack {
    Stack()
    {
        blur.setRadius(7.3F);
        hsv.setHue(0.3F);
    }

    BlurImageEffect blur;
    HSVImageEffect hsv;
};

} // namespace

// How fine the picture is on screens with more device pixels than logical ones; to be run under
// several QT_SCALE_FACTORs.
class PixelsRatioTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void theWindowHasTheRatioAskedFor();
    void aScopeFollowsTheWindow();
    void aScopeMayAskForAnotherRatio_data();
    void aScopeMayAskForAnotherRatio();
    void theRatioMayChange();
    void withoutAScopeTexelsAreLogicalPixels();

private:
    double windowRatio() const { return m_scene->window()->effectiveDevicePixelRatio(); }
    // One texel of the item becomes one device pixel.
    void showTexels(double ratio) { m_buffer->setScale(ratio / windowRatio()); }
    QImage expected(double ratio)
    {
        Stack stack;
        return OffscreenReference().draw({&stack.blur, &stack.hsv}, opaquePicture(pictureSize),
                                         {itemSize * ratio, {0.0, 0.0, 1.0, 1.0}, renderScale});
    }
    QImage texels(double ratio)
    {
        return m_scene->grab().copy(QRect(QPoint(0, 0), itemSize * ratio));
    }

    std::unique_ptr<Stack> m_stack;
    std::unique_ptr<QuickScene> m_scene;
    PixelBuffer *m_buffer = nullptr;
};

void PixelsRatioTest::init()
{
    m_stack = std::make_unique<Stack>();
    m_scene = std::make_unique<QuickScene>(2 * itemSize);
    m_scene->keepOutOfAtlas();
    m_scene->addPicture(QStringLiteral("photograph"), opaquePicture(pictureSize));
    KORVEL_SHOW(*m_scene, sceneText);
    m_buffer = m_scene->find<PixelBuffer>(QStringLiteral("buffer"));
    m_buffer->insertEffect(&m_stack->blur);
    m_buffer->insertEffect(&m_stack->hsv);
}

void PixelsRatioTest::cleanup()
{
    QCOMPARE(m_scene->warnings(), QStringList());
    m_scene.reset();
    m_stack.reset();
}

void PixelsRatioTest::theWindowHasTheRatioAskedFor()
{
    const QByteArray factor = qgetenv("QT_SCALE_FACTOR");
    QCOMPARE(windowRatio(), factor.isEmpty() ? 1.0 : factor.toDouble());
    QCOMPARE(m_scene->grab().size(), 2 * itemSize * windowRatio());
}

void PixelsRatioTest::aScopeFollowsTheWindow()
{
    KORVEL_COMPARE_PICTURES(texels(windowRatio()), expected(windowRatio()), windowTolerance);
}

void PixelsRatioTest::aScopeMayAskForAnotherRatio_data()
{
    QTest::addColumn<double>("ratio");
    for (const double ratio : {0.5, 1.0, 1.5, 2.0}) {
        QTest::newRow(QByteArray::number(ratio).constData()) << ratio;
    }
}

void PixelsRatioTest::aScopeMayAskForAnotherRatio()
{
    QFETCH(const double, ratio);
    m_scene->find<RenderScope>(QStringLiteral("scope"))->setPixelRatio(ratio);
    showTexels(ratio);
    // At once, for the frame that shows something else anyway.
    m_buffer->update();
    KORVEL_COMPARE_PICTURES(texels(ratio), expected(ratio), windowTolerance);
}

// Without anybody asking for a frame.
void PixelsRatioTest::theRatioMayChange()
{
    auto *scope = m_scene->find<RenderScope>(QStringLiteral("scope"));
    for (const double ratio : {2.0, 1.0, 1.5}) {
        showTexels(ratio);
        scope->setPixelRatio(ratio);
        const QImage picture = expected(ratio);
        QTRY_VERIFY(comparePictures(texels(ratio), picture, windowTolerance).isEmpty());
    }
}

void PixelsRatioTest::withoutAScopeTexelsAreLogicalPixels()
{
    m_scene = nullptr;
    m_scene = std::make_unique<QuickScene>(2 * itemSize);
    m_scene->keepOutOfAtlas();
    m_scene->addPicture(QStringLiteral("photograph"), opaquePicture(pictureSize));
    KORVEL_SHOW(*m_scene, QByteArray(sceneText).replace("RenderScope", "Item"));
    m_buffer = m_scene->find<PixelBuffer>(QStringLiteral("buffer"));
    m_buffer->insertEffect(&m_stack->blur);
    m_buffer->insertEffect(&m_stack->hsv);
    showTexels(1.0);
    KORVEL_COMPARE_PICTURES(texels(1.0), expected(1.0), windowTolerance);
}

KORVEL_TEST_MAIN(PixelsRatioTest)
#include "tst_pixelsratio.moc"
