#include "engine/EffectEngine.h"
#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/GrayScaleImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/effects/SharpenImageEffect.h"
#include "imagefx/model/AlphaMask.h"
#include "tests/engine/EngineTester.h"
#include "tests/support/EffectCases.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/RandomStack.h"
#include "tests/support/TestMain.h"

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

void addKinds()
{
    QTest::addColumn<int>("number");
    const QVector<EngineCase> cases = engineCases();
    for (int number = 0; number < cases.size(); ++number) {
        QTest::newRow(qPrintable(cases.at(number).name)) << number;
    }
}

const QVector<QImage> &bothPictures()
{
    static const QVector<QImage> pictures = {opaquePicture(), translucentPicture()};
    return pictures;
}

// The failure of a check with the case that it was about; empty when there is none.
QByteArray about(const QByteArray &name, const QByteArray &difference)
{
    return difference.isEmpty() ? difference : name + ": " + difference;
}

ImageEffect *adopted(QObject *owner, std::unique_ptr<ImageEffect> effect)
{
    effect->setParent(owner);
    return effect.release();
}

} // namespace

// Single effects, drawn by both engines: a level apart at most.
class EngineEffectsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void everyEffectUnderEveryMaskAndBlendMode_data();
    void everyEffectUnderEveryMaskAndBlendMode();
    void everyValueOfTheColorEffects_data();
    void everyValueOfTheColorEffects();
    void everyGradientOfEveryMask_data() { addMaskKinds(); }
    void everyGradientOfEveryMask();
    void alphasBeyondWhatASliderOffers_data() { addKinds(); }
    void alphasBeyondWhatASliderOffers();
    void effectsThatAreOffOrNeutralAreDrawn();
    void batchesWithinBatches();
    void batchesLeaveOutWhatIsOffOrNeutral();
    void aBatchOfNothingBlendsTheSourceWithItself();
    void atRestANeutralMemberKeepsItsBlendMode();

private:
    std::unique_ptr<OffscreenGl> m_gl;
    std::unique_ptr<EngineTester> m_tester;
};

void EngineEffectsTest::initTestCase()
{
    m_tester = std::make_unique<EngineTester>(EngineTester::onePass);
}

void EngineEffectsTest::cleanupTestCase()
{
    m_tester.reset();
}

// Hue and luminance masks share passes within a context.
void EngineEffectsTest::init()
{
    m_gl = std::make_unique<OffscreenGl>();
    QVERIFY(m_gl->isValid());
}

void EngineEffectsTest::cleanup()
{
    m_gl.reset();
}

void EngineEffectsTest::everyEffectUnderEveryMaskAndBlendMode_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("maskKind");
    const QVector<EngineCase> cases = engineCases();
    for (int number = 0; number < cases.size(); ++number) {
        for (const auto kind : {ModelMaskKind::None, ModelMaskKind::Distance, ModelMaskKind::Hue,
                                ModelMaskKind::Luminance}) {
            QTest::addRow("%s, mask %s", qPrintable(cases.at(number).name),
                          qPrintable(maskKindName(kind)))
                << number << int(kind);
        }
    }
}

void EngineEffectsTest::everyEffectUnderEveryMaskAndBlendMode()
{
    QFETCH(int, number);
    QFETCH(int, maskKind);
    const EngineCase made = engineCases().at(number);
    const std::unique_ptr<ImageEffect> effect = made.create();
    const MaskCase maskCase = maskCases(ModelMaskKind(maskKind)).first();
    const std::unique_ptr<AlphaMask> mask = maskCase.create();
    effect->setAlphaMask(mask.get());
    ModelMember model{made.model, ImageEffect::Normal, 1.0, maskCase.model()};
    for (int mode = ImageEffect::Normal; mode <= ImageEffect::DarkenOnly; ++mode) {
        effect->setBlendMode(ImageEffect::BlendMode(mode));
        model.blendMode = mode;
        for (const float alpha : {1.0F, 0.4F}) {
            effect->setAlpha(alpha);
            model.alpha = double(alpha);
            for (const QImage &source : bothPictures()) {
                KORVEL_CHECK(about("blend mode " + QByteArray::number(mode),
                                   m_tester->check({effect.get()}, {model}, source)));
            }
        }
    }
}

