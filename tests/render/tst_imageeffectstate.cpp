#include "imagefx/effects/ChannelShiftImageEffect.h"
#include "imagefx/model/DistanceAlphaMask.h"
#include "imagefx/model/HueAlphaMask.h"
#include "imagefx/model/LuminanceAlphaMask.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/PixelBufferState.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/TestEffect.h"
#include "tests/support/TestMain.h"

#include <QtGui/QOpenGLFunctions>

#include <cmath>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

QByteArray shader(const QByteArray &name)
{
    return ImageEffect::readShader(QString::fromLatin1(name));
}

float floatUniform(ImageEffectPass *pass, const char *name)
{
    using GetUniform = void(QOPENGLF_APIENTRYP)(GLuint, GLint, GLfloat *);
    const auto getUniform = reinterpret_cast<GetUniform>(
        QOpenGLContext::currentContext()->getProcAddress("glGetUniformfv"));
    float value = -1.0F;
    getUniform(pass->programId(), pass->uniformLocation(name), &value);
    return value;
}

int intUniform(ImageEffectPass *pass, const char *name)
{
    using GetUniform = void(QOPENGLF_APIENTRYP)(GLuint, GLint, GLint *);
    const auto getUniform = reinterpret_cast<GetUniform>(
        QOpenGLContext::currentContext()->getProcAddress("glGetUniformiv"));
    int value = -1;
    getUniform(pass->programId(), pass->uniformLocation(name), &value);
    return value;
}

} // namespace

class ImageEffectStateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_gl.isValid()); }

    void alphaAtTheThresholdDisables_data()
    {
        QTest::addColumn<float>("alpha");
        QTest::addColumn<bool>("disabled");
        QTest::newRow("one") << 1.0F << false;
        QTest::newRow("just above") << 0.0011F << false;
        QTest::newRow("next float above") << std::nextafter(0.001F, 1.0F) << false;
        QTest::newRow("the threshold") << 0.001F << true;
        QTest::newRow("zero") << 0.0F << true;
        QTest::newRow("negative") << -0.5F << true;
        QTest::newRow("above one") << 7.0F << false;
    }

    void alphaAtTheThresholdDisables()
    {
        QFETCH(float, alpha);
        TestEffect effect;
        effect.setAlpha(alpha);
        QTEST(effect.currentState()->passDisabled(), "disabled");
    }

    void switchedOffIsDisabled()
    {
        TestEffect effect;
        effect.setEnabled(false);
        QVERIFY(effect.currentState()->passDisabled());
        effect.setEnabled(true);
        QVERIFY(!effect.currentState()->passDisabled());
    }

    void neutralIsDisabledInNormalMode()
    {
        TestEffect effect;
        effect.neutral = true;
        QVERIFY(effect.currentState()->passDisabled());
        effect.neutral = false;
        Q_EMIT effect.updateRequired();
        QVERIFY(!effect.currentState()->passDisabled());
    }

    // A new blend mode counts from the update after the next on.
    void neutralGoesByTheBlendModeOfTheUpdateBefore()
    {
        TestEffect effect;
        effect.neutral = true;
        effect.setBlendMode(ImageEffect::Multiply);
        QVERIFY(effect.currentState()->passDisabled());
        QCOMPARE(effect.currentState()->blendMode(), int(ImageEffect::Multiply));
        QVERIFY(effect.currentState()->passDisabled());
        Q_EMIT effect.updateRequired();
        QVERIFY(!effect.currentState()->passDisabled());
        effect.setBlendMode(ImageEffect::Normal);
        QVERIFY(!effect.currentState()->passDisabled());
        Q_EMIT effect.updateRequired();
        QVERIFY(effect.currentState()->passDisabled());
    }

    void plainShaderIsDefinitionsAndMain()
    {
        TestEffect effect;
        QCOMPARE(effect.currentState()->generateFragmentShader(&m_pbs),
                 shader("fx_defs.frag") + "\n" + shader("fx_main.frag"));
    }

    void pieceStandsBehindItsDefine()
    {
        TestEffect effect("PIECE\n");
        QCOMPARE(effect.currentState()->generateFragmentShader(&m_pbs),
                 shader("fx_defs.frag") + "#define USE_EFFECT\n\nPIECE\n" + shader("fx_main.frag"));
    }

    void fullShaderHasItsOrder()
    {
        DistanceAlphaMask mask;
        TestEffect effect("PIECE\n");
        effect.setAlphaMask(&mask);
        effect.setBlendMode(ImageEffect::HardLight);
        QCOMPARE(effect.currentState()->generateFragmentShader(&m_pbs),
                 shader("fx_defs.frag") + "#define USE_EFFECT\n#define USE_BLEND\n" +
                     "#define USE_MASK\n" + shader("am_distance.frag") + "\nPIECE\n" +
                     shader("blend_hardlight.frag") + shader("fx_main.frag"));
    }

    void maskThatIsOffIsNotCompiledIn()
    {
        HueAlphaMask mask;
        mask.setEnabled(false);
        TestEffect effect;
        effect.setAlphaMask(&mask);
        const auto state = effect.currentState();
        QVERIFY(!state->generateFragmentShader(&m_pbs).contains("#define USE_MASK"));
        QCOMPARE(state->maskShaderCode(), shader("am_hue.frag"));
        TestEffect unmasked;
        QCOMPARE(state->effectPass(&m_pbs), unmasked.currentState()->effectPass(&m_pbs));
    }

    void removedMaskIsReleased()
    {
        HueAlphaMask mask;
        TestEffect effect;
        effect.setAlphaMask(&mask);
        QVERIFY(!effect.currentState()->maskShaderCode().isEmpty());
        effect.setAlphaMask(nullptr);
        QVERIFY(effect.currentState()->maskShaderCode().isEmpty());
    }

    void blendPieceFollowsTheMode_data()
    {
        QTest::addColumn<int>("mode");
        const QStringList names =
            QStringLiteral(
                "add subtract difference multiply divide screen overlay hardlight softlight "
                "linearlight colordodge colorburn linearburn lightenonly darkenonly")
                .split(QLatin1Char(' '));
        for (int i = 0; i < names.size(); ++i) {
            QTest::newRow(names.at(i).toLatin1().constData()) << i + 1;
        }
    }

    void blendPieceFollowsTheMode()
    {
        QFETCH(int, mode);
        TestEffect effect;
        effect.setBlendMode(static_cast<ImageEffect::BlendMode>(mode));
        const QByteArray piece = effect.currentState()->blendShaderCode();
        QVERIFY(piece.contains("lowp vec3 fx_blend(lowp vec3 a, lowp vec3 b)"));
        QCOMPARE(piece, shader(QByteArray("blend_") + QTest::currentDataTag() + ".frag"));
    }

    void modeWithoutAPieceDefinesABlendThatIsNotThere()
    {
        for (const int mode : {-1, 16, 99}) {
            TestEffect effect;
            QVERIFY(effect.setProperty("blendMode", mode));
            const auto state = effect.currentState();
            QVERIFY(state->blendShaderCode().isEmpty());
            const QByteArray text = state->generateFragmentShader(&m_pbs);
            QVERIFY(text.contains("#define USE_BLEND\n"));
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("fx_blend")));
            QTest::ignoreMessage(QtWarningMsg,
                                 QRegularExpression(QStringLiteral("Problematic Fragment")));
            QVERIFY(!state->effectPass(&m_pbs)->isLinked());
        }
        TestEffect normal;
        QVERIFY(normal.currentState()->blendShaderCode().isEmpty());
    }

    void alikeStatesShareOnePass()
    {
        TestEffect first(TestEffect::pieceOf("colorSample"));
        TestEffect second(TestEffect::pieceOf("colorSample"));
        second.setAlpha(0.5F);
        const auto pass = first.currentState()->effectPass(&m_pbs);
        QCOMPARE(second.currentState()->effectPass(&m_pbs), pass);
        QVERIFY(pass->isLinked());
    }

    void keyTellsApartWhatChangesTheShader()
    {
        HueAlphaMask hue;
        DistanceAlphaMask distance;
        QList<QSharedPointer<ImageEffectPass>> passes;
        const auto add = [&](const char *variant, ImageEffect::BlendMode mode, AlphaMask *mask,
                             const char *id) {
            TestEffect effect({}, QString::fromLatin1(id));
            effect.variant = QLatin1String(variant);
            effect.setBlendMode(mode);
            effect.setAlphaMask(mask);
            passes.append(effect.currentState()->effectPass(&m_pbs));
        };
        add("", ImageEffect::Normal, nullptr, "key.A");
        add("", ImageEffect::Normal, nullptr, "key.B");
        add(":7", ImageEffect::Normal, nullptr, "key.A");
        add("", ImageEffect::Add, nullptr, "key.A");
        add("", ImageEffect::Multiply, nullptr, "key.A");
        add("", ImageEffect::Normal, &hue, "key.A");
        add("", ImageEffect::Normal, &distance, "key.A");
        add("", ImageEffect::Add, &distance, "key.A");
        for (int i = 0; i < passes.size(); ++i) {
            QCOMPARE(passes.indexOf(passes.at(i)), i);
        }
    }

    void luminanceAndHueMasksShareThePassCompiledFirst()
    {
        LuminanceAlphaMask luminance;
        HueAlphaMask hue;
        TestEffect first(QByteArray(), QStringLiteral("share.First"));
        TestEffect second(QByteArray(), QStringLiteral("share.First"));
        first.setAlphaMask(&luminance);
        second.setAlphaMask(&hue);
        const auto pass = first.currentState()->effectPass(&m_pbs);
        QCOMPARE(second.currentState()->effectPass(&m_pbs), pass);
        QVERIFY(pass->shaders().last()->sourceCode().contains(shader("am_luminance.frag")));
    }

    void uniformsAreResolvedOncePerPass()
    {
        TestEffect effect(QByteArray(), QStringLiteral("resolve.Once"));
        const auto state = effect.testState();
        const auto pass = state->effectPass(&m_pbs);
        state->effectPass(&m_pbs);
        QCOMPARE(state->resolves, 1);
        QCOMPARE(state->initializations, 1);
        effect.setBlendMode(ImageEffect::Add);
        effect.currentState();
        state->effectPass(&m_pbs);
        QCOMPARE(state->resolves, 2);
        QCOMPARE(state->initializations, 2);
        TestEffect alike(QByteArray(), QStringLiteral("resolve.Once"));
        QCOMPARE(alike.currentState()->effectPass(&m_pbs), pass);
        QCOMPARE(alike.testState()->resolves, 1);
        QCOMPARE(alike.testState()->initializations, 0);
    }

    void samplersAndAlphaAreSet()
    {
        HueAlphaMask mask;
        TestEffect effect(TestEffect::pieceOf("vec3(0.5)"), QStringLiteral("uniforms"));
        effect.setAlphaMask(&mask);
        effect.setAlpha(0.5F);
        PixelBufferState pbs;
        pbs.imageEffectAlpha = 0.5F;
        const auto pass = effect.currentState()->effectPass(&pbs);
        QCOMPARE(intUniform(pass.data(), "u_source"), 0);
        QCOMPARE(intUniform(pass.data(), "u_maskGradient"), 4);
        QCOMPARE(floatUniform(pass.data(), "u_alpha"), 0.25F);
        effect.currentState()->effectPass(&m_pbs);
        QCOMPARE(floatUniform(pass.data(), "u_alpha"), 0.5F);
    }

    void effectPassBindsTheMaskAndReleasesTheProgram()
    {
        QOpenGLFunctions *gl = m_gl.context()->functions();
        HueAlphaMask mask;
        TestEffect effect;
        effect.setAlphaMask(&mask);
        const auto state = effect.currentState();
        gl->glActiveTexture(GL_TEXTURE4);
        gl->glBindTexture(GL_TEXTURE_2D, 0);
        state->effectPass(&m_pbs);
        GLint value = 0;
        gl->glGetIntegerv(GL_CURRENT_PROGRAM, &value);
        QCOMPARE(value, 0);
        gl->glActiveTexture(GL_TEXTURE4);
        gl->glGetIntegerv(GL_TEXTURE_BINDING_2D, &value);
        QVERIFY(value != 0);
    }

    void effectsOfOneKindKeepTheirOwnUniforms()
    {
        ChannelShiftImageEffect first;
        ChannelShiftImageEffect second;
        first.setAlpha(0.25F);
        second.setAlpha(0.75F);
        const auto pass = first.currentState()->effectPass(&m_pbs);
        QCOMPARE(floatUniform(pass.data(), "u_alpha"), 0.25F);
        QCOMPARE(second.currentState()->effectPass(&m_pbs), pass);
        QCOMPARE(floatUniform(pass.data(), "u_alpha"), 0.75F);
    }

private:
    OffscreenGl m_gl;
    const PixelBufferState m_pbs{};
};

KORVEL_TEST_MAIN(ImageEffectStateTest)

#include "tst_imageeffectstate.moc"
