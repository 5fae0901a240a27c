#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/model/ImageEffect.h"
#include "imagefx/render/BasePass.h"
#include "tests/engine/EngineTester.h"
#include "tests/support/EffectCases.h"
#include "tests/support/EffectModel.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/TestMain.h"

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr int blendModes = 16;

// Where a range is wider than half a level, the model says less than a picture could tell. The
// cases here leave at most 0.23 % of the channels so; many more would mean that the model, not the
// shaders, has become too generous.
constexpr double widestShare = 0.004;

// Counts the channels whose range is so wide.
struct Sharpness {
    qint64 channels = 0;
    qint64 wide = 0;

    ExpectedPixel watching(const ExpectedPixel &expected)
    {
        return [this, expected](int x, int y) {
            const PixelRange range = expected(x, y);
            for (const LevelRange &level : range) {
                ++channels;
                wide += level.high - level.low > 0.5 ? 1 : 0;
            }
            return range;
        };
    }
    double share() const { return double(wide) / double(channels); }
};

} // namespace

// Pictures drawn by both engines against the model on the CPU, every pixel of them.
class EffectModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void everyEffectBlendAndMaskMatchesTheModel_data();
    void everyEffectBlendAndMaskMatchesTheModel();
    void everyGradientMatchesTheModel_data();
    void everyGradientMatchesTheModel();
    void theMaskCompiledFirstServesHueAndLuminance_data();
    void theMaskCompiledFirstServesHueAndLuminance();

private:
    QByteArray compare(const EffectCase &effectCase, const MaskCase &maskCase,
                       Sharpness &sharpness);

    const QImage m_opaque = opaquePicture();
    // Without an alpha channel, so that it is uploaded as three bytes a pixel.
    const QImage m_image = m_opaque.convertToFormat(QImage::Format_RGB32);
    const QImage m_translucent = translucentPicture();
    std::unique_ptr<EngineTester> m_tester;
};

void EffectModelTest::initTestCase()
{
    m_tester = std::make_unique<EngineTester>(EngineTester::onePass);
}

void EffectModelTest::cleanupTestCase()
{
    m_tester.reset();
}

void EffectModelTest::everyEffectBlendAndMaskMatchesTheModel_data()
{
    QTest::addColumn<QString>("effectKind");
    QTest::addColumn<int>("maskKind");
    for (const QString &effectKind : effectKinds()) {
        for (const auto maskKind : {ModelMaskKind::None, ModelMaskKind::Distance,
                                    ModelMaskKind::Hue, ModelMaskKind::Luminance}) {
            QTest::addRow("%s, mask %s", qPrintable(effectKind), qPrintable(maskKindName(maskKind)))
                << effectKind << int(maskKind);
        }
    }
}

// A context for every row, since in one context the same pass serves hue and luminance masks.
void EffectModelTest::everyEffectBlendAndMaskMatchesTheModel()
{
    QFETCH(QString, effectKind);
    QFETCH(int, maskKind);
    const OffscreenGl gl;
    QVERIFY(gl.isValid());
    // Held, or it would be compiled anew for every picture.
    const QSharedPointer<BasePass> copyPass = BasePass::shared();
    const QVector<MaskCase> masks = maskCases(ModelMaskKind(maskKind));
    const QVector<EffectCase> effects = effectCases(effectKind);
    QVERIFY(!effects.isEmpty());
    Sharpness sharpness;
    for (int i = 0; i < effects.size(); ++i) {
        const QByteArray difference = compare(effects.at(i), masks.at(i % masks.size()), sharpness);
        QVERIFY2(difference.isEmpty(), difference.constData());
    }
    QVERIFY2(sharpness.share() < widestShare, QByteArray::number(sharpness.share()).constData());
}

