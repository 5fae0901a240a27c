#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/BlurKernel.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/ImageEffectState.h"
#include "imagefx/render/PixelBufferState.h"
#include "tests/engine/EngineTester.h"
#include "tests/support/EffectCases.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/TestMain.h"

#include <QtGui/QOpenGLFunctions>

#include <clocale>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

QString variantOf(float radius, float renderScale)
{
    BlurImageEffect effect;
    effect.setRadius(radius);
    PixelBufferState pbs;
    pbs.renderScale = renderScale;
    return effect.currentState()->effectVariant(&pbs);
}

QImage filled(const QSize &size, const QVector<int> &pixel)
{
    QImage image(size, QImage::Format_RGBA8888);
    for (int i = 0; i < size.width() * size.height(); ++i) {
        std::copy(pixel.begin(), pixel.end(),
                  image.scanLine(i / size.width()) + ptrdiff_t(4) * (i % size.width()));
    }
    return image;
}

} // namespace

class BlurTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void flatPicturesStayAsTheyAre();
    void tapsAreWholePixelsFrom1To16();
    void weightsOfOneAndFourTaps();
    void weightsAddUpAndMatchTheModel();
    void definitionsNameEveryWeight();
    void variantsTellTapCountsApart();
    void theStateUploadsTheRadiusInPixels();
    void aDotSpreadsDownwardsFirst();
    void alphaKeepsItsHardEdge();
    void translucentColorsAreSummedPremultiplied();
    void alphaIsUntouched();
    void extremesDrawSomething();
    void jsonRoundTrip();
    void picturesMatchTheModel_data();
    void picturesMatchTheModel();
    void everyBlendModeMatchesTheModel_data();
    void everyBlendModeMatchesTheModel();
    void passesOfOneTapCountShareTheirProgram();
    void settersClampStoreAndSignal();
    void theStateGivesItsPiece();

private:
    std::unique_ptr<OffscreenGl> m_gl;
};

void BlurTest::initTestCase()
{
    if (qgetenv("LC_ALL").startsWith("de_DE")) {
        QCOMPARE(std::localeconv()->decimal_point, ",");
    }
}

// Hue and luminance masks share passes within a context.
void BlurTest::init()
{
    m_gl = std::make_unique<OffscreenGl>();
    QVERIFY(m_gl->isValid());
}

void BlurTest::cleanup()
{
    m_gl.reset();
}

// It is never neutral, but what it takes from a pixel it gets back from the neighbours.
void BlurTest::flatPicturesStayAsTheyAre()
{
    BlurImageEffect effect;
    for (const float radius : {1.0F, 4.0F, 100.0F}) {
        effect.setRadius(radius);
        QVERIFY(!effect.isNeutral());
        KORVEL_CHECK(checkIdentity({&effect}, filled({9, 7}, {200, 31, 255, 255})));
    }
}

void BlurTest::tapsAreWholePixelsFrom1To16()
{
    QCOMPARE(tapCount(0.0F), 1);
    QCOMPARE(tapCount(0.5F), 1);
    QCOMPARE(tapCount(1.999F), 1);
    QCOMPARE(tapCount(2.0F), 2);
    QCOMPARE(tapCount(3.9F), 3);
    QCOMPARE(tapCount(15.999F), 15);
    QCOMPARE(tapCount(16.0F), 16);
    QCOMPARE(tapCount(16.9F), 16);
    QCOMPARE(tapCount(1000.0F), 16);
}

void BlurTest::weightsOfOneAndFourTaps()
{
    const auto text = [](int taps) {
        QStringList texts;
        for (const float weight : blurWeights(taps)) {
            texts.append(QString::number(double(weight), 'f', 6));
        }
        return texts.join(QLatin1Char(' '));
    };
    QCOMPARE(text(1), QStringLiteral("0.667243 0.166379"));
    QCOMPARE(text(4), QStringLiteral("0.266560 0.213445 0.109586 0.036075 0.007614"));
}

void BlurTest::weightsAddUpAndMatchTheModel()
{
    constexpr double singlePrecision = 1e-6;
    for (int taps = 1; taps <= 16; ++taps) {
        const QVector<float> weights = blurWeights(taps);
        const QVector<double> expected = modelBlurWeights(taps);
        QCOMPARE(weights.size(), taps + 1);
        double sum = 0.0;
        for (int i = 0; i <= taps; ++i) {
            sum += (i == 0 ? 1.0 : 2.0) * double(weights.at(i));
            QVERIFY(std::abs(double(weights.at(i)) - expected.at(i)) < singlePrecision);
        }
        QVERIFY(std::abs(sum - 1.0) < singlePrecision);
    }
}

