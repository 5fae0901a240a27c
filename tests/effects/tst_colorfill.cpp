#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/render/ImageEffectState.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/TestMain.h"

using namespace ko::imagefx;
using namespace ko::imagefx::test;

class ColorFillTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void itIsNeverNeutral();
    void pixelsByHand_data();
    void pixelsByHand();
    void alphaIsUntouched();
    void anInvalidColorDrawsBlack();
    void setterStoresAndSignals();
    void jsonRoundTrip();
    void theStateUploadsWhatTheEffectHolds();

private:
    OffscreenGl m_gl;
};

void ColorFillTest::initTestCase()
{
    QVERIFY(m_gl.isValid());
}

void ColorFillTest::itIsNeverNeutral()
{
    ColorFillImageEffect effect;
    QVERIFY(!effect.isNeutral());
    effect.setColor(Qt::transparent);
    QVERIFY(!effect.isNeutral());
    effect.setColor(QColor());
    QVERIFY(!effect.isNeutral());
    QVERIFY(!checkIdentity({&effect}, opaquePicture()).isEmpty());
}

void ColorFillTest::pixelsByHand_data()
{
    QTest::addColumn<QColor>("color");
    QTest::addColumn<float>("alpha");
    QTest::addColumn<QVector<int>>("source");
    QTest::addColumn<QVector<int>>("expected");
    const QVector<int> color = {50, 100, 230, 255};
    QTest::newRow("the default is red")
        << ColorFillImageEffect().color() << 1.0F << color << QVector<int>{255, 0, 0, 255};
    QTest::newRow("any colour") << QColor(18, 130, 201) << 1.0F << color
                                << QVector<int>{18, 130, 201, 255};
    QTest::newRow("the colour's alpha is not used")
        << QColor(0, 0, 255, 0) << 1.0F << color << QVector<int>{0, 0, 255, 255};
    QTest::newRow("half the effect")
        << QColor(150, 0, 30) << 0.5F << color << QVector<int>{100, 50, 130, 255};
    QTest::newRow("premultiplied by the source's alpha")
        << QColor(255, 102, 0) << 1.0F << QVector<int>{10, 20, 30, 100}
        << QVector<int>{100, 40, 0, 100};
    QTest::newRow("a clear pixel stays clear")
        << QColor(255, 255, 255) << 1.0F << QVector<int>{0, 0, 0, 0} << QVector<int>{0, 0, 0, 0};
}

void ColorFillTest::pixelsByHand()
{
    QFETCH(QColor, color);
    QFETCH(float, alpha);
    QFETCH(QVector<int>, source);
    ColorFillImageEffect effect;
    effect.setColor(color);
    effect.setAlpha(alpha);
    QTEST(rendered(&effect, source), "expected");
}

void ColorFillTest::alphaIsUntouched()
{
    ColorFillImageEffect effect;
    KORVEL_CHECK(checkAlphaUntouched(&effect));
    effect.setColor(Qt::transparent);
    KORVEL_CHECK(checkAlphaUntouched(&effect));
}

void ColorFillTest::anInvalidColorDrawsBlack()
{
    ColorFillImageEffect effect;
    effect.setColor(QColor());
    QCOMPARE(rendered(&effect, {50, 100, 230, 255}), QVector<int>({0, 0, 0, 255}));
}

void ColorFillTest::setterStoresAndSignals()
{
    ColorFillImageEffect effect;
    QCOMPARE(effect.color(), QColor(Qt::red));
    KORVEL_CHECK(checkIgnored(&effect, "color", QColor(255, 0, 0)));
    const QColor blue(0, 0, 255);
    KORVEL_CHECK(checkSetter(&effect, "color", blue, blue));
    // Equal to the eye, but another colour.
    const QColor clearBlue(0, 0, 255, 0);
    KORVEL_CHECK(checkSetter(&effect, "color", clearBlue, clearBlue));
    KORVEL_CHECK(checkSetter(&effect, "color", clearBlue.toHsv(), clearBlue.toHsv()));
}

void ColorFillTest::jsonRoundTrip()
{
    ColorFillImageEffect effect;
    effect.setColor(QColor(18, 130, 201));
    KORVEL_CHECK(checkJsonRoundTrip(&effect));
}

void ColorFillTest::theStateUploadsWhatTheEffectHolds()
{
    ColorFillImageEffect effect;
    QCOMPARE(uniformOf(&effect, "u_color", 4), QVector<float>({1.0F, 0.0F, 0.0F, 1.0F}));
    effect.setColor(QColor(0, 51, 255, 102));
    // The pieces use no alpha, so a driver may leave the fourth component out.
    QCOMPARE(uniformOf(&effect, "u_color", 4).mid(0, 3), QVector<float>({0.0F, 0.2F, 1.0F}));
    const QString id = QStringLiteral("ko.orvanto.imageeffect.ColorFill");
    QCOMPARE(effect.effectId(), id);
    QCOMPARE(effect.currentState()->effectId(), id);
    QVERIFY(!shaderPieceOf(&effect).isEmpty());
    QCOMPARE(shaderPieceOf(&effect), ImageEffect::readShader(QStringLiteral("fx_colorfill.frag")));
}

KORVEL_TEST_MAIN(ColorFillTest)
#include "tst_colorfill.moc"
