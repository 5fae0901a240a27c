#include "imagefx/effects/SharpenImageEffect.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/ImageEffectState.h"
#include "imagefx/render/PixelBufferState.h"
#include "tests/engine/EngineTester.h"
#include "tests/support/EffectCases.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TestMain.h"

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

QString variantOf(float radius, float renderScale)
{
    SharpenImageEffect effect;
    effect.setRadius(radius);
    PixelBufferState pbs;
    pbs.renderScale = renderScale;
    return effect.currentState()->effectVariant(&pbs);
}

QImage grey(const QSize &size, int level)
{
    QImage image(size, QImage::Format_RGBA8888);
    image.fill(QColor(level, level, level));
    return image;
}

} // namespace

class SharpenTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void neutralIsTheIdentity();
    void flatPicturesStayAsTheyAre();
    void strengthsUpToAThousandthAreNeutral();
    void variantsTellTapCountsApart();
    void aDotByHand();
    void tapsReachExactlyTheRadius();
    void translucentColorsAreDividedTwice();
    void clearPixelsLendTheirNeighboursFiniteColor();
    void alphaIsUntouched();
    void extremesDrawSomething();
    void jsonRoundTrip();
    void picturesMatchTheModel_data();
    void picturesMatchTheModel();
    void everyBlendModeMatchesTheModel_data();
    void everyBlendModeMatchesTheModel();
    void settersClampStoreAndSignal();
    void theStateUploadsWhatTheEffectHolds();

private:
    std::unique_ptr<OffscreenGl> m_gl;
};

// Hue and luminance masks share passes within a context.
void SharpenTest::init()
{
    m_gl = std::make_unique<OffscreenGl>();
    QVERIFY(m_gl->isValid());
}

void SharpenTest::cleanup()
{
    m_gl.reset();
}

void SharpenTest::neutralIsTheIdentity()
{
    SharpenImageEffect effect;
    effect.setStrength(0.0F);
    QVERIFY(effect.isNeutral());
    KORVEL_CHECK(checkIdentity({&effect}, opaquePicture()));
    KORVEL_CHECK(checkIdentity({&effect}, translucentPicture()));
}

void SharpenTest::flatPicturesStayAsTheyAre()
{
    SharpenImageEffect effect;
    effect.setStrength(1.0F);
    for (const float radius : {1.0F, 2.7F, 80.0F}) {
        effect.setRadius(radius);
        KORVEL_CHECK(checkIdentity({&effect}, grey({9, 7}, 101)));
    }
}

void SharpenTest::strengthsUpToAThousandthAreNeutral()
{
    SharpenImageEffect effect;
    QCOMPARE(effect.strength(), 0.5F);
    QVERIFY(!effect.isNeutral());
    effect.setStrength(0.001F);
    QVERIFY(effect.isNeutral());
    effect.setStrength(0.0011F);
    QVERIFY(!effect.isNeutral());
    effect.setStrength(-0.5F);
    QVERIFY(effect.isNeutral());
}

void SharpenTest::variantsTellTapCountsApart()
{
    QCOMPARE(variantOf(1.0F, 1.0F), QStringLiteral("@1"));
    QCOMPARE(variantOf(1.0F, 0.25F), QStringLiteral("@1"));
    QCOMPARE(variantOf(2.7F, 1.0F), QStringLiteral("@2"));
    QCOMPARE(variantOf(2.7F, 2.0F), QStringLiteral("@5"));
    QCOMPARE(variantOf(120.0F, 1.0F), QStringLiteral("@16"));
    QCOMPARE(variantOf(80.0F, 0.1F), QStringLiteral("@8"));
}

// The row of the dot becomes 133 in 8 bits, the square around it 111: (133 + 100 + 100) / 3.
void SharpenTest::aDotByHand()
{
    QImage source = grey({7, 7}, 100);
    source.setPixelColor(3, 3, QColor(200, 200, 200));
    SharpenImageEffect effect;
    effect.setStrength(0.25F);
    for (const QImage &sharpened : drawnByBoth(&effect, source)) {
        const auto level = [&](int x, int y) { return sharpened.pixelColor(3 + x, 3 + y).green(); };
        QCOMPARE(level(0, 0), 222); // 200 + (200 - 111) / 4
        QCOMPARE(level(1, 0), 97);  // 100 + (100 - 111) / 4
        QCOMPARE(level(0, 1), 97);
        QCOMPARE(level(-1, -1), 97);
        QCOMPARE(level(2, 0), 100);
        QCOMPARE(level(0, -2), 100);
    }
}