void BlurTest::definitionsNameEveryWeight()
{
    QCOMPARE(blurDefinitions(1), QByteArray("#define SAMPLES 2\n\nmediump float w[SAMPLES];\n"
                                            "w[0] = 0.667243;\nw[1] = 0.166379;\n"));
    QCOMPARE(blurDefinitions(4), QByteArray("#define SAMPLES 5\n\nmediump float w[SAMPLES];\n"
                                            "w[0] = 0.266560;\nw[1] = 0.213445;\n"
                                            "w[2] = 0.109586;\nw[3] = 0.036075;\n"
                                            "w[4] = 0.007614;\n"));
    const QByteArray longest = blurDefinitions(16);
    QVERIFY(longest.startsWith("#define SAMPLES 17\n\nmediump float w[SAMPLES];\nw[0] = 0."));
    QVERIFY(longest.contains("\nw[16] = 0."));
    QCOMPARE(longest.count('\n'), 3 + 17);
    QCOMPARE(longest.count(','), 0);
}

void BlurTest::variantsTellTapCountsApart()
{
    QCOMPARE(variantOf(1.0F, 1.0F), QStringLiteral("@1"));
    QCOMPARE(variantOf(1.0F, 0.5F), QStringLiteral("@1"));
    QCOMPARE(variantOf(3.9F, 1.0F), QStringLiteral("@3"));
    QCOMPARE(variantOf(3.9F, 2.0F), QStringLiteral("@7"));
    QCOMPARE(variantOf(17.0F, 1.0F), QStringLiteral("@16"));
    QCOMPARE(variantOf(100.0F, 1.0F), QStringLiteral("@16"));
    QCOMPARE(variantOf(100.0F, 0.05F), QStringLiteral("@5"));
}

void BlurTest::theStateUploadsTheRadiusInPixels()
{
    BlurImageEffect effect;
    for (const float scale : {0.5F, 1.0F, 2.0F}) {
        PixelBufferState pbs;
        pbs.renderScale = scale;
        const auto pass = effect.currentState()->effectPass(&pbs);
        float radius = 0.0F;
        m_gl->context()->functions()->glGetUniformfv(pass->programId(),
                                                     pass->uniformLocation("u_radius"), &radius);
        QCOMPARE(radius, scale);
    }
}

// Taps at 0.8, 1.6, 2.4 and 3.2 pixels read the texels 1, 2, 2 and 3 away: the weights 0.26656,
// 0.213445, 0.145661 and 0.007614. The column of the dot becomes 68, 54, 37, 2 in 8 bits, and its
// pixels are spread sideways then.
void BlurTest::aDotSpreadsDownwardsFirst()
{
    QImage source = filled({11, 11}, {0, 0, 0, 255});
    source.setPixelColor(5, 5, Qt::white);
    BlurImageEffect effect;
    effect.setRadius(4.0F);
    for (const QImage &blurred : drawnByBoth(&effect, source)) {
        const auto level = [&](int x, int y) { return blurred.pixelColor(5 + x, 5 + y).green(); };
        QCOMPARE(level(0, 0), 18);
        QCOMPARE(level(1, 0), 15);
        QCOMPARE(level(0, 1), 14);
        QCOMPARE(level(-2, 0), 10);
        QCOMPARE(level(0, -2), 10);
        QCOMPARE(level(3, 0), 1);
        QCOMPARE(level(4, 0), 0);
        QCOMPARE(level(0, 4), 0);
    }
}

// Clear pixels count as black, yet stay clear.
void BlurTest::alphaKeepsItsHardEdge()
{
    QImage source = filled({12, 5}, {255, 255, 255, 255});
    for (int y = 0; y < 5; ++y) {
        for (int x = 6; x < 12; ++x) {
            source.setPixelColor(x, y, QColor(0, 0, 0, 0));
        }
    }
    BlurImageEffect effect;
    effect.setRadius(4.0F);
    for (const QImage &blurred : drawnByBoth(&effect, source)) {
        KORVEL_CHECK(checkAlphaUntouched(blurred, source));
        // 1 less the weights of 1, 2 and 3 texels: 0.63328 of 255 beside the edge.
        QCOMPARE(blurred.pixelColor(5, 2).red(), 161);
        QCOMPARE(blurred.pixelColor(2, 2).red(), 255);
    }
}

// 0.4 at an alpha of 120 of 255 is summed up as 0.18824, and that is what the effect's colour is.
void BlurTest::translucentColorsAreSummedPremultiplied()
{
    BlurImageEffect effect;
    effect.setRadius(4.0F);
    QCOMPARE(rendered(&effect, {48, 48, 48, 120}), QVector<int>({23, 23, 23, 120}));
    effect.setAlpha(0.5F);
    QCOMPARE(rendered(&effect, {48, 48, 48, 120}), QVector<int>({35, 35, 35, 120}));
}

