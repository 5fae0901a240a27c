#include "imagefx/effects/ExposureCurve.h"
#include "imagefx/effects/ExposureImageEffect.h"
#include "imagefx/render/ImageEffectState.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TableModel.h"
#include "tests/support/TestMain.h"

#include <algorithm>
#include <random>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

// A translucent colour between two levels is cut to the lower one before it is looked up.
constexpr double lookupTolerance = 1.0;

bool isCurve(const ToneTable &curve, const ModelLevels &expected)
{
    return std::equal(curve.begin(), curve.end(), expected.begin(), expected.end());
}

bool isCurve(const ToneTable &curve, const char *expected)
{
    return isCurve(curve, levelsOf(expected));
}

} // namespace

class ExposureTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void neutralIsTheIdentity();
    void zeroGivesTheIdentityCurve();
    void fullStrengthGivesTheTables();
    void everyTableRisesFromBlackToItsEnd();
    void halfStrengthRoundsHalfUp();
    void theControlsFollowOneAnotherThroughRoundedLevels();
    void curvesMatchTheModel();
    void pixelsByHand_data();
    void pixelsByHand();
    void alphaIsUntouched();
    void extremesDrawSomething();
    void settersClampStoreAndSignal();
    void onlyZeroIsNeutral();
    void jsonRoundTrip();
    void everyUpdateUploadsTheCurve();
    void theStateGivesItsPiece();

private:
    OffscreenGl m_gl;
};

void ExposureTest::initTestCase()
{
    QVERIFY(m_gl.isValid());
}

void ExposureTest::neutralIsTheIdentity()
{
    ExposureImageEffect effect;
    QVERIFY(effect.isNeutral());
    KORVEL_CHECK(checkIdentity({&effect}, opaquePicture()));
    KORVEL_CHECK(
        checkPicture({&effect}, translucentPicture(), translucentPicture(), lookupTolerance));
}

void ExposureTest::zeroGivesTheIdentityCurve()
{
    const ToneTable curve = buildExposureCurve(0.0F, 0.0F, 0.0F);
    for (size_t i = 0; i < curve.size(); ++i) {
        QCOMPARE(size_t(curve.at(i)), i);
    }
}

void ExposureTest::fullStrengthGivesTheTables()
{
    QVERIFY(isCurve(buildExposureCurve(1.0F, 0.0F, 0.0F), toneTexts.exposureUp));
    QVERIFY(isCurve(buildExposureCurve(-1.0F, 0.0F, 0.0F), toneTexts.exposureDown));
    QVERIFY(isCurve(buildExposureCurve(0.0F, 1.0F, 0.0F), toneTexts.shadowsUp));
    QVERIFY(isCurve(buildExposureCurve(0.0F, -1.0F, 0.0F), toneTexts.shadowsDown));
    QVERIFY(isCurve(buildExposureCurve(0.0F, 0.0F, 1.0F), toneTexts.highlightsUp));
    QVERIFY(isCurve(buildExposureCurve(0.0F, 0.0F, -1.0F), toneTexts.highlightsDown));
    QCOMPARE(int(buildExposureCurve(1.0F, 0.0F, 0.0F).at(128)), 181);
    QCOMPARE(int(buildExposureCurve(-1.0F, 0.0F, 0.0F).at(255)), 255);
    QCOMPARE(int(buildExposureCurve(0.0F, 0.0F, -1.0F).at(255)), 235);
}

void ExposureTest::everyTableRisesFromBlackToItsEnd()
{
    for (const ToneTable *table :
         {&exposureUp, &exposureDown, &shadowsUp, &shadowsDown, &highlightsUp, &highlightsDown}) {
        QVERIFY(std::is_sorted(table->begin(), table->end()));
        QCOMPARE(int(table->front()), 0);
        QCOMPARE(int(table->back()), table == &highlightsDown ? 235 : 255);
    }
}

