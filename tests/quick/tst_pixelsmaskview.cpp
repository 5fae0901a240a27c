#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/effects/SharpenImageEffect.h"
#include "imagefx/model/DistanceAlphaMask.h"
#include "imagefx/quick/PixelBuffer.h"
#include "tests/quick/MaskModel.h"
#include "tests/quick/OffscreenReference.h"
#include "tests/quick/QuickScene.h"
#include "tests/support/EffectCases.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/EffectTester.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TestMain.h"

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

using Effect = std::unique_ptr<ImageEffect>;

// The mask is rounded to 8 bits, then half of it decides over a picture that is rounded, too.
constexpr double overlayTolerance = 1.0;

const MaskCase bands = maskCases(ModelMaskKind::Distance).first();

Effect hsv()
{
    auto effect = std::make_unique<HSVImageEffect>();
    effect->setHue(0.3F);
    return effect;
}

std::unique_ptr<AlphaMask> flatMask(float value)
{
    auto mask = std::make_unique<DistanceAlphaMask>();
    mask->addGradientStop(0.0F, value);
    mask->addGradientStop(1.0F, value);
    return mask;
}

// One of every kind, batches and the effects of two passes among them, with the tables that get
// lost when somebody else uses their units.
QMap<QString, Effect (*)()> oneOfEveryKind()
{
    return {{QStringLiteral("Blur"),
             []() -> Effect {
                 auto effect = std::make_unique<BlurImageEffect>();
                 effect->setRadius(5.3F);
                 return effect;
             }},
            {QStringLiteral("Sharpen"),
             []() -> Effect {
                 auto effect = std::make_unique<SharpenImageEffect>();
                 effect->setStrength(1.0F);
                 effect->setRadius(3.3F);
                 return effect;
             }},
            {QStringLiteral("Batch"), []() -> Effect {
                 auto effect = std::make_unique<BatchImageEffect>();
                 const QStringList kinds = {QStringLiteral("Exposure"), QStringLiteral("LUT"),
                                            QStringLiteral("SelectiveSaturation")};
                 QList<ImageEffect *> members;
                 for (const QString &kind : kinds) {
                     members.append(effectCases(kind).last().create().release());
                     members.last()->setParent(effect.get());
                 }
                 effect->setImageEffectList(members);
                 return effect;
             }}};
}

} // namespace

// The red overlay that shows the mask of an effect.
class PixelsMaskViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void aMaskOfOneShowsNoRed();
    void aMaskOfZeroCoversHalfInRed();
    void theOverlayLiesOverThePicture_data();
    void theOverlayLiesOverThePicture();
    void theMaskSeesThePictureBeforeItsEffect_data();
    void theMaskSeesThePictureBeforeItsEffect();
    void theOverlayOfATranslucentPicture();
    void theOverlayFollowsTheEffect();
    void aSkippedEffectShowsNoOverlay();
    void anEffectWithoutMaskShowsNoOverlay();
    void aRemovedEffectShowsNoOverlay();
    void anEffectThatIsNotListedIsRefused();
    void disabledEffectsShowNoOverlay();
    void theMaskItemDoesNotCutTheOverlay();

private:
    void showPicture(const QImage &picture);
    QImage grab() { return m_scene->grab(); }

    std::unique_ptr<QuickScene> m_scene;
    PixelBuffer *m_buffer = nullptr;
};

void PixelsMaskViewTest::init()
{
    showPicture(opaquePicture());
}

void PixelsMaskViewTest::cleanup()
{
    QCOMPARE(m_scene->warnings(), QStringList());
    m_scene.reset();
}

void PixelsMaskViewTest::showPicture(const QImage &picture)
{
    m_scene.reset();
    m_scene = std::make_unique<QuickScene>(picture.size());
    m_scene->keepOutOfAtlas();
    m_scene->addPicture(QStringLiteral("photograph"), picture);
    KORVEL_SHOW(*m_scene, R"(
        Item {
            Image { id: photograph; source: 'image://test/photograph'; visible: false }
            PixelBuffer { objectName: 'buffer'; anchors.fill: parent; sourceItem: photograph }
            Rectangle {
                objectName: 'cut'; width: 30; height: 47; visible: false; layer.enabled: true
                color: 'black'
            }
        })");
    m_buffer = m_scene->find<PixelBuffer>(QStringLiteral("buffer"));
    QVERIFY(m_buffer != nullptr);
}