void BlurTest::alphaIsUntouched()
{
    BlurImageEffect effect;
    effect.setRadius(6.0F);
    KORVEL_CHECK(checkAlphaUntouched(&effect));
}

// The edges are repeated as far as the taps reach.
void BlurTest::extremesDrawSomething()
{
    BlurImageEffect effect;
    effect.setRadius(100.0F);
    KORVEL_CHECK(checkAlphaUntouched(&effect));
    RenderSettings enlarged;
    enlarged.relativeScale = 50.0F;
    const QImage flat = filled({3, 2}, {9, 90, 190, 255});
    KORVEL_CHECK(checkPicture({&effect}, flat, flat, 0.0, enlarged));
    QCOMPARE(rendered(&effect, {1, 2, 255, 255}), QVector<int>({1, 2, 255, 255}));
    QCOMPARE(rendered(&effect, {0, 0, 0, 0}), QVector<int>({0, 0, 0, 0}));
}

void BlurTest::jsonRoundTrip()
{
    BlurImageEffect effect;
    effect.setRadius(23.75F);
    KORVEL_CHECK(checkJsonRoundTrip(&effect));
}

// Whole odd radii have taps on the border of two texels, which read the outer one.
void BlurTest::picturesMatchTheModel_data()
{
    QTest::addColumn<float>("radius");
    QTest::addColumn<float>("scale");
    for (const float scale : {0.25F, 0.5F, 1.0F, 2.0F}) {
        for (const float radius : {4.4F, 19.2F, 100.0F}) {
            QTest::addRow("radius %g, scale %g", double(radius), double(scale)) << radius << scale;
        }
    }
    for (const float radius : {1.0F, 1.2F, 2.6F, 3.0F, 4.0F, 5.0F, 9.7F, 15.0F, 16.0F, 16.9F}) {
        QTest::addRow("radius %g", double(radius)) << radius << 1.0F;
    }
}

void BlurTest::picturesMatchTheModel()
{
    QFETCH(float, radius);
    QFETCH(float, scale);
    BlurImageEffect effect;
    effect.setRadius(radius);
    ModelMember model;
    model.effect = modelBlur(double(radius));
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

void BlurTest::everyBlendModeMatchesTheModel_data()
{
    addMaskKinds();
}

void BlurTest::everyBlendModeMatchesTheModel()
{
    QFETCH(int, maskKind);
    BlurImageEffect effect;
    effect.setRadius(4.4F);
    EngineTester tester(EngineTester::onePass);
    KORVEL_CHECK(tester.checkBlendModes(&effect, modelBlur(4.4), ModelMaskKind(maskKind)));
}

void BlurTest::passesOfOneTapCountShareTheirProgram()
{
    const PixelBufferState pbs;
    BlurImageEffect first;
    first.setRadius(17.0F);
    BlurImageEffect second;
    second.setRadius(100.0F);
    BlurImageEffect third;
    third.setRadius(15.0F);
    const auto pass = first.currentState()->effectPass(&pbs);
    QCOMPARE(second.currentState()->effectPass(&pbs), pass);
    QVERIFY(third.currentState()->effectPass(&pbs) != pass);
}

void BlurTest::settersClampStoreAndSignal()
{
    BlurImageEffect effect;
    QCOMPARE(effect.radius(), 1.0F);
    KORVEL_CHECK(checkIgnored(&effect, "radius", 0.5F));
    KORVEL_CHECK(checkIgnored(&effect, "radius", -7.0F));
    KORVEL_CHECK(checkSetter(&effect, "radius", 12.5F, 12.5F));
    KORVEL_CHECK(checkIgnored(&effect, "radius", 12.500001F));
    KORVEL_CHECK(checkSetter(&effect, "radius", 250.0F, 100.0F));
    KORVEL_CHECK(checkIgnored(&effect, "radius", 101.0F));
    KORVEL_CHECK(checkSetter(&effect, "radius", 0.5F, 1.0F));
}

void BlurTest::theStateGivesItsPiece()
{
    BlurImageEffect effect;
    effect.setRadius(4.0F);
    const QString id = QStringLiteral("ko.orvanto.imageeffect.Blur");
    QCOMPARE(effect.effectId(), id);
    QCOMPARE(effect.currentState()->effectId(), id);
    const QByteArray file = ImageEffect::readShader(QStringLiteral("fx_blur.frag"));
    QCOMPARE(file.count("// [DEFS]"), 1);
    QCOMPARE(shaderPieceOf(&effect), QByteArray(file).replace("// [DEFS]", blurDefinitions(4)));
}

KORVEL_TEST_MAIN(BlurTest)
#include "tst_blur.moc"
