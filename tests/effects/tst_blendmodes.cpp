#include "imagefx/effects/ChannelShiftImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/ImageEffectState.h"
#include "imagefx/render/PixelBufferState.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TestEffect.h"
#include "tests/support/TestMain.h"

#include <QtCore/QMetaEnum>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

// Keeps the log of shaders that are meant to fail out of the test's.
class QuietShaderLog
{
public:
    QuietShaderLog() { s_previous = qInstallMessageHandler(&passOn); }
    ~QuietShaderLog() { qInstallMessageHandler(s_previous); }
    Q_DISABLE_COPY(QuietShaderLog)

private:
    static void passOn(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        if (!message.startsWith(QLatin1String("QOpenGLShader")) &&
            !message.startsWith(QLatin1String("*** Problematic"))) {
            s_previous(type, context, message);
        }
    }

    static QtMessageHandler s_previous;
};

QtMessageHandler QuietShaderLog::s_previous = nullptr;

} // namespace

// What every pixel goes through around an effect's own colour: the blend with the source, and the
// mix by the effect's alpha.
class BlendModesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void normalGivesTheEffectsColor();
    void pixelsByHand_data();
    void pixelsByHand();
    void differenceFromItselfIsBlack();
    void softLightSwitchesAtHalf();
    void thePieceIsOneFunctionInALowerCaseFile();
    void anUnknownModeDoesNotLinkAndDrawsNothing();
    void withoutPiecesTheInputIsLeft();
    void withoutAlphaTheInputIsLeft();
    void clearPixelsStayClearInEveryMode();

private:
    OffscreenGl m_gl;
};

void BlendModesTest::initTestCase()
{
    QVERIFY(m_gl.isValid());
}

void BlendModesTest::normalGivesTheEffectsColor()
{
    ColorFillImageEffect effect;
    effect.setColor(QColor(18, 130, 201));
    for (const int level : {0, 1, 127, 254, 255}) {
        QCOMPARE(rendered(&effect, {level, 255 - level, level, 255}),
                 QVector<int>({18, 130, 201, 255}));
    }
}

// The effect is a fill; a in the comments is the source, b the fill.
void BlendModesTest::pixelsByHand_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QColor>("fill");
    QTest::addColumn<QVector<int>>("source");
    QTest::addColumn<QVector<int>>("expected");
    // Anything above 0.00001 / 0.00001 is white; black stays black.
    QTest::newRow("divide by black")
        << int(ImageEffect::Divide) << QColor(0, 0, 0) << QVector<int>{0, 1, 255, 255}
        << QVector<int>{0, 255, 255, 255};
    // a = 0.5 takes the upper branch, 1 - 2 * 0.5 * (1 - b) = b
    QTest::newRow("overlay of one half")
        << int(ImageEffect::Overlay) << QColor(51, 153, 255) << QVector<int>{50, 50, 50, 100}
        << QVector<int>{20, 60, 100, 100};
    // 1 - (1 - b) / a: 1 - 0.4 / 0.8; the usual formula would give 1 - 0.2 / 0.6
    QTest::newRow("the effect is burnt by the source")
        << int(ImageEffect::ColorBurn) << QColor(153, 153, 153) << QVector<int>{80, 40, 100, 100}
        << QVector<int>{50, 0, 60, 100};
    // a / (1 - b): 0.3 / 0.6
    QTest::newRow("the source is dodged by the effect")
        << int(ImageEffect::ColorDodge) << QColor(102, 102, 102) << QVector<int>{30, 60, 0, 100}
        << QVector<int>{50, 100, 0, 100};
    // a - b, and not b - a
    QTest::newRow("the effect is subtracted")
        << int(ImageEffect::Subtract) << QColor(20, 200, 0) << QVector<int>{50, 100, 230, 255}
        << QVector<int>{30, 0, 230, 255};
    // a + 2b - 1: the effect counts twice
    QTest::newRow("linear light") << int(ImageEffect::LinearLight) << QColor(100, 130, 200)
                                  << QVector<int>{60, 100, 10, 255}
                                  << QVector<int>{5, 105, 155, 255};
    // The branch is chosen by b = 0.2: 2 * 0.2 * 0.8; by a it would be 1 - 2 * 0.8 * 0.2
    QTest::newRow("hard light switches on the effect")
        << int(ImageEffect::HardLight) << QColor(51, 51, 51) << QVector<int>{80, 80, 80, 100}
        << QVector<int>{32, 32, 32, 100};
    // The branch is chosen by a = 0.2
    QTest::newRow("overlay switches on the source")
        << int(ImageEffect::Overlay) << QColor(204, 204, 204) << QVector<int>{20, 20, 20, 100}
        << QVector<int>{32, 32, 32, 100};
}