QByteArray EffectModelTest::compare(const EffectCase &effectCase, const MaskCase &maskCase,
                                    Sharpness &sharpness)
{
    const std::unique_ptr<ImageEffect> effect = effectCase.create();
    const std::unique_ptr<AlphaMask> mask = maskCase.create();
    effect->setAlphaMask(mask.get());
    EffectModel model;
    model.effect = effectCase.model;
    model.mask = maskCase.model();
    QByteArray failure;
    const QList<ImageEffect *> stack = {effect.get()};
    const auto matches = [&](const QImage &engine, const QImage &gl, const QImage &source,
                             const char *how) {
        const ExpectedPixel expected =
            workedOut(sharpness.watching(model.over(source)), source.size());
        const QByteArray difference = m_tester->compare(engine, gl, expected, source);
        if (!difference.isEmpty()) {
            failure = QStringLiteral("%1, mask %2, blend mode %3, alpha %4, %5: ")
                          .arg(effectCase.name, maskCase.name)
                          .arg(model.blendMode)
                          .arg(model.alpha)
                          .arg(QLatin1String(how))
                          .toLatin1() +
                      difference;
        }
        return difference.isEmpty();
    };
    for (model.blendMode = 0; model.blendMode < blendModes; ++model.blendMode) {
        effect->setBlendMode(ImageEffect::BlendMode(model.blendMode));
        for (const float alpha : {1.0F, 0.6F}) {
            model.alpha = double(alpha);
            effect->setAlpha(alpha);
            if (!matches(renderWithEngine(stack, m_opaque), renderTexture(stack, m_opaque),
                         m_opaque, "opaque texture") ||
                !matches(renderWithEngine(stack, m_translucent),
                         renderTexture(stack, m_translucent), m_translucent,
                         "translucent texture")) {
                return failure;
            }
        }
        if (!matches(renderWithEngine(stack, m_image), renderImage(stack, m_image), m_opaque,
                     "image")) {
            return failure;
        }
    }
    return {};
}

void EffectModelTest::everyGradientMatchesTheModel_data()
{
    QTest::addColumn<int>("maskKind");
    QTest::addColumn<int>("number");
    for (const auto kind :
         {ModelMaskKind::Distance, ModelMaskKind::Hue, ModelMaskKind::Luminance}) {
        const QVector<MaskCase> masks = maskCases(kind);
        for (int i = 0; i < masks.size(); ++i) {
            QTest::addRow("%s, %s", qPrintable(maskKindName(kind)), qPrintable(masks.at(i).name))
                << int(kind) << i;
        }
    }
}

// A fill shows the gradient itself, scaled by the distance from the source's colour.
void EffectModelTest::everyGradientMatchesTheModel()
{
    QFETCH(int, maskKind);
    QFETCH(int, number);
    const OffscreenGl gl;
    QVERIFY(gl.isValid());
    const MaskCase maskCase = maskCases(ModelMaskKind(maskKind)).at(number);
    const std::unique_ptr<AlphaMask> mask = maskCase.create();
    EffectModel model;
    model.mask = maskCase.model();
    for (const auto color : {Qt::black, Qt::white}) {
        ColorFillImageEffect effect;
        effect.setColor(color);
        effect.setAlphaMask(mask.get());
        const double level = color == Qt::white ? 1.0 : 0.0;
        model.effect = modelColorFill(level, level, level);
        KORVEL_CHECK(m_tester->check(&effect, model, m_opaque));
        KORVEL_CHECK(m_tester->check(&effect, model, m_translucent));
    }
}

void EffectModelTest::theMaskCompiledFirstServesHueAndLuminance_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    QTest::newRow("hue first") << int(ModelMaskKind::Hue) << int(ModelMaskKind::Luminance);
    QTest::newRow("luminance first") << int(ModelMaskKind::Luminance) << int(ModelMaskKind::Hue);
}

// The second effect looks the first one's coordinate up in its own gradient. Another blend mode is
// another pass, and gets the mask that it asks for. With GL alone: the engine shares no passes.
void EffectModelTest::theMaskCompiledFirstServesHueAndLuminance()
{
    QFETCH(int, first);
    QFETCH(int, second);
    const OffscreenGl gl;
    QVERIFY(gl.isValid());
    const std::unique_ptr<AlphaMask> firstMask = maskCases(ModelMaskKind(first)).first().create();
    const MaskCase secondCase = maskCases(ModelMaskKind(second)).first();
    const std::unique_ptr<AlphaMask> secondMask = secondCase.create();
    ColorFillImageEffect compiledFirst;
    compiledFirst.setAlphaMask(firstMask.get());
    renderTexture({&compiledFirst}, m_opaque);

    ColorFillImageEffect effect;
    effect.setAlphaMask(secondMask.get());
    EffectModel model;
    model.effect = modelColorFill(1.0, 0.0, 0.0);
    model.mask = secondCase.model();
    model.mask.kind = ModelMaskKind(first);
    KORVEL_COMPARE_PICTURES(renderTexture({&effect}, m_opaque), model.over(m_opaque),
                            roundingTolerance);

    effect.setBlendMode(ImageEffect::Screen);
    model.blendMode = ImageEffect::Screen;
    model.mask.kind = ModelMaskKind(second);
    KORVEL_COMPARE_PICTURES(renderTexture({&effect}, m_opaque), model.over(m_opaque),
                            roundingTolerance);
}

KORVEL_TEST_MAIN(EffectModelTest)
#include "tst_effectmodel.moc"
