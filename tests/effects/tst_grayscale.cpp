#include "imagefx/effects/GrayScaleImageEffect.h"
#include "imagefx/render/ImageEffectState.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/TestMain.h"

#include <algorithm>
#include <cmath>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

void setWeights(GrayScaleImageEffect &effect, const QVector<float> &weights)
{
    effect.setRed(weights.at(0));
    effect.setGreen(weights.at(1));
    effect.setBlue(weights.at(2));
}

// Opens what subclasses see.
class OpenGrayScale : public GrayScaleImageEffect
{
public:
    using GrayScaleImageEffect::fragmentShaderCode;
};

} // namespace

class GrayScaleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void itIsNeverNeutral();
    void pixelsByHand_data();
    void pixelsByHand();
    void alphaIsUntouched();
    void noWeightAtAllIsDrawnWithoutAnError();
    void settersClampStoreAndSignal();
    void jsonRoundTrip();
    void theWeightsAreScaledToAddUpToOne();
    void theStateHasTheEffectsIdAndPiece();

private:
    OffscreenGl m_gl;
};

void GrayScaleTest::initTestCase()
{
    QVERIFY(m_gl.isValid());
}

void GrayScaleTest::itIsNeverNeutral()
{
    GrayScaleImageEffect effect;
    QVERIFY(!effect.isNeutral());
    setWeights(effect, {0.0F, 0.0F, 0.0F});
    QVERIFY(!effect.isNeutral());
    setWeights(effect, {1.0F, 0.0F, 0.0F});
    QVERIFY(!checkIdentity({&effect}, opaquePicture()).isEmpty());
}

void GrayScaleTest::pixelsByHand_data()
{
    QTest::addColumn<QVector<float>>("weights");
    QTest::addColumn<QVector<int>>("source");
    QTest::addColumn<QVector<int>>("expected");
    const QVector<int> color = {50, 100, 230, 255};
    // 0.344 * 50 + 0.5 * 100 + 0.156 * 230 = 103.08
    QTest::newRow("default") << QVector<float>{0.344F, 0.5F, 0.156F} << color
                             << QVector<int>{103, 103, 103, 255};
    QTest::newRow("red alone") << QVector<float>{1.0F, 0.0F, 0.0F} << color
                               << QVector<int>{50, 50, 50, 255};
    QTest::newRow("green alone") << QVector<float>{0.0F, 0.25F, 0.0F} << color
                                 << QVector<int>{100, 100, 100, 255};
    QTest::newRow("blue alone") << QVector<float>{0.0F, 0.0F, 0.01F} << color
                                << QVector<int>{230, 230, 230, 255};
    // (50 + 3 * 100) / 4 = 87.5, with room for the rounding of either neighbour: 88.25
    QTest::newRow("one to three") << QVector<float>{0.25F, 0.75F, 0.0F}
                                  << QVector<int>{53, 100, 230, 255}
                                  << QVector<int>{88, 88, 88, 255};
    QTest::newRow("white stays white")
        << QVector<float>{0.3F, 0.9F, 0.7F} << QVector<int>{255, 255, 255, 255}
        << QVector<int>{255, 255, 255, 255};
    // (0.4 + 0.6) / 2 of 100
    QTest::newRow("the colour is un-premultiplied first")
        << QVector<float>{0.5F, 0.5F, 0.0F} << QVector<int>{40, 60, 0, 100}
        << QVector<int>{50, 50, 50, 100};
}

void GrayScaleTest::pixelsByHand()
{
    QFETCH(QVector<float>, weights);
    QFETCH(QVector<int>, source);
    GrayScaleImageEffect effect;
    setWeights(effect, weights);
    QTEST(rendered(&effect, source), "expected");
}

void GrayScaleTest::alphaIsUntouched()
{
    GrayScaleImageEffect effect;
    KORVEL_CHECK(checkAlphaUntouched(&effect));
}

// The colours are undefined then; the alpha is not.
void GrayScaleTest::noWeightAtAllIsDrawnWithoutAnError()
{
    GrayScaleImageEffect effect;
    setWeights(effect, {0.0F, 0.0F, 0.0F});
    const QVector<float> factors = uniformOf(&effect, "u_factors", 3);
    QVERIFY(std::none_of(factors.begin(), factors.end(), [](float f) { return std::isfinite(f); }));
    constexpr double anything = 255.0;
    KORVEL_CHECK(checkAlphaUntouched(&effect, anything));
}

void GrayScaleTest::settersClampStoreAndSignal()
{
    GrayScaleImageEffect effect;
    QCOMPARE(effect.red(), 0.344F);
    QCOMPARE(effect.green(), 0.5F);
    QCOMPARE(effect.blue(), 0.156F);
    for (const char *property : {"red", "green", "blue"}) {
        KORVEL_CHECK(checkSetter(&effect, property, 0.75F, 0.75F));
        KORVEL_CHECK(checkIgnored(&effect, property, 0.750001F));
        KORVEL_CHECK(checkSetter(&effect, property, -0.2F, 0.0F));
        KORVEL_CHECK(checkIgnored(&effect, property, -5.0F));
        KORVEL_CHECK(checkSetter(&effect, property, 1.5F, 1.0F));
        KORVEL_CHECK(checkIgnored(&effect, property, 99.0F));
    }
}

void GrayScaleTest::jsonRoundTrip()
{
    GrayScaleImageEffect effect;
    setWeights(effect, {0.1F, 0.85F, 0.3F});
    KORVEL_CHECK(checkJsonRoundTrip(&effect));
}

void GrayScaleTest::theWeightsAreScaledToAddUpToOne()
{
    GrayScaleImageEffect effect;
    const QVector<float> defaults = uniformOf(&effect, "u_factors", 3);
    QCOMPARE(defaults, QVector<float>({0.344F, 0.5F, 0.156F}));
    setWeights(effect, {1.0F, 1.0F, 0.5F});
    QCOMPARE(uniformOf(&effect, "u_factors", 3), QVector<float>({0.4F, 0.4F, 0.2F}));
}

void GrayScaleTest::theStateHasTheEffectsIdAndPiece()
{
    OpenGrayScale effect;
    const QString id = QStringLiteral("ko.orvanto.imageeffect.GrayScale");
    QCOMPARE(effect.effectId(), id);
    QCOMPARE(effect.currentState()->effectId(), id);
    QVERIFY(!shaderPieceOf(&effect).isEmpty());
    QCOMPARE(shaderPieceOf(&effect), ImageEffect::readShader(QStringLiteral("fx_grayscale.frag")));
    QCOMPARE(effect.fragmentShaderCode(), shaderPieceOf(&effect));
}

KORVEL_TEST_MAIN(GrayScaleTest)
#include "tst_grayscale.moc"