// A radius of 2.7 is two taps on each side, at 1.35 and 2.7 pixels: the texels 1 and 3 away.
void SharpenTest::tapsReachExactlyTheRadius()
{
    QImage source = grey({11, 11}, 100);
    source.setPixelColor(5, 5, QColor(200, 200, 200));
    SharpenImageEffect effect;
    effect.setRadius(2.7F);
    effect.setStrength(1.0F);
    for (const QImage &sharpened : drawnByBoth(&effect, source)) {
        // 200 / 5 - 100 / 5 = 20 into the row, a fifth of that into the square.
        const auto level = [&](int x, int y) { return sharpened.pixelColor(5 + x, 5 + y).green(); };
        for (const int away : {1, 3}) {
            QCOMPARE(level(away, 0), 96);
            QCOMPARE(level(-away, 0), 96);
            QCOMPARE(level(0, away), 96);
            QCOMPARE(level(0, -away), 96);
            QCOMPARE(level(away, -away), 96);
        }
        for (const int away : {2, 4}) {
            QCOMPARE(level(away, 0), 100);
            QCOMPARE(level(0, -away), 100);
        }
    }
}

// 0.4 at an alpha of 120 of 255 is 0.4 after the first pass, and 0.85 after the second; half the
// difference is taken away from 0.4.
void SharpenTest::translucentColorsAreDividedTwice()
{
    SharpenImageEffect effect;
    QCOMPARE(rendered(&effect, {48, 48, 48, 120}), QVector<int>({21, 21, 21, 120}));
    effect.setStrength(0.125F);
    QCOMPARE(rendered(&effect, {48, 48, 48, 120}), QVector<int>({41, 41, 41, 120}));
}

// In the first pass the clear pixel takes two thirds of its neighbours' 150, undivided: 100. The
// pixel below it then finds 100, its own row's 60, and 60 once more beyond the edge: 73.33. A
// quarter of the 13.33 that it is darker is taken away from it.
void SharpenTest::clearPixelsLendTheirNeighboursFiniteColor()
{
    QImage source = grey({3, 2}, 150);
    source.setPixelColor(1, 0, QColor(0, 0, 0, 0));
    for (int x = 0; x < 3; ++x) {
        source.setPixelColor(x, 1, QColor(60, 60, 60));
    }
    SharpenImageEffect effect;
    effect.setStrength(0.25F);
    for (const QImage &sharpened : drawnByBoth(&effect, source)) {
        KORVEL_CHECK(checkAlphaUntouched(sharpened, source));
        QCOMPARE(sharpened.pixelColor(1, 1).red(), 57);
    }
}

void SharpenTest::alphaIsUntouched()
{
    SharpenImageEffect effect;
    effect.setRadius(3.0F);
    KORVEL_CHECK(checkAlphaUntouched(&effect));
}

void SharpenTest::extremesDrawSomething()
{
    SharpenImageEffect effect;
    effect.setRadius(80.0F);
    EngineTester tester(EngineTester::onePass);
    for (const float strength : {1000.0F, -1000.0F}) {
        effect.setStrength(strength);
        const ModelMember model{modelSharpen(double(strength), 80.0)};
        KORVEL_CHECK(tester.check({&effect}, {model}, translucentPicture()));
        QCOMPARE(rendered(&effect, {1, 2, 255, 255}), QVector<int>({1, 2, 255, 255}));
    }
    RenderSettings enlarged;
    enlarged.relativeScale = 50.0F;
    KORVEL_CHECK(checkPicture({&effect}, grey({3, 2}, 33), grey({3, 2}, 33), 0.0, enlarged));
}

void SharpenTest::jsonRoundTrip()
{
    SharpenImageEffect effect;
    effect.setStrength(-1.25F);
    effect.setRadius(23.75F);
    KORVEL_CHECK(checkJsonRoundTrip(&effect));
}