void BlendModesTest::pixelsByHand()
{
    QFETCH(int, mode);
    QFETCH(QColor, fill);
    QFETCH(QVector<int>, source);
    ColorFillImageEffect effect;
    effect.setColor(fill);
    effect.setBlendMode(ImageEffect::BlendMode(mode));
    QTEST(rendered(&effect, source), "expected");
}

void BlendModesTest::differenceFromItselfIsBlack()
{
    ChannelShiftImageEffect effect;
    effect.setBlendMode(ImageEffect::Difference);
    QCOMPARE(rendered(&effect, {50, 100, 230, 255}), QVector<int>({0, 0, 0, 255}));
    // Black before the mix: half of it leaves half of the source.
    effect.setAlpha(0.5F);
    QCOMPARE(rendered(&effect, {50, 100, 230, 255}), QVector<int>({25, 50, 115, 255}));
}

// With a black effect: below one half 2 * 0 + a^2, from one half on 2a - sqrt(a). At one half the
// two differ by 0.25 and 0.2929.
void BlendModesTest::softLightSwitchesAtHalf()
{
    ColorFillImageEffect effect;
    effect.setColor(Qt::black);
    effect.setBlendMode(ImageEffect::SoftLight);
    QCOMPARE(rendered(&effect, {127, 128, 255, 255}), QVector<int>({63, 75, 255, 255}));
    QCOMPARE(rendered(&effect, {64, 63, 65, 128}), QVector<int>({37, 31, 39, 128}));
}

void BlendModesTest::thePieceIsOneFunctionInALowerCaseFile()
{
    const auto modes = QMetaEnum::fromType<ImageEffect::BlendMode>();
    QCOMPARE(modes.keyCount(), 16);
    ColorFillImageEffect effect;
    for (int mode = ImageEffect::Add; mode <= ImageEffect::DarkenOnly; ++mode) {
        effect.setBlendMode(ImageEffect::BlendMode(mode));
        const QByteArray piece = effect.currentState()->blendShaderCode();
        const QString file =
            QStringLiteral("blend_%1.frag").arg(QLatin1String(modes.valueToKey(mode))).toLower();
        QVERIFY2(!piece.isEmpty(), qPrintable(file));
        QCOMPARE(piece, ImageEffect::readShader(file));
        QVERIFY2(piece.startsWith("//"), qPrintable(file));
        QCOMPARE(piece.count("lowp vec3 fx_blend(lowp vec3 a, lowp vec3 b)\n{"), 1);
        QCOMPARE(piece.count('{'), 1);
    }
    effect.setBlendMode(ImageEffect::Normal);
    QCOMPARE(effect.currentState()->blendShaderCode(), QByteArray());
}

void BlendModesTest::anUnknownModeDoesNotLinkAndDrawsNothing()
{
    const QuietShaderLog quiet;
    const PixelBufferState pbs;
    for (const int mode : {16, -1, 1000}) {
        ColorFillImageEffect effect;
        effect.setBlendMode(ImageEffect::BlendMode(mode));
        const auto state = effect.currentState();
        QCOMPARE(state->blendShaderCode(), QByteArray());
        QVERIFY(state->generateFragmentShader(&pbs).contains("#define USE_BLEND\n"));
        QVERIFY(!state->effectPass(&pbs)->isLinked());
        QCOMPARE(renderedByGl(&effect, {50, 100, 230, 255}), QVector<int>({0, 0, 0, 0}));
    }
}

void BlendModesTest::withoutPiecesTheInputIsLeft()
{
    TestEffect effect;
    constexpr double none = 0.0;
    for (const QImage &source : {opaquePicture(), translucentPicture()}) {
        KORVEL_COMPARE_PICTURES(renderTexture({&effect}, source), source, none);
    }
}

void BlendModesTest::withoutAlphaTheInputIsLeft()
{
    ColorFillImageEffect effect;
    effect.setBlendMode(ImageEffect::Screen);
    effect.setAlpha(0.0F);
    KORVEL_CHECK(checkIdentity({&effect}, opaquePicture()));
    KORVEL_CHECK(checkIdentity({&effect}, translucentPicture()));
}

void BlendModesTest::clearPixelsStayClearInEveryMode()
{
    ColorFillImageEffect effect;
    effect.setColor(QColor(200, 100, 255));
    for (int mode = ImageEffect::Normal; mode <= ImageEffect::DarkenOnly; ++mode) {
        effect.setBlendMode(ImageEffect::BlendMode(mode));
        KORVEL_CHECK(checkAlphaUntouched(&effect));
    }
}

KORVEL_TEST_MAIN(BlendModesTest)
#include "tst_blendmodes.moc"
