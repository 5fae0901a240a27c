#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/BatchImageEffectState.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/GrayScaleImageEffect.h"
#include "imagefx/effects/SharpenImageEffect.h"
#include "imagefx/render/PixelBufferState.h"
#include "tests/engine/EngineTester.h"
#include "tests/support/EffectCases.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/PictureTester.h"
#include "tests/support/RandomStack.h"
#include "tests/support/TableCases.h"
#include "tests/support/TestMain.h"

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

void append(BatchImageEffect *batch, ImageEffect *effect)
{
    auto list = batch->imageEffects();
    list.append(&list, effect);
}

void clear(BatchImageEffect *batch)
{
    auto list = batch->imageEffects();
    list.clear(&list);
}

// An effect of one of the colour kinds with its model.
struct Part {
    Part(const QString &kind, int number)
        : effect(effectCases(kind).at(number).create()),
          model{pictureEffect(effectCases(kind).at(number).model)}
    {
    }
    explicit Part(const EffectCase &part) : effect(part.create()), model{pictureEffect(part.model)}
    {
    }

    void setAlpha(float alpha)
    {
        effect->setAlpha(alpha);
        model.alpha = double(alpha);
    }
    void setMask(const MaskCase &maskCase)
    {
        mask = maskCase.create();
        effect->setAlphaMask(mask.get());
        model.mask = maskCase.model();
    }
    void disable()
    {
        effect->setEnabled(false);
        model.skippedInBatch = true;
    }

    std::unique_ptr<ImageEffect> effect;
    std::unique_ptr<AlphaMask> mask;
    ModelMember model;
};

Part exposurePart()
{
    return Part(exposure(0.4F, -0.3F, 0.2F));
}

Part saturationPart()
{
    return Part(selectiveSaturation({0.5F, -0.4F, 0.3F, -0.8F, 1.0F, 0.2F, -1.0F, 0.6F}));
}

Part hsvPart()
{
    return Part(QStringLiteral("HSV"), 4);
}

Part shiftPart()
{
    return Part(QStringLiteral("ChannelShift"), 2);
}

} // namespace

class BatchTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void anEmptyBatchIsNeutral();
    void anEmptyBatchBlendsTheSourceWithItself();
    void oneEffectInABatchIsThatEffect_data();
    void oneEffectInABatchIsThatEffect();
    void effectsAreAppliedInOrder();
    void effectsThatAreOffOrNeutralAreSkipped();
    void aBatchOfSkippedEffectsIsTheSource();
    void theAlphaFactorCountsInsideToo();
    void alphaIsUntouched();
    void jsonRoundTrip();
    void batchesTwoDeepMatchTheModel();
    void nestedRadiiFollowTheRenderScale();
    void theOuterBatchHoldsWhateverItsEffectsDo();
    void everyBlendModeMatchesTheModel_data();
    void everyBlendModeMatchesTheModel();
    void changedEffectsShowInTheNextPicture();
    void batchesShareOneProgram();
    void theStateGivesItsPiece();

private:
    std::unique_ptr<OffscreenGl> m_gl;
};

// Hue and luminance masks share passes within a context.
void BatchTest::init()
{
    m_gl = std::make_unique<OffscreenGl>();
    QVERIFY(m_gl->isValid());
}

void BatchTest::cleanup()
{
    m_gl.reset();
}

void BatchTest::anEmptyBatchIsNeutral()
{
    BatchImageEffect batch;
    QVERIFY(batch.isNeutral());
    QVERIFY(batch.currentState()->passDisabled());
    KORVEL_CHECK(checkIdentity({&batch}, opaquePicture()));
    KORVEL_CHECK(checkIdentity({&batch}, translucentPicture()));
    GrayScaleImageEffect gray;
    gray.setEnabled(false);
    append(&batch, &gray);
    QVERIFY(!batch.isNeutral());
    QVERIFY(!batch.currentState()->passDisabled());
}

