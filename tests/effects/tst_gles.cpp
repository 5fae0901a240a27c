#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/SharpenImageEffect.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/ImageEffectState.h"
#include "imagefx/render/PixelBufferState.h"
#include "tests/support/EffectCases.h"
#include "tests/support/EffectModel.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/TestMain.h"

#include <algorithm>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

QSurfaceFormat gles()
{
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGLES);
    format.setVersion(2, 0);
    return format;
}

// The modes without a division: dividing by next to nothing, 16-bit floats give next to anything.
const QVector<int> wellConditionedModes = {
    ImageEffect::Normal,      ImageEffect::Add,        ImageEffect::Subtract,
    ImageEffect::Difference,  ImageEffect::Multiply,   ImageEffect::Screen,
    ImageEffect::Overlay,     ImageEffect::HardLight,  ImageEffect::SoftLight,
    ImageEffect::LinearLight, ImageEffect::LinearBurn, ImageEffect::LightenOnly,
    ImageEffect::DarkenOnly};

} // namespace

// All pieces as GLSL ES 1.00, whose lowp and mediump may be 16-bit floats: the model's ranges then
// are as wide as those make them.
class GlesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theContextIsOpenGles2();
    void everyPieceLinks();
    void effectsOfTwoPassesAndBatchesDraw();
    void everyEffectMatchesTheModel_data();
    void everyEffectMatchesTheModel();
    void everyMaskMatchesTheModel_data();
    void everyMaskMatchesTheModel();
    void everyBlendModeMatchesTheModel();

private:
    const QImage m_opaque = opaquePicture();
};

void GlesTest::theContextIsOpenGles2()
{
    OffscreenGl gl(gles());
    QVERIFY(gl.isValid());
    QVERIFY(gl.context()->isOpenGLES());
}

void GlesTest::everyPieceLinks()
{
    const PixelBufferState pbs;
    for (const QString &kind : effectKinds()) {
        for (const auto maskKind : {ModelMaskKind::None, ModelMaskKind::Distance,
                                    ModelMaskKind::Hue, ModelMaskKind::Luminance}) {
            const OffscreenGl gl(gles());
            QVERIFY(gl.isValid());
            const std::unique_ptr<ImageEffect> effect = effectCases(kind).first().create();
            const std::unique_ptr<AlphaMask> mask = maskCases(maskKind).first().create();
            effect->setAlphaMask(mask.get());
            for (int mode = ImageEffect::Normal; mode <= ImageEffect::DarkenOnly; ++mode) {
                effect->setBlendMode(ImageEffect::BlendMode(mode));
                const auto pass = effect->currentState()->effectPass(&pbs);
                QVERIFY2(pass->isLinked(), qPrintable(pass->log()));
            }
        }
    }
}

// On flat colour they leave what they find, so a first pass that does not link shows.
void GlesTest::effectsOfTwoPassesAndBatchesDraw()
{
    const PixelBufferState pbs;
    QImage flat(9, 7, QImage::Format_RGBA8888);
    flat.fill(QColor(200, 100, 50));
    for (const auto maskKind : {ModelMaskKind::None, ModelMaskKind::Distance, ModelMaskKind::Hue,
                                ModelMaskKind::Luminance}) {
        const OffscreenGl gl(gles());
        QVERIFY(gl.isValid());
        const std::unique_ptr<AlphaMask> mask = maskCases(maskKind).first().create();
        BlurImageEffect blur;
        SharpenImageEffect sharpen;
        BatchImageEffect batch;
        batch.setImageEffectList({&blur, &sharpen});
        for (const float radius : {1.0F, 4.4F, 16.0F}) {
            blur.setRadius(radius);
            sharpen.setRadius(radius);
            for (ImageEffect *effect : QList<ImageEffect *>{&blur, &sharpen, &batch}) {
                effect->setAlphaMask(mask.get());
                const auto pass = effect->currentState()->effectPass(&pbs);
                QVERIFY2(pass->isLinked(), qPrintable(pass->log()));
                KORVEL_COMPARE_PICTURES(renderTexture({effect}, flat), flat, roundingTolerance);
            }
        }
    }
}

void GlesTest::everyEffectMatchesTheModel_data()
{
    QTest::addColumn<QString>("kind");
    for (const QString &kind : effectKinds()) {
        QTest::newRow(qPrintable(kind)) << kind;
    }
}

void GlesTest::everyEffectMatchesTheModel()
{
    QFETCH(QString, kind);
    const OffscreenGl gl(gles());
    QVERIFY(gl.isValid());
    const QVector<EffectCase> cases = effectCases(kind);
    for (const EffectCase &effectCase : cases) {
        const std::unique_ptr<ImageEffect> effect = effectCase.create();
        EffectModel model;
        model.effect = effectCase.model;
        model.precision = HalfPrecision;
        const QByteArray difference = comparePictures(renderTexture({effect.get()}, m_opaque),
                                                      model.over(m_opaque), roundingTolerance);
        QVERIFY2(difference.isEmpty(), (effectCase.name.toLatin1() + ' ' + difference).constData());
    }
}

void GlesTest::everyMaskMatchesTheModel_data()
{
    QTest::addColumn<int>("maskKind");
    for (const auto kind :
         {ModelMaskKind::Distance, ModelMaskKind::Hue, ModelMaskKind::Luminance}) {
        QTest::newRow(qPrintable(maskKindName(kind))) << int(kind);
    }
}

void GlesTest::everyMaskMatchesTheModel()
{
    QFETCH(int, maskKind);
    const OffscreenGl gl(gles());
    QVERIFY(gl.isValid());
    const QVector<MaskCase> masks = maskCases(ModelMaskKind(maskKind));
    for (const MaskCase &maskCase : masks) {
        const std::unique_ptr<AlphaMask> mask = maskCase.create();
        ColorFillImageEffect effect;
        effect.setAlphaMask(mask.get());
        EffectModel model;
        model.effect = modelColorFill(1.0, 0.0, 0.0);
        model.mask = maskCase.model();
        model.precision = HalfPrecision;
        const QByteArray difference = comparePictures(renderTexture({&effect}, m_opaque),
                                                      model.over(m_opaque), roundingTolerance);
        QVERIFY2(difference.isEmpty(), (maskCase.name.toLatin1() + ' ' + difference).constData());
    }
}

void GlesTest::everyBlendModeMatchesTheModel()
{
    const OffscreenGl gl(gles());
    QVERIFY(gl.isValid());
    const EffectCase effectCase = effectCases(QStringLiteral("ChannelShift")).at(2);
    const std::unique_ptr<ImageEffect> effect = effectCase.create();
    for (const int mode : wellConditionedModes) {
        effect->setBlendMode(ImageEffect::BlendMode(mode));
        EffectModel model;
        model.effect = effectCase.model;
        model.blendMode = mode;
        model.precision = HalfPrecision;
        const QByteArray difference = comparePictures(renderTexture({effect.get()}, m_opaque),
                                                      model.over(m_opaque), roundingTolerance);
        QVERIFY2(difference.isEmpty(), (QByteArray::number(mode) + ' ' + difference).constData());
    }
}

KORVEL_TEST_MAIN(GlesTest)
#include "tst_gles.moc"
