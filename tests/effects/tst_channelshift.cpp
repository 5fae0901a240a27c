#include "imagefx/effects/ChannelShiftImageEffect.h"
#include "imagefx/render/ImageEffectState.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/TestMain.h"

using namespace ko::imagefx;
using namespace ko::imagefx::test;

class ChannelShiftTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void neutralIsTheIdentity();
    void pixelsByHand_data();
    void pixelsByHand();
    void theShiftIsNotClampedBeforeTheBlend();
    void alphaIsUntouched();
    void extremesDrawSomething();
    void settersStoreAndSignal();
    void onlyZeroIsNeutral();
    void jsonRoundTrip();
    void theStateUploadsWhatTheEffectHolds();

private:
    OffscreenGl m_gl;
};

void ChannelShiftTest::initTestCase()
{
    QVERIFY(m_gl.isValid());
}

void ChannelShiftTest::neutralIsTheIdentity()
{
    ChannelShiftImageEffect effect;
    QVERIFY(effect.isNeutral());
    KORVEL_CHECK(checkIdentity({&effect}, opaquePicture()));
    KORVEL_CHECK(checkIdentity({&effect}, translucentPicture()));
}

void ChannelShiftTest::pixelsByHand_data()
{
    QTest::addColumn<QVector<float>>("shift");
    QTest::addColumn<QVector<int>>("source");
    QTest::addColumn<QVector<int>>("expected");
    const QVector<int> color = {50, 100, 230, 255};
    QTest::newRow("red") << QVector<float>{0.2F, 0.0F, 0.0F} << color
                         << QVector<int>{101, 100, 230, 255};
    QTest::newRow("green") << QVector<float>{0.0F, 0.2F, 0.0F} << color
                           << QVector<int>{50, 151, 230, 255};
    QTest::newRow("blue") << QVector<float>{0.0F, 0.0F, -0.2F} << color
                          << QVector<int>{50, 100, 179, 255};
    QTest::newRow("beyond white and black")
        << QVector<float>{-0.2F, 1.0F, 0.2F} << color << QVector<int>{0, 255, 255, 255};
    QTest::newRow("half of a translucent pixel")
        << QVector<float>{0.5F, -0.5F, 0.0F} << QVector<int>{0, 100, 60, 100}
        << QVector<int>{50, 50, 60, 100};
}

void ChannelShiftTest::pixelsByHand()
{
    QFETCH(QVector<float>, shift);
    QFETCH(QVector<int>, source);
    ChannelShiftImageEffect effect;
    effect.setRed(shift.at(0));
    effect.setGreen(shift.at(1));
    effect.setBlue(shift.at(2));
    QTEST(rendered(&effect, source), "expected");
}

// 0.8 is lifted to 1.4, and the difference is 0.6; from a clamped 1 it would be 0.2.
void ChannelShiftTest::theShiftIsNotClampedBeforeTheBlend()
{
    ChannelShiftImageEffect effect;
    effect.setRed(0.6F);
    effect.setBlendMode(ImageEffect::Difference);
    QCOMPARE(rendered(&effect, {204, 0, 0, 255}), QVector<int>({153, 0, 0, 255}));
}

void ChannelShiftTest::alphaIsUntouched()
{
    ChannelShiftImageEffect effect;
    effect.setRed(0.5F);
    effect.setGreen(-0.5F);
    KORVEL_CHECK(checkAlphaUntouched(&effect));
}

void ChannelShiftTest::extremesDrawSomething()
{
    ChannelShiftImageEffect effect;
    effect.setRed(1.0e6F);
    effect.setGreen(-1.0e6F);
    KORVEL_CHECK(checkAlphaUntouched(&effect));
    QCOMPARE(rendered(&effect, {50, 100, 230, 255}), QVector<int>({255, 0, 230, 255}));
}

void ChannelShiftTest::settersStoreAndSignal()
{
    ChannelShiftImageEffect effect;
    for (const char *property : {"red", "green", "blue"}) {
        QCOMPARE(effect.property(property), QVariant(0.0F));
        KORVEL_CHECK(checkIgnored(&effect, property, -0.0F));
        KORVEL_CHECK(checkSetter(&effect, property, 0.5F, 0.5F));
        KORVEL_CHECK(checkIgnored(&effect, property, 0.500001F));
        KORVEL_CHECK(checkSetter(&effect, property, -75.0F, -75.0F));
        KORVEL_CHECK(checkSetter(&effect, property, 5.0F, 5.0F));
    }
}

void ChannelShiftTest::onlyZeroIsNeutral()
{
    for (const char *property : {"red", "green", "blue"}) {
        ChannelShiftImageEffect effect;
        effect.setProperty(property, 0.000001F);
        QVERIFY(!effect.isNeutral());
        effect.setProperty(property, -0.0F);
        QVERIFY(effect.isNeutral());
    }
}

void ChannelShiftTest::jsonRoundTrip()
{
    ChannelShiftImageEffect effect;
    effect.setRed(-0.35F);
    effect.setGreen(1.75F);
    effect.setBlue(0.1F);
    KORVEL_CHECK(checkJsonRoundTrip(&effect));
}

void ChannelShiftTest::theStateUploadsWhatTheEffectHolds()
{
    ChannelShiftImageEffect effect;
    QCOMPARE(uniformOf(&effect, "u_shift", 3), QVector<float>({0.0F, 0.0F, 0.0F}));
    effect.setRed(0.25F);
    effect.setGreen(-0.75F);
    effect.setBlue(2.0F);
    QCOMPARE(uniformOf(&effect, "u_shift", 3), QVector<float>({0.25F, -0.75F, 2.0F}));
    const QString id = QStringLiteral("ko.orvanto.imageeffect.ChannelShift");
    QCOMPARE(effect.effectId(), id);
    QCOMPARE(effect.currentState()->effectId(), id);
    QVERIFY(!shaderPieceOf(&effect).isEmpty());
    QCOMPARE(shaderPieceOf(&effect),
             ImageEffect::readShader(QStringLiteral("fx_channelshift.frag")));
}

KORVEL_TEST_MAIN(ChannelShiftTest)
#include "tst_channelshift.moc"