void EngineEffectsTest::everyValueOfTheColorEffects_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString &kind : effectKinds()) {
        QTest::newRow(qPrintable(kind)) << kind;
    }
}

void EngineEffectsTest::everyValueOfTheColorEffects()
{
    QFETCH(QString, kind);
    for (const EffectCase &effectCase : effectCases(kind)) {
        const std::unique_ptr<ImageEffect> effect = effectCase.create();
        EffectModel model;
        model.effect = effectCase.model;
        for (const QImage &source : bothPictures()) {
            KORVEL_CHECK(
                about(effectCase.name.toLatin1(), m_tester->check(effect.get(), model, source)));
        }
    }
}

void EngineEffectsTest::everyGradientOfEveryMask()
{
    QFETCH(int, maskKind);
    const EngineCase made = engineCases().at(1);
    for (const MaskCase &maskCase : maskCases(ModelMaskKind(maskKind))) {
        const std::unique_ptr<ImageEffect> effect = made.create();
        const std::unique_ptr<AlphaMask> mask = maskCase.create();
        effect->setAlphaMask(mask.get());
        for (const QImage &source : bothPictures()) {
            const ModelMember model{made.model, ImageEffect::Normal, 1.0, maskCase.model()};
            KORVEL_CHECK(
                about(maskCase.name.toLatin1(), m_tester->check({effect.get()}, {model}, source)));
        }
    }
}

void EngineEffectsTest::alphasBeyondWhatASliderOffers()
{
    QFETCH(int, number);
    const EngineCase made = engineCases().at(number);
    const std::unique_ptr<ImageEffect> effect = made.create();
    for (const float globalAlpha : {1.0F, 0.5F}) {
        RenderSettings settings;
        settings.globalAlpha = globalAlpha;
        // Up to 0.001 an effect counts as switched off, which at the top level changes nothing.
        for (const float alpha : {0.0F, 0.001F, 0.3F, 1.7F, -0.5F}) {
            effect->setAlpha(alpha);
            const ModelMember model{made.model, ImageEffect::Normal, double(alpha)};
            for (const QImage &source : bothPictures()) {
                KORVEL_CHECK(about("alpha " + QByteArray::number(double(alpha)),
                                   m_tester->check({effect.get()}, {model}, source, settings)));
            }
        }
    }
}

void EngineEffectsTest::effectsThatAreOffOrNeutralAreDrawn()
{
    GrayScaleImageEffect off;
    off.setEnabled(false);
    HSVImageEffect neutral;
    neutral.setBlendMode(ImageEffect::Multiply);
    QVERIFY(neutral.isNeutral());
    const ModelMember offModel{pictureEffect(modelGrayScale(0.344, 0.5, 0.156))};
    const ModelMember neutralModel{pictureEffect(modelHsv(0.0, 0.0, 0.0)), ImageEffect::Multiply};
    for (const QImage &source : bothPictures()) {
        KORVEL_CHECK(m_tester->check({&off}, {offModel}, source));
        KORVEL_CHECK(m_tester->check({&neutral}, {neutralModel}, source));
    }
}

