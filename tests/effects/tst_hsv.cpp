#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/render/ImageEffectState.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TestMain.h"

using namespace ko::imagefx;
using namespace ko::imagefx::test;

class HsvTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void neutralIsTheIdentity();
    void pixelsByHand_data();
    void pixelsByHand();
    void turningTwiceByHalfACircleIsTheIdentity();
    void alphaIsUntouched();
    void extremesDrawSomething();
    void settersClampStoreAndSignal();
    void onlyZeroIsNeutral();
    void jsonRoundTrip();
    void theStateUploadsWhatTheEffectHolds();

private:
    OffscreenGl m_gl;
};

void HsvTest::initTestCase()
{
    QVERIFY(m_gl.isValid());
}

void HsvTest::neutralIsTheIdentity()
{
    HSVImageEffect effect;
    QVERIFY(effect.isNeutral());
    KORVEL_CHECK(checkIdentity({&effect}, opaquePicture()));
    KORVEL_CHECK(checkIdentity({&effect}, translucentPicture()));
}

void HsvTest::pixelsByHand_data()
{
    QTest::addColumn<QVector<float>>("hsv");
    QTest::addColumn<QVector<int>>("source");
    QTest::addColumn<QVector<int>>("expected");
    QTest::newRow("half a circle is the complement")
        << QVector<float>{1.0F, 0.0F, 0.0F} << QVector<int>{255, 0, 0, 255}
        << QVector<int>{0, 255, 255, 255};
    // Two thirds of half a circle: red becomes green, green blue, blue red.
    QTest::newRow("a third of a circle")
        << QVector<float>{2.0F / 3.0F, 0.0F, 0.0F} << QVector<int>{200, 50, 80, 255}
        << QVector<int>{80, 200, 50, 255};
    QTest::newRow("a third of a circle back")
        << QVector<float>{-2.0F / 3.0F, 0.0F, 0.0F} << QVector<int>{200, 50, 80, 255}
        << QVector<int>{50, 80, 200, 255};
    // 0.2125 * 50 + 0.7154 * 100 + 0.0721 * 230 = 98.748
    QTest::newRow("saturation -1 is the luma")
        << QVector<float>{0.0F, -1.0F, 0.0F} << QVector<int>{50, 100, 230, 255}
        << QVector<int>{99, 99, 99, 255};
    // Luma of (100, 120, 140) is 117.192: twice the distance from it.
    QTest::newRow("saturation 1 doubles the distance from the luma")
        << QVector<float>{0.0F, 1.0F, 0.0F} << QVector<int>{100, 120, 140, 255}
        << QVector<int>{83, 123, 163, 255};
    QTest::newRow("value 0.5 is half way to white")
        << QVector<float>{0.0F, 0.0F, 0.5F} << QVector<int>{51, 101, 231, 255}
        << QVector<int>{153, 178, 243, 255};
    QTest::newRow("value -0.5 is half way to black")
        << QVector<float>{0.0F, 0.0F, -0.5F} << QVector<int>{50, 100, 230, 255}
        << QVector<int>{25, 50, 115, 255};
    QTest::newRow("greys have no hue to turn")
        << QVector<float>{0.37F, 0.0F, 0.0F} << QVector<int>{77, 77, 77, 255}
        << QVector<int>{77, 77, 77, 255};
}

void HsvTest::pixelsByHand()
{
    QFETCH(QVector<float>, hsv);
    QFETCH(QVector<int>, source);
    HSVImageEffect effect;
    effect.setHue(hsv.at(0));
    effect.setSaturation(hsv.at(1));
    effect.setValue(hsv.at(2));
    QTEST(rendered(&effect, source), "expected");
}

// Through 256 levels in between; the ranges of these colours survive that.
void HsvTest::turningTwiceByHalfACircleIsTheIdentity()
{
    HSVImageEffect there;
    there.setHue(1.0F);
    HSVImageEffect back;
    back.setHue(-1.0F);
    constexpr double oneLevelEachTime = 1.0;
    KORVEL_CHECK(checkPicture({&there, &back}, opaquePicture(), opaquePicture(), oneLevelEachTime));
}

void HsvTest::alphaIsUntouched()
{
    HSVImageEffect effect;
    effect.setHue(0.37F);
    effect.setSaturation(0.5F);
    effect.setValue(0.3F);
    KORVEL_CHECK(checkAlphaUntouched(&effect));
}

void HsvTest::extremesDrawSomething()
{
    HSVImageEffect effect;
    effect.setHue(1.0F);
    effect.setSaturation(1.0F);
    effect.setValue(1.0F);
    KORVEL_CHECK(checkAlphaUntouched(&effect));
    QCOMPARE(rendered(&effect, {50, 100, 230, 255}), QVector<int>({255, 255, 255, 255}));
    effect.setHue(-1.0F);
    effect.setSaturation(-1.0F);
    effect.setValue(-1.0F);
    QCOMPARE(rendered(&effect, {50, 100, 230, 255}), QVector<int>({0, 0, 0, 255}));
    QCOMPARE(rendered(&effect, {0, 0, 0, 255}), QVector<int>({0, 0, 0, 255}));
}

void HsvTest::settersClampStoreAndSignal()
{
    HSVImageEffect effect;
    for (const char *property : {"hue", "saturation", "value"}) {
        QCOMPARE(effect.property(property), QVariant(0.0F));
        KORVEL_CHECK(checkIgnored(&effect, property, -0.0F));
        KORVEL_CHECK(checkSetter(&effect, property, 0.5F, 0.5F));
        KORVEL_CHECK(checkIgnored(&effect, property, 0.500001F));
        KORVEL_CHECK(checkSetter(&effect, property, 5.0F, 1.0F));
        KORVEL_CHECK(checkIgnored(&effect, property, 7.0F));
        KORVEL_CHECK(checkSetter(&effect, property, -5.0F, -1.0F));
        KORVEL_CHECK(checkIgnored(&effect, property, -1.5F));
    }
}

void HsvTest::onlyZeroIsNeutral()
{
    for (const char *property : {"hue", "saturation", "value"}) {
        HSVImageEffect effect;
        effect.setProperty(property, 0.000001F);
        QVERIFY(!effect.isNeutral());
        effect.setProperty(property, -0.0F);
        QVERIFY(effect.isNeutral());
    }
}

void HsvTest::jsonRoundTrip()
{
    HSVImageEffect effect;
    effect.setHue(-0.35F);
    effect.setSaturation(0.75F);
    effect.setValue(0.1F);
    KORVEL_CHECK(checkJsonRoundTrip(&effect));
}

void HsvTest::theStateUploadsWhatTheEffectHolds()
{
    HSVImageEffect effect;
    QCOMPARE(uniformOf(&effect, "u_parameters", 3), QVector<float>({0.0F, 0.0F, 0.0F}));
    effect.setHue(0.25F);
    effect.setSaturation(-0.75F);
    effect.setValue(1.0F);
    QCOMPARE(uniformOf(&effect, "u_parameters", 3), QVector<float>({0.25F, -0.75F, 1.0F}));
    const QString id = QStringLiteral("ko.orvanto.imageeffect.HSV");
    QCOMPARE(effect.effectId(), id);
    QCOMPARE(effect.currentState()->effectId(), id);
    QVERIFY(!shaderPieceOf(&effect).isEmpty());
    QCOMPARE(shaderPieceOf(&effect), ImageEffect::readShader(QStringLiteral("fx_hsv.frag")));
}

KORVEL_TEST_MAIN(HsvTest)
#include "tst_hsv.moc"