void BatchTest::anEmptyBatchBlendsTheSourceWithItself()
{
    BatchImageEffect batch;
    batch.setBlendMode(ImageEffect::Multiply);
    QCOMPARE(rendered(&batch, {128, 51, 255, 255}), QVector<int>({64, 10, 255, 255}));
    batch.setAlpha(0.9F);
    QVERIFY(!batch.currentState()->passDisabled());
    batch.setAlpha(0.5F);
    QCOMPARE(rendered(&batch, {128, 51, 255, 255}), QVector<int>({96, 31, 255, 255}));
}

void BatchTest::oneEffectInABatchIsThatEffect_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString &kind : effectKinds()) {
        QTest::newRow(qPrintable(kind)) << kind;
    }
}

void BatchTest::oneEffectInABatchIsThatEffect()
{
    QFETCH(QString, kind);
    const std::unique_ptr<ImageEffect> effect = effectCases(kind).at(2).create();
    effect->setAlpha(0.7F);
    BatchImageEffect batch;
    append(&batch, effect.get());
    for (const QImage &source : {opaquePicture(), translucentPicture()}) {
        KORVEL_CHECK(checkDrawTheSame({&batch}, {effect.get()}, source));
    }
}

void BatchTest::effectsAreAppliedInOrder()
{
    ColorFillImageEffect fill;
    fill.setColor(QColor(200, 100, 50));
    GrayScaleImageEffect gray;
    BatchImageEffect batch;
    batch.setImageEffectList({&fill, &gray});
    // 0.344 * 200 + 0.5 * 100 + 0.156 * 50
    QCOMPARE(rendered(&batch, {1, 2, 3, 255}), QVector<int>({127, 127, 127, 255}));
    batch.setImageEffectList({&gray, &fill});
    QCOMPARE(rendered(&batch, {1, 2, 3, 255}), QVector<int>({200, 100, 50, 255}));
}

// Also where it makes the number of draws odd or even.
void BatchTest::effectsThatAreOffOrNeutralAreSkipped()
{
    const Part first = hsvPart();
    const Part last = shiftPart();
    Part off = exposurePart();
    off.disable();
    Part invisible = exposurePart();
    invisible.setAlpha(0.001F);
    const Part neutral(exposure(0.0F, 0.0F, 0.0F));
    const QImage source = opaquePicture();
    const QList<ImageEffect *> skipped = {off.effect.get(), invisible.effect.get(),
                                          neutral.effect.get()};
    BatchImageEffect batch;
    for (ImageEffect *member : skipped) {
        batch.setImageEffectList({first.effect.get(), member, last.effect.get()});
        KORVEL_CHECK(checkDrawTheSame({&batch}, {first.effect.get(), last.effect.get()}, source));
        batch.setImageEffectList({member, first.effect.get()});
        KORVEL_CHECK(checkDrawTheSame({&batch}, {first.effect.get()}, source));
        batch.setImageEffectList({first.effect.get(), member});
        KORVEL_CHECK(checkDrawTheSame({&batch}, {first.effect.get()}, source));
    }
}

void BatchTest::aBatchOfSkippedEffectsIsTheSource()
{
    ColorFillImageEffect off;
    off.setEnabled(false);
    BatchImageEffect batch;
    append(&batch, &off);
    KORVEL_CHECK(checkIdentity({&batch}, translucentPicture()));
    batch.setBlendMode(ImageEffect::Multiply);
    QCOMPARE(rendered(&batch, {128, 51, 255, 255}), QVector<int>({64, 10, 255, 255}));
}

// Half of white over black inside, half of that outside.
void BatchTest::theAlphaFactorCountsInsideToo()
{
    ColorFillImageEffect white;
    white.setColor(Qt::white);
    BatchImageEffect batch;
    append(&batch, &white);
    QImage black(2, 2, QImage::Format_RGBA8888);
    black.fill(Qt::black);
    RenderSettings settings;
    settings.globalAlpha = 0.5F;
    QCOMPARE(drawnAlike({&batch}, black, settings).pixelColor(0, 0).red(), 64);
    BatchImageEffect outer;
    append(&outer, &batch);
    QCOMPARE(drawnAlike({&outer}, black, settings).pixelColor(0, 0).red(), 32);
}

void BatchTest::alphaIsUntouched()
{
    const Part first = hsvPart();
    const Part second = exposurePart();
    BatchImageEffect batch;
    batch.setImageEffectList({first.effect.get(), second.effect.get()});
    KORVEL_CHECK(checkAlphaUntouched(&batch));
}