// A batch with a mask and an alpha of its own around batches, one of them last, one empty.
void EngineEffectsTest::batchesWithinBatches()
{
    const QVector<EngineCase> cases = engineCases();
    QObject owner;
    EngineTester tester(EngineTester::aStack);
    auto *empty = new BatchImageEffect(&owner);
    auto *inner = new BatchImageEffect(&owner);
    inner->setImageEffectList(
        {adopted(&owner, cases.at(8).create()), empty, adopted(&owner, cases.at(3).create())});
    inner->setAlpha(0.75F);
    inner->setBlendMode(ImageEffect::Screen);
    const ModelMember emptyModel{modelBatch({}), ImageEffect::Normal, 1.0, {}, true};
    const ModelMember innerModel{modelBatch({{cases.at(8).model}, emptyModel, {cases.at(3).model}}),
                                 ImageEffect::Screen, 0.75};
    const MaskCase maskCase = maskCases(ModelMaskKind::Luminance).first();
    const std::unique_ptr<AlphaMask> mask = maskCase.create();
    BatchImageEffect outer;
    outer.setImageEffectList({adopted(&owner, cases.at(5).create()), inner});
    outer.setAlpha(0.8F);
    outer.setAlphaMask(mask.get());
    const ModelMember outerModel{modelBatch({{cases.at(5).model}, innerModel}), ImageEffect::Normal,
                                 double(0.8F), maskCase.model()};
    RenderSettings half;
    half.globalAlpha = 0.5F;
    half.relativeScale = 0.5F;
    for (const QImage &source : bothPictures()) {
        KORVEL_CHECK(tester.check({&outer}, {outerModel}, source));
        KORVEL_CHECK(tester.check({&outer}, {outerModel}, source, half));
        const std::unique_ptr<ImageEffect> behind = cases.at(9).create();
        KORVEL_CHECK(
            tester.check({&outer, behind.get()}, {outerModel, {cases.at(9).model}}, source));
    }
}

void EngineEffectsTest::batchesLeaveOutWhatIsOffOrNeutral()
{
    ColorFillImageEffect off;
    off.setEnabled(false);
    ColorFillImageEffect invisible;
    invisible.setAlpha(0.001F);
    HSVImageEffect neutral;
    const QVector<EngineCase> cases = engineCases();
    const std::unique_ptr<ImageEffect> first = cases.at(1).create();
    const std::unique_ptr<ImageEffect> last = cases.at(8).create();
    BatchImageEffect batch;
    batch.setImageEffectList({&off, first.get(), &invisible, &neutral, last.get()});
    EngineTester tester(EngineTester::aStack);
    for (const QImage &source : bothPictures()) {
        KORVEL_CHECK(tester.check(
            {&batch}, {{modelBatch({{cases.at(1).model}, {cases.at(8).model}})}}, source));
    }
    batch.setImageEffectList({&off, &invisible, &neutral});
    for (const QImage &source : bothPictures()) {
        QCOMPARE(renderWithEngine({&batch}, source), renderTexture({&batch}, source));
    }
}

void EngineEffectsTest::aBatchOfNothingBlendsTheSourceWithItself()
{
    BatchImageEffect batch;
    ColorFillImageEffect off;
    off.setEnabled(false);
    for (int mode = ImageEffect::Normal; mode <= ImageEffect::DarkenOnly; ++mode) {
        batch.setBlendMode(ImageEffect::BlendMode(mode));
        for (const QList<ImageEffect *> &members : {QList<ImageEffect *>(), {&off}}) {
            batch.setImageEffectList(members);
            for (const QImage &source : bothPictures()) {
                KORVEL_CHECK(m_tester->check({&batch}, {{modelBatch({}), mode}}, source));
            }
        }
    }
}

// On a screen the first frame tells the state the blend mode, and the next change that the effect,
// though neutral, is not to be skipped for it.
void EngineEffectsTest::atRestANeutralMemberKeepsItsBlendMode()
{
    HSVImageEffect neutral;
    neutral.setBlendMode(ImageEffect::Multiply);
    BatchImageEffect batch;
    auto list = batch.imageEffects();
    list.append(&list, &neutral);
    const QImage source = opaquePicture();
    const QImage firstFrame = renderTexture({&batch}, source);
    EffectEngine::Options options;
    const QImage first = EffectEngine({&batch}, options).render(source);
    options.settled = true;
    const QImage settled = EffectEngine({&batch}, options).render(source);
    neutral.setAlpha(0.5F);
    neutral.setAlpha(1.0F);
    const QImage nextFrame = renderTexture({&batch}, source);
    QCOMPARE(first.convertToFormat(QImage::Format_RGBA8888), firstFrame);
    QVERIFY(nextFrame != firstFrame);
    KORVEL_CHECK(m_tester->compare(settled.convertToFormat(QImage::Format_RGBA8888), nextFrame));
}

KORVEL_TEST_MAIN(EngineEffectsTest)
#include "tst_engine_effects.moc"
