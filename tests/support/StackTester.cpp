#include "tests/support/StackTester.h"

#include "imagefx/model/AlphaMask.h"
#include "imagefx/model/ImageEffect.h"
#include "tests/support/EffectCases.h"
#include "tests/support/PictureTester.h"

#include <QtCore/QDebug>
#include <QtTest/QTest>

#include <algorithm>

namespace ko::imagefx::test
{

StackTester::~StackTester()
{
    if (m_pictures > 0) {
        qInfo("%d pictures compared, %.3f %% of their pixels left out, at most %.3f %% of one",
              m_pictures, 100.0 * m_sum / m_pictures, 100.0 * m_most);
    }
}

QByteArray StackTester::check(const QList<ImageEffect *> &effects, const ModelStack &model,
                              const QImage &source, const RenderSettings &settings)
{
    ModelFrame frame;
    frame.globalAlpha = double(settings.globalAlpha);
    frame.renderScale = double(settings.relativeScale);
    return compare(renderTexture(effects, source, settings), StackPicture(model, source, frame),
                   source);
}

// The model carries what may be rounded on the way in its ranges, so one level is left for the last
// rounding, however many passes there are.
QByteArray StackTester::compare(const QImage &actual, const StackPicture &expected,
                                const QImage &source)
{
    const double leftOut = expected.leftOut();
    ++m_pictures;
    m_sum += leftOut;
    m_most = std::max(m_most, leftOut);
    if (leftOut >= mostLeftOut) {
        return QByteArray::number(100.0 * leftOut) + " % of the pixels are left out";
    }
    const QByteArray difference = comparePictures(actual, expected.expected(), roundingTolerance);
    return difference.isEmpty() ? checkAlphaUntouched(actual, source) : difference;
}

QByteArray StackTester::checkBlendModes(ImageEffect *effect, const PictureEffect &model,
                                        ModelMaskKind maskKind)
{
    const MaskCase maskCase = maskCases(maskKind).first();
    const std::unique_ptr<AlphaMask> mask = maskCase.create();
    effect->setAlphaMask(mask.get());
    ModelMember member;
    member.effect = model;
    member.mask = maskCase.model();
    QByteArray failure;
    for (int mode = ImageEffect::Normal; mode <= ImageEffect::DarkenOnly; ++mode) {
        effect->setBlendMode(ImageEffect::BlendMode(mode));
        member.blendMode = mode;
        for (const QImage &source : {opaquePicture(), translucentPicture()}) {
            const QByteArray difference = check({effect}, {member}, source);
            if (!difference.isEmpty() && failure.isEmpty()) {
                failure = "blend mode " + QByteArray::number(mode) + ": " + difference;
            }
        }
    }
    effect->setAlphaMask(nullptr);
    return failure;
}

void addMaskKinds()
{
    QTest::addColumn<int>("maskKind");
    for (const auto kind : {ModelMaskKind::None, ModelMaskKind::Distance, ModelMaskKind::Hue,
                            ModelMaskKind::Luminance}) {
        QTest::newRow(qPrintable(maskKindName(kind))) << int(kind);
    }
}

} // namespace ko::imagefx::test