void BatchTest::jsonRoundTrip()
{
    ImageEffect::initialize();
    Part masked = shiftPart();
    masked.setMask(maskCases(ModelMaskKind::Distance).at(1));
    const Part table = exposurePart();
    const Part last(QStringLiteral("GrayScale"), 1);
    Part inner(lookupTableCases().first());
    inner.setMask(maskCases(ModelMaskKind::Hue).first());
    BatchImageEffect nested;
    nested.setAlpha(0.25F);
    nested.setAlphaMask(inner.mask.get());
    append(&nested, inner.effect.get());
    BatchImageEffect batch;
    for (ImageEffect *effect : QList<ImageEffect *>{masked.effect.get(), &nested,
                                                    table.effect.get(), last.effect.get()}) {
        append(&batch, effect);
    }
    const QJsonObject json = ImageEffect::serialize(&batch);
    QCOMPARE(json.value(QLatin1String("imageEffects")).toArray().size(), 4);
    const OwnedEffects read({ImageEffect::unserialize(json)});
    QCOMPARE(ImageEffect::serialize(read.list().first()), json);
    const auto *copy = qobject_cast<const BatchImageEffect *>(read.list().first());
    QVERIFY(copy != nullptr);
    QCOMPARE(copy->imageEffectList().size(), 4);
    QCOMPARE(copy->imageEffectList().at(0)->alphaMask()->gradientStopList().size(),
             masked.mask->gradientStopList().size());
    QVERIFY(qobject_cast<BatchImageEffect *>(copy->imageEffectList().at(1)) != nullptr);
}

void BatchTest::batchesTwoDeepMatchTheModel()
{
    Part a = hsvPart();
    a.setAlpha(0.8F);
    Part off = shiftPart();
    off.disable();
    Part b = exposurePart();
    b.setMask(maskCases(ModelMaskKind::Distance).first());
    const Part c = saturationPart();
    Part alsoOff = hsvPart();
    alsoOff.disable();
    BatchImageEffect inner;
    inner.setImageEffectList({alsoOff.effect.get(), b.effect.get(), c.effect.get()});
    inner.setAlpha(0.6F);
    inner.setBlendMode(ImageEffect::Screen);
    ModelMember innerModel;
    innerModel.effect = modelBatch({alsoOff.model, b.model, c.model});
    innerModel.alpha = double(0.6F);
    innerModel.blendMode = ImageEffect::Screen;
    BatchImageEffect outer;
    outer.setImageEffectList({a.effect.get(), off.effect.get(), &inner});
    outer.setAlpha(0.9F);
    ModelMember outerModel;
    outerModel.effect = modelBatch({a.model, off.model, innerModel});
    outerModel.alpha = double(0.9F);
    EngineTester tester(EngineTester::aStack);
    KORVEL_CHECK(tester.check({&outer}, {outerModel}, opaquePicture()));
    KORVEL_CHECK(tester.check({&outer}, {outerModel}, translucentPicture()));
    RenderSettings half;
    half.globalAlpha = 0.5F;
    KORVEL_CHECK(tester.check({&outer}, {outerModel}, opaquePicture(), half));
}

// Effects of two passes inside a batch: each has a framebuffer of its own on unit 1.
void BatchTest::nestedRadiiFollowTheRenderScale()
{
    BlurImageEffect blur;
    blur.setRadius(4.6F);
    SharpenImageEffect sharpen;
    sharpen.setRadius(4.6F);
    const Part gray(QStringLiteral("GrayScale"), 5);
    BatchImageEffect batch;
    batch.setImageEffectList({&sharpen, &blur, gray.effect.get()});
    ModelMember blurred;
    blurred.effect = modelBlur(double(4.6F));
    ModelMember sharpened;
    sharpened.effect = modelSharpen(0.5, double(4.6F));
    ModelMember model;
    model.effect = modelBatch({sharpened, blurred, gray.model});
    EngineTester tester(EngineTester::aStack);
    for (const float scale : {0.25F, 0.5F, 1.0F, 2.0F}) {
        RenderSettings settings;
        settings.relativeScale = scale;
        KORVEL_CHECK(tester.check({&batch}, {model}, opaquePicture(), settings));
    }
}