// A radius of 1.5 or 2.5 has taps on the border of two texels, which read the outer one.
void SharpenTest::picturesMatchTheModel_data()
{
    QTest::addColumn<float>("strength");
    QTest::addColumn<float>("radius");
    QTest::addColumn<float>("scale");
    const auto row = [](float strength, float radius, float scale) {
        QTest::addRow("strength %g, radius %g, scale %g", double(strength), double(radius),
                      double(scale))
            << strength << radius << scale;
    };
    for (const float scale : {0.25F, 0.5F, 1.0F, 2.0F}) {
        row(0.5F, 4.6F, scale);
        row(1.5F, 18.9F, scale);
    }
    row(0.5F, 1.0F, 1.0F);
    row(0.8F, 2.7F, 1.0F);
    row(-0.6F, 8.0F, 1.0F);
    row(3.0F, 1.3F, 1.0F);
    row(0.3F, 80.0F, 1.0F);
    row(0.5F, 1.5F, 1.0F);
    row(0.5F, 5.0F, 0.5F);
}

void SharpenTest::picturesMatchTheModel()
{
    QFETCH(float, strength);
    QFETCH(float, radius);
    QFETCH(float, scale);
    SharpenImageEffect effect;
    effect.setStrength(strength);
    effect.setRadius(radius);
    ModelMember model;
    model.effect = modelSharpen(double(strength), double(radius));
    RenderSettings settings;
    settings.relativeScale = scale;
    EngineTester tester(EngineTester::onePass);
    KORVEL_CHECK(tester.check({&effect}, {model}, opaquePicture(), settings));
    KORVEL_CHECK(tester.check({&effect}, {model}, translucentPicture(), settings));
    effect.setAlpha(0.3F);
    model.alpha = double(effect.alpha());
    settings.globalAlpha = 0.5F;
    KORVEL_CHECK(tester.check({&effect}, {model}, translucentPicture(), settings));
}

void SharpenTest::everyBlendModeMatchesTheModel_data()
{
    addMaskKinds();
}

void SharpenTest::everyBlendModeMatchesTheModel()
{
    QFETCH(int, maskKind);
    SharpenImageEffect effect;
    effect.setStrength(0.75F);
    effect.setRadius(2.7F);
    EngineTester tester(EngineTester::onePass);
    KORVEL_CHECK(
        tester.checkBlendModes(&effect, modelSharpen(0.75, double(2.7F)), ModelMaskKind(maskKind)));
}

void SharpenTest::settersClampStoreAndSignal()
{
    SharpenImageEffect effect;
    QCOMPARE(effect.radius(), 1.0F);
    KORVEL_CHECK(checkIgnored(&effect, "radius", 0.5F));
    KORVEL_CHECK(checkSetter(&effect, "radius", 12.5F, 12.5F));
    KORVEL_CHECK(checkIgnored(&effect, "radius", 12.500001F));
    KORVEL_CHECK(checkSetter(&effect, "radius", 120.0F, 80.0F));
    KORVEL_CHECK(checkIgnored(&effect, "radius", 81.0F));
    KORVEL_CHECK(checkSetter(&effect, "radius", -2.0F, 1.0F));
    KORVEL_CHECK(checkIgnored(&effect, "strength", 0.5F));
    KORVEL_CHECK(checkSetter(&effect, "strength", 12.0F, 12.0F));
    KORVEL_CHECK(checkSetter(&effect, "strength", -7.0F, -7.0F));
}

void SharpenTest::theStateUploadsWhatTheEffectHolds()
{
    SharpenImageEffect effect;
    QCOMPARE(uniformOf(&effect, "u_strength", 1), QVector<float>({0.5F}));
    QCOMPARE(uniformOf(&effect, "u_radius", 1), QVector<float>({1.0F}));
    effect.setStrength(0.75F);
    effect.setRadius(3.5F);
    QCOMPARE(uniformOf(&effect, "u_strength", 1), QVector<float>({0.75F}));
    QCOMPARE(uniformOf(&effect, "u_radius", 1), QVector<float>({3.5F}));
    const QString id = QStringLiteral("ko.orvanto.imageeffect.Sharpen");
    QCOMPARE(effect.effectId(), id);
    QCOMPARE(effect.currentState()->effectId(), id);
    const QByteArray file = ImageEffect::readShader(QStringLiteral("fx_sharpen.frag"));
    QVERIFY(!file.contains("[DEFS]"));
    QCOMPARE(shaderPieceOf(&effect), "#define RADIUS 3\n\n" + file);
}

KORVEL_TEST_MAIN(SharpenTest)
#include "tst_sharpen.moc"