// 1 becomes 2 at full strength, so 1.5 at half of it.
void ExposureTest::halfStrengthRoundsHalfUp()
{
    QCOMPARE(int(buildExposureCurve(0.5F, 0.0F, 0.0F).at(1)), 2);
    // 255 becomes 235, so 245 at half the strength, and 254 at a twentieth.
    QCOMPARE(int(buildExposureCurve(0.0F, 0.0F, -0.5F).at(255)), 245);
    QCOMPARE(int(buildExposureCurve(0.0F, 0.0F, -0.05F).at(255)), 254);
}

// 128 is 181 after exposure, and 181 is the table index of the next control.
void ExposureTest::theControlsFollowOneAnotherThroughRoundedLevels()
{
    const ToneTable curve = buildExposureCurve(1.0F, -1.0F, 1.0F);
    for (const size_t level : {0, 1, 17, 128, 200, 255}) {
        QCOMPARE(curve.at(level), highlightsUp.at(shadowsDown.at(exposureUp.at(level))));
    }
    // Half of exposure's 2 is rounded to 2 before shadows take it to 14; 1.5 would give 10.5.
    QCOMPARE(int(buildExposureCurve(0.5F, 1.0F, 0.0F).at(1)), 14);
}

void ExposureTest::curvesMatchTheModel()
{
    constexpr int randomSeed = 5;
    constexpr int trials = 200;
    std::mt19937 random(randomSeed);
    std::uniform_real_distribution<float> strength(-1.0F, 1.0F);
    for (int i = 0; i < trials; ++i) {
        const float exposure = strength(random);
        const float dark = strength(random);
        const float light = strength(random);
        QVERIFY(isCurve(buildExposureCurve(exposure, dark, light),
                        modelToneCurve(exposure, dark, light)));
    }
}

void ExposureTest::pixelsByHand_data()
{
    QTest::addColumn<QVector<float>>("controls");
    QTest::addColumn<QVector<int>>("source");
    QTest::addColumn<QVector<int>>("expected");
    QTest::newRow("each channel by itself")
        << QVector<float>{1.0F, 0.0F, 0.0F} << QVector<int>{128, 0, 255, 255}
        << QVector<int>{181, 0, 255, 255};
    QTest::newRow("darker") << QVector<float>{-1.0F, 0.0F, 0.0F} << QVector<int>{1, 2, 254, 255}
                            << QVector<int>{1, 1, 250, 255};
    QTest::newRow("lifted shadows") << QVector<float>{0.0F, 1.0F, 0.0F}
                                    << QVector<int>{1, 2, 16, 255} << QVector<int>{7, 14, 77, 255};
    QTest::newRow("white is taken down")
        << QVector<float>{0.0F, 0.0F, -1.0F} << QVector<int>{255, 254, 0, 255}
        << QVector<int>{235, 233, 0, 255};
    QTest::newRow("half the strength")
        << QVector<float>{0.5F, 0.0F, 0.0F} << QVector<int>{1, 128, 255, 255}
        << QVector<int>{2, 155, 255, 255};
    // 64 of 128 is 128 of 256, un-premultiplied: 181 at half the alpha.
    QTest::newRow("translucent") << QVector<float>{1.0F, 0.0F, 0.0F}
                                 << QVector<int>{64, 0, 128, 128} << QVector<int>{91, 0, 128, 128};
}

void ExposureTest::pixelsByHand()
{
    QFETCH(QVector<float>, controls);
    QFETCH(QVector<int>, source);
    ExposureImageEffect effect;
    effect.setExposure(controls.at(0));
    effect.setDarkTones(controls.at(1));
    effect.setLightTones(controls.at(2));
    QTEST(rendered(&effect, source), "expected");
}

void ExposureTest::alphaIsUntouched()
{
    ExposureImageEffect effect;
    effect.setExposure(0.5F);
    effect.setLightTones(-0.5F);
    KORVEL_CHECK(checkAlphaUntouched(&effect));
}