// The nested effects bind tables and masks of their own, and the inner batch, under the same mask
// kind, draws with the very program of the outer one.
void BatchTest::theOuterBatchHoldsWhateverItsEffectsDo()
{
    const QVector<MaskCase> masks = maskCases(ModelMaskKind::Luminance);
    Part filled(QStringLiteral("ColorFill"), 4);
    filled.setMask(masks.at(1));
    Part saturated = saturationPart();
    saturated.setMask(masks.at(2));
    const Part exposed = exposurePart();
    const std::unique_ptr<AlphaMask> innerMask = masks.at(3).create();
    BatchImageEffect inner;
    inner.setImageEffectList({exposed.effect.get(), saturated.effect.get()});
    inner.setAlphaMask(innerMask.get());
    ModelMember innerModel;
    innerModel.effect = modelBatch({exposed.model, saturated.model});
    innerModel.mask = masks.at(3).model();
    const std::unique_ptr<AlphaMask> outerMask = masks.at(0).create();
    BatchImageEffect outer;
    outer.setAlpha(0.5F);
    outer.setAlphaMask(outerMask.get());
    ModelMember outerModel;
    outerModel.alpha = 0.5;
    outerModel.mask = masks.at(0).model();
    EngineTester tester(EngineTester::aStack);
    for (const bool innerLast : {true, false}) {
        outer.setImageEffectList(innerLast ? QList<ImageEffect *>{filled.effect.get(), &inner}
                                           : QList<ImageEffect *>{&inner, filled.effect.get()});
        outerModel.effect = modelBatch(innerLast ? ModelStack{filled.model, innerModel}
                                                 : ModelStack{innerModel, filled.model});
        KORVEL_CHECK(tester.check({&outer}, {outerModel}, opaquePicture()));
        KORVEL_CHECK(tester.check({&outer}, {outerModel}, translucentPicture()));
    }
}

void BatchTest::everyBlendModeMatchesTheModel_data()
{
    addMaskKinds();
}

void BatchTest::everyBlendModeMatchesTheModel()
{
    QFETCH(int, maskKind);
    const Part first = exposurePart();
    const Part second(QStringLiteral("GrayScale"), 5);
    BatchImageEffect batch;
    batch.setImageEffectList({first.effect.get(), second.effect.get()});
    EngineTester tester(EngineTester::aStack);
    KORVEL_CHECK(tester.checkBlendModes(&batch, modelBatch({first.model, second.model}),
                                        ModelMaskKind(maskKind)));
}

void BatchTest::changedEffectsShowInTheNextPicture()
{
    ColorFillImageEffect fill;
    BatchImageEffect batch;
    append(&batch, &fill);
    QCOMPARE(rendered(&batch, {1, 2, 3, 255}), QVector<int>({255, 0, 0, 255}));
    fill.setColor(QColor(0, 255, 0));
    QCOMPARE(rendered(&batch, {1, 2, 3, 255}), QVector<int>({0, 255, 0, 255}));
    clear(&batch);
    QCOMPARE(rendered(&batch, {1, 2, 3, 255}), QVector<int>({1, 2, 3, 255}));
}

void BatchTest::batchesShareOneProgram()
{
    const PixelBufferState pbs;
    BatchImageEffect first;
    BatchImageEffect second;
    GrayScaleImageEffect gray;
    append(&second, &gray);
    QCOMPARE(first.currentState()->effectPass(&pbs), second.currentState()->effectPass(&pbs));
}

void BatchTest::theStateGivesItsPiece()
{
    BatchImageEffect effect;
    const QString id = QStringLiteral("ko.orvanto.imageeffect.Batch");
    QCOMPARE(effect.effectId(), id);
    QCOMPARE(effect.currentState()->effectId(), id);
    QVERIFY(!shaderPieceOf(&effect).isEmpty());
    QCOMPARE(shaderPieceOf(&effect), ImageEffect::readShader(QStringLiteral("fx_batch.frag")));
}

KORVEL_TEST_MAIN(BatchTest)
#include "tst_batch.moc"
