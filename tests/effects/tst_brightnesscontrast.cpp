#include "imagefx/effects/BrightnessContrastImageEffect.h"
#include "imagefx/render/ImageEffectState.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/TestMain.h"

using namespace ko::imagefx;
using namespace ko::imagefx::test;

class BrightnessContrastTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void neutralIsTheIdentity();
    void pixelsByHand_data();
    void pixelsByHand();
    void alphaIsUntouched();
    void extremesDrawSomething();
    void settersStoreAndSignal();
    void onlyZeroIsNeutral();
    void jsonRoundTrip();
    void theStateUploadsWhatTheEffectHolds();

private:
    OffscreenGl m_gl;
};

void BrightnessContrastTest::initTestCase()
{
    QVERIFY(m_gl.isValid());
}

void BrightnessContrastTest::neutralIsTheIdentity()
{
    BrightnessContrastImageEffect effect;
    QVERIFY(effect.isNeutral());
    KORVEL_CHECK(checkIdentity({&effect}, opaquePicture()));
    KORVEL_CHECK(checkIdentity({&effect}, translucentPicture()));
}

void BrightnessContrastTest::pixelsByHand_data()
{
    QTest::addColumn<float>("brightness");
    QTest::addColumn<float>("contrast");
    QTest::addColumn<QVector<int>>("source");
    QTest::addColumn<QVector<int>>("expected");
    const QVector<int> color = {50, 100, 230, 255};
    QTest::newRow("brightness adds") << 0.2F << 0.0F << color << QVector<int>{101, 151, 255, 255};
    QTest::newRow("brightness takes") << -0.2F << 0.0F << color << QVector<int>{0, 49, 179, 255};
    QTest::newRow("contrast -1 is middle grey")
        << 0.0F << -1.0F << color << QVector<int>{128, 128, 128, 255};
    // 1.0158730 * 1.5 / 0.5158730 = 2.9538 times the distance from 127.5
    QTest::newRow("contrast 0.5 spreads")
        << 0.0F << 0.5F << QVector<int>{117, 127, 150, 255} << QVector<int>{96, 126, 194, 255};
    // 1.0158730 * 3 / -0.9841270 = -3.0968 times the distance from 127.5
    QTest::newRow("contrast 2 inverts")
        << 0.0F << 2.0F << QVector<int>{117, 127, 150, 255} << QVector<int>{160, 129, 58, 255};
    // (127 + 25.5 - 127.5) * 2.9538 + 127.5, not (127 - 127.5) * 2.9538 + 127.5 + 25.5
    QTest::newRow("brightness comes before contrast")
        << 0.1F << 0.5F << QVector<int>{127, 127, 127, 255} << QVector<int>{201, 201, 201, 255};
    // 0.5, 0 and 1 of 100; nothing clamps 1.2 before it is premultiplied again.
    QTest::newRow("the colour is un-premultiplied first")
        << 0.2F << 0.0F << QVector<int>{50, 0, 100, 100} << QVector<int>{70, 20, 120, 100};
}

void BrightnessContrastTest::pixelsByHand()
{
    QFETCH(float, brightness);
    QFETCH(float, contrast);
    QFETCH(QVector<int>, source);
    BrightnessContrastImageEffect effect;
    effect.setBrightness(brightness);
    effect.setContrast(contrast);
    QTEST(rendered(&effect, source), "expected");
}

void BrightnessContrastTest::alphaIsUntouched()
{
    BrightnessContrastImageEffect effect;
    effect.setBrightness(0.4F);
    effect.setContrast(0.7F);
    KORVEL_CHECK(checkAlphaUntouched(&effect));
}

// Just below a contrast of 259.047619 / 255 colours become black or white. There the factor is
// infinite, of which every driver makes what it likes.
void BrightnessContrastTest::extremesDrawSomething()
{
    BrightnessContrastImageEffect effect;
    effect.setContrast(259.047619F / 255.0F);
    constexpr double anything = 255.0;
    KORVEL_CHECK(checkAlphaUntouched(&effect, anything));
    effect.setContrast(1.01F);
    KORVEL_CHECK(checkAlphaUntouched(&effect));
    QCOMPARE(rendered(&effect, {40, 200, 255, 255}), QVector<int>({0, 255, 255, 255}));
    effect.setContrast(0.0F);
    effect.setBrightness(1.0e6F);
    QCOMPARE(rendered(&effect, {0, 0, 0, 255}), QVector<int>({255, 255, 255, 255}));
    effect.setBrightness(-1.0e6F);
    QCOMPARE(rendered(&effect, {255, 255, 255, 255}), QVector<int>({0, 0, 0, 255}));
}

void BrightnessContrastTest::settersStoreAndSignal()
{
    BrightnessContrastImageEffect effect;
    for (const char *property : {"brightness", "contrast"}) {
        QCOMPARE(effect.property(property), QVariant(0.0F));
        KORVEL_CHECK(checkIgnored(&effect, property, -0.0F));
        KORVEL_CHECK(checkSetter(&effect, property, 0.5F, 0.5F));
        KORVEL_CHECK(checkIgnored(&effect, property, 0.500001F));
        KORVEL_CHECK(checkSetter(&effect, property, -75.0F, -75.0F));
        KORVEL_CHECK(checkSetter(&effect, property, 5.0F, 5.0F));
    }
}

void BrightnessContrastTest::onlyZeroIsNeutral()
{
    for (const char *property : {"brightness", "contrast"}) {
        BrightnessContrastImageEffect effect;
        effect.setProperty(property, 0.000001F);
        QVERIFY(!effect.isNeutral());
        effect.setProperty(property, -0.0F);
        QVERIFY(effect.isNeutral());
    }
}

void BrightnessContrastTest::jsonRoundTrip()
{
    BrightnessContrastImageEffect effect;
    effect.setBrightness(-0.35F);
    effect.setContrast(1.75F);
    KORVEL_CHECK(checkJsonRoundTrip(&effect));
}

void BrightnessContrastTest::theStateUploadsWhatTheEffectHolds()
{
    BrightnessContrastImageEffect effect;
    QCOMPARE(uniformOf(&effect, "u_brightness", 1), QVector<float>({0.0F}));
    effect.setBrightness(0.25F);
    effect.setContrast(-0.75F);
    QCOMPARE(uniformOf(&effect, "u_brightness", 1), QVector<float>({0.25F}));
    QCOMPARE(uniformOf(&effect, "u_contrast", 1), QVector<float>({-0.75F}));
    const QString id = QStringLiteral("ko.orvanto.imageeffect.BrightnessContrast");
    QCOMPARE(effect.effectId(), id);
    QCOMPARE(effect.currentState()->effectId(), id);
    QVERIFY(!shaderPieceOf(&effect).isEmpty());
    QCOMPARE(shaderPieceOf(&effect),
             ImageEffect::readShader(QStringLiteral("fx_brightnesscontrast.frag")));
}

KORVEL_TEST_MAIN(BrightnessContrastTest)
#include "tst_brightnesscontrast.moc"