void ExposureTest::extremesDrawSomething()
{
    ExposureImageEffect effect;
    for (const float strength : {1.0F, -1.0F}) {
        effect.setExposure(strength);
        effect.setDarkTones(strength);
        effect.setLightTones(strength);
        KORVEL_CHECK(checkAlphaUntouched(&effect));
        QCOMPARE(rendered(&effect, {0, 0, 0, 255}), QVector<int>({0, 0, 0, 255}));
    }
    QCOMPARE(rendered(&effect, {255, 255, 255, 255}), QVector<int>({235, 235, 235, 255}));
    // More than white, un-premultiplied, takes the last entry.
    QCOMPARE(rendered(&effect, {255, 255, 255, 128}), QVector<int>({118, 118, 118, 128}));
}

void ExposureTest::settersClampStoreAndSignal()
{
    ExposureImageEffect effect;
    for (const char *property : {"exposure", "darkTones", "lightTones"}) {
        QCOMPARE(effect.property(property), QVariant(0.0F));
        KORVEL_CHECK(checkIgnored(&effect, property, -0.0F));
        KORVEL_CHECK(checkSetter(&effect, property, 0.5F, 0.5F));
        KORVEL_CHECK(checkIgnored(&effect, property, 0.500001F));
        KORVEL_CHECK(checkSetter(&effect, property, -3.0F, -1.0F));
        KORVEL_CHECK(checkIgnored(&effect, property, -1.5F));
        KORVEL_CHECK(checkSetter(&effect, property, 5.0F, 1.0F));
        KORVEL_CHECK(checkIgnored(&effect, property, 7.0F));
    }
}

void ExposureTest::onlyZeroIsNeutral()
{
    for (const char *property : {"exposure", "darkTones", "lightTones"}) {
        ExposureImageEffect effect;
        effect.setProperty(property, 0.000001F);
        QVERIFY(!effect.isNeutral());
        effect.setProperty(property, -0.0F);
        QVERIFY(effect.isNeutral());
    }
}

void ExposureTest::jsonRoundTrip()
{
    ExposureImageEffect effect;
    effect.setExposure(-0.35F);
    effect.setDarkTones(0.75F);
    effect.setLightTones(0.1F);
    KORVEL_CHECK(checkJsonRoundTrip(&effect));
}

void ExposureTest::everyUpdateUploadsTheCurve()
{
    ExposureImageEffect effect;
    const QVector<int> grey = {128, 128, 128, 255};
    QCOMPARE(rendered(&effect, grey), grey);
    effect.setExposure(1.0F);
    QCOMPARE(rendered(&effect, grey), QVector<int>({181, 181, 181, 255}));
    effect.setExposure(0.0F);
    QCOMPARE(rendered(&effect, grey), grey);
    // Two effects of one kind draw with one program, each with its own curve.
    ExposureImageEffect darker;
    darker.setExposure(-1.0F);
    effect.setExposure(1.0F);
    QImage source(1, 1, QImage::Format_RGBA8888);
    source.fill(QColor(128, 128, 128));
    const int expected = exposureDown.at(exposureUp.at(128));
    QCOMPARE(drawnAlike({&effect, &darker}, source).pixelColor(0, 0).red(), expected);
}

void ExposureTest::theStateGivesItsPiece()
{
    ExposureImageEffect effect;
    const QString id = QStringLiteral("ko.orvanto.imageeffect.Exposure");
    QCOMPARE(effect.effectId(), id);
    QCOMPARE(effect.currentState()->effectId(), id);
    QVERIFY(!shaderPieceOf(&effect).isEmpty());
    QCOMPARE(shaderPieceOf(&effect), ImageEffect::readShader(QStringLiteral("fx_exposure.frag")));
}

KORVEL_TEST_MAIN(ExposureTest)
#include "tst_exposure.moc"