void PixelsMaskViewTest::aMaskOfOneShowsNoRed()
{
    const auto mask = flatMask(1.0F);
    const Effect effect = hsv();
    effect->setAlphaMask(mask.get());
    m_buffer->insertEffect(effect.get());
    const QImage plain = grab();
    m_buffer->setMaskViewLayer(effect.get());
    KORVEL_COMPARE_PICTURES(grab(), plain, 0.0);
}

void PixelsMaskViewTest::aMaskOfZeroCoversHalfInRed()
{
    const auto mask = flatMask(0.0F);
    const Effect effect = hsv();
    effect->setAlphaMask(mask.get());
    m_buffer->insertEffect(effect.get());
    m_buffer->setMaskViewLayer(effect.get());
    const QImage picture = grab();
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            QVERIFY(picture.pixelColor(x, y).red() >= 127);
            QVERIFY(picture.pixelColor(x, y).green() <= 128);
        }
    }
    KORVEL_COMPARE_PICTURES(picture,
                            underOverlay(opaquePicture(),
                                         [](int, int) {
                                             return LevelRange{0.0, 0.0};
                                         }),
                            overlayTolerance);
}

void PixelsMaskViewTest::theOverlayLiesOverThePicture_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString &kind : effectKinds() + oneOfEveryKind().keys()) {
        QTest::newRow(qPrintable(kind)) << kind;
    }
}

void PixelsMaskViewTest::theOverlayLiesOverThePicture()
{
    QFETCH(const QString, kind);
    const std::unique_ptr<AlphaMask> mask = bands.create();
    const auto special = oneOfEveryKind().value(kind, nullptr);
    const Effect effect = special != nullptr ? special() : effectCases(kind).last().create();
    effect->setAlphaMask(mask.get());
    const Effect before = hsv();
    m_buffer->insertEffect(before.get());
    m_buffer->insertEffect(effect.get());
    const QImage plain = grab();
    m_buffer->setMaskViewLayer(effect.get());
    // The mask goes by the place alone.
    const ExpectedPixel gathered = modelMaskPicture(bands.model(), opaquePicture());
    const auto share = [&gathered](int x, int y) { return gathered(x, y)[0]; };
    KORVEL_COMPARE_PICTURES(grab(), underOverlay(plain, share), overlayTolerance);
    m_buffer->setMaskViewLayer(nullptr);
    KORVEL_COMPARE_PICTURES(grab(), plain, 0.0);
}

void PixelsMaskViewTest::theMaskSeesThePictureBeforeItsEffect_data()
{
    QTest::addColumn<int>("maskKind");
    QTest::newRow("hue") << int(ModelMaskKind::Hue);
    QTest::newRow("luminance") << int(ModelMaskKind::Luminance);
}

void PixelsMaskViewTest::theMaskSeesThePictureBeforeItsEffect()
{
    QFETCH(const int, maskKind);
    const MaskCase maskCase = maskCases(ModelMaskKind(maskKind)).first();
    const std::unique_ptr<AlphaMask> mask = maskCase.create();
    const Effect effects[] = {hsv(), hsv(), hsv()};
    effects[1]->setAlphaMask(mask.get());
    for (const Effect &effect : effects) {
        m_buffer->insertEffect(effect.get());
    }
    const QImage plain = grab();
    m_buffer->setMaskViewLayer(effects[1].get());
    const Effect first = hsv();
    const QImage seen = OffscreenReference().draw({first.get()}, opaquePicture());
    const ExpectedPixel gathered = modelMaskPicture(maskCase.model(), seen);
    const auto share = [&gathered](int x, int y) { return gathered(x, y)[0]; };
    KORVEL_COMPARE_PICTURES(grab(), underOverlay(plain, share), overlayTolerance);
}

void PixelsMaskViewTest::theOverlayOfATranslucentPicture()
{
    showPicture(translucentPicture());
    const std::unique_ptr<AlphaMask> mask = bands.create();
    const Effect effect = hsv();
    effect->setAlphaMask(mask.get());
    m_buffer->insertEffect(effect.get());
    const QImage plain = grab();
    m_buffer->setMaskViewLayer(effect.get());
    const ExpectedPixel gathered = modelMaskPicture(bands.model(), opaquePicture());
    const auto share = [&gathered](int x, int y) { return gathered(x, y)[0]; };
    KORVEL_COMPARE_PICTURES(grab(), underOverlay(plain, share), overlayTolerance);
}

void PixelsMaskViewTest::theOverlayFollowsTheEffect()
{
    const auto mask = flatMask(0.0F);
    const Effect effect = hsv();
    effect->setAlphaMask(mask.get());
    m_buffer->insertEffect(effect.get());
    m_buffer->setMaskViewLayer(effect.get());
    const QImage red = grab();
    const auto other = flatMask(1.0F);
    effect->setAlphaMask(other.get());
    const Effect expected = hsv();
    KORVEL_COMPARE_PICTURES(grab(), OffscreenReference().draw({expected.get()}, opaquePicture()),
                            windowTolerance);
    effect->setAlphaMask(mask.get());
    KORVEL_COMPARE_PICTURES(grab(), red, 0.0);
}

void PixelsMaskViewTest::aSkippedEffectShowsNoOverlay()
{
    const auto mask = flatMask(0.0F);
    const Effect effect = hsv();
    effect->setAlphaMask(mask.get());
    m_buffer->insertEffect(effect.get());
    m_buffer->setMaskViewLayer(effect.get());
    effect->setEnabled(false);
    KORVEL_COMPARE_PICTURES(grab(), opaquePicture(), 0.0);
    effect->setEnabled(true);
    QVERIFY(grab() != premultiplied(opaquePicture()));
    effect->setEnabled(false);
    KORVEL_COMPARE_PICTURES(grab(), opaquePicture(), 0.0);
}

void PixelsMaskViewTest::anEffectWithoutMaskShowsNoOverlay()
{
    const Effect effect = hsv();
    m_buffer->insertEffect(effect.get());
    const QImage plain = grab();
    m_buffer->setMaskViewLayer(effect.get());
    QCOMPARE(m_buffer->maskViewLayer(), effect.get());
    KORVEL_COMPARE_PICTURES(grab(), plain, 0.0);
}

void PixelsMaskViewTest::aRemovedEffectShowsNoOverlay()
{
    const auto mask = flatMask(0.0F);
    const Effect effect = hsv();
    effect->setAlphaMask(mask.get());
    m_buffer->insertEffect(effect.get());
    m_buffer->setMaskViewLayer(effect.get());
    QVERIFY(grab() != premultiplied(opaquePicture()));
    m_buffer->removeEffect(effect.get());
    KORVEL_COMPARE_PICTURES(grab(), opaquePicture(), 0.0);
}

void PixelsMaskViewTest::anEffectThatIsNotListedIsRefused()
{
    const auto mask = flatMask(0.0F);
    const Effect listed = hsv();
    const Effect other = hsv();
    listed->setAlphaMask(mask.get());
    other->setAlphaMask(mask.get());
    m_buffer->insertEffect(listed.get());
    const QImage plain = grab();
    m_buffer->setMaskViewLayer(listed.get());
    QVERIFY(grab() != plain);
    m_buffer->setMaskViewLayer(other.get());
    KORVEL_COMPARE_PICTURES(grab(), plain, 0.0);
}

void PixelsMaskViewTest::disabledEffectsShowNoOverlay()
{
    const auto mask = flatMask(0.0F);
    const Effect effect = hsv();
    effect->setAlphaMask(mask.get());
    m_buffer->insertEffect(effect.get());
    m_buffer->setMaskViewLayer(effect.get());
    m_buffer->setImageEffectsEnabled(false);
    KORVEL_COMPARE_PICTURES(grab(), opaquePicture(), 0.0);
}

void PixelsMaskViewTest::theMaskItemDoesNotCutTheOverlay()
{
    const auto mask = flatMask(0.0F);
    const Effect effect = hsv();
    effect->setAlphaMask(mask.get());
    m_buffer->insertEffect(effect.get());
    m_buffer->setMask(m_scene->item(QStringLiteral("cut")));
    const QImage cut = grab();
    m_buffer->setMaskViewLayer(effect.get());
    KORVEL_COMPARE_PICTURES(grab(),
                            underOverlay(cut,
                                         [](int, int) {
                                             return LevelRange{0.0, 0.0};
                                         }),
                            overlayTolerance);
}

KORVEL_TEST_MAIN(PixelsMaskViewTest)
#include "tst_pixelsmaskview.moc"
