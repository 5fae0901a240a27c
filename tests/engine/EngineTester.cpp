#include "tests/engine/EngineTester.h"

#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/SharpenImageEffect.h"
#include "tests/support/EffectCases.h"
#include "tests/support/PictureTester.h"

#include <QtCore/QDebug>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace ko::imagefx::test
{

namespace
{

// How far two engines that both follow the model may be apart: either may be anywhere in the range,
// and rounds from there to one of the nearest two levels.
int levelsInDoubt(const LevelRange &range)
{
    return int(std::floor(range.high - range.low)) + 1;
}

EngineCase colorCase(const QString &kind, int number)
{
    const EffectCase effect = effectCases(kind).at(number);
    return {kind, effect.create, pictureEffect(effect.model)};
}

constexpr float blurRadius = 4.4F;
constexpr float sharpenRadius = 2.7F;
constexpr float sharpenStrength = 0.8F;

EngineCase blurCase()
{
    const auto create = [] {
        auto blur = std::make_unique<BlurImageEffect>();
        blur->setRadius(blurRadius);
        return blur;
    };
    return {QStringLiteral("Blur"), create, modelBlur(double(blurRadius))};
}

EngineCase sharpenCase()
{
    const auto create = [] {
        auto sharpen = std::make_unique<SharpenImageEffect>();
        sharpen->setRadius(sharpenRadius);
        sharpen->setStrength(sharpenStrength);
        return sharpen;
    };
    return {QStringLiteral("Sharpen"), create,
            modelSharpen(double(sharpenStrength), double(sharpenRadius))};
}

EngineCase batchCase()
{
    const EngineCase first = colorCase(QStringLiteral("Exposure"), 0);
    const EngineCase second = colorCase(QStringLiteral("GrayScale"), 5);
    const auto create = [first, second] {
        auto batch = std::make_unique<BatchImageEffect>();
        QList<ImageEffect *> members = {first.create().release(), second.create().release()};
        for (ImageEffect *member : members) {
            member->setParent(batch.get());
        }
        batch->setImageEffectList(members);
        return batch;
    };
    return {QStringLiteral("Batch"), create, modelBatch({{first.model}, {second.model}})};
}

} // namespace

QVector<EngineCase> engineCases()
{
    return {colorCase(QStringLiteral("BrightnessContrast"), 2),
            colorCase(QStringLiteral("ChannelShift"), 2),
            colorCase(QStringLiteral("ColorFill"), 4),
            colorCase(QStringLiteral("Exposure"), 0),
            colorCase(QStringLiteral("GrayScale"), 5),
            colorCase(QStringLiteral("HSV"), 4),
            colorCase(QStringLiteral("LUT"), 0),
            colorCase(QStringLiteral("SelectiveSaturation"), 6),
            blurCase(),
            sharpenCase(),
            batchCase()};
}

EngineTester::~EngineTester()
{
    const double pixels = double(std::accumulate(m_pixels.begin(), m_pixels.end(), qint64(0)));
    if (pixels == 0.0) {
        return;
    }
    const auto share = [pixels](qint64 count) { return 100.0 * double(count) / pixels; };
    const qint64 differing = qint64(pixels) - m_pixels[0];
    const qint64 far = differing - m_pixels[1] - m_pixels[2];
    qInfo("engine beside GL: %d pictures, %.4f %% of the pixels differ: %.4f %% by 1 level, "
          "%.4f %% by 2, %.4f %% by more; %.4f %% are in doubt and differ by more than %d",
          m_pictures, share(differing), share(m_pixels[1]), share(m_pixels[2]), share(far),
          share(m_inDoubt), m_mostLevels);
}

QByteArray EngineTester::check(const QList<ImageEffect *> &effects, const ModelStack &model,
                               const QImage &source, const RenderSettings &settings)
{
    ModelFrame frame;
    frame.globalAlpha = double(settings.globalAlpha);
    frame.renderScale = double(settings.relativeScale);
    return compare(renderWithEngine(effects, source, settings),
                   renderTexture(effects, source, settings), StackPicture(model, source, frame),
                   source);
}

QByteArray EngineTester::check(ImageEffect *effect, const EffectModel &model, const QImage &source)
{
    return compare(renderWithEngine({effect}, source), renderTexture({effect}, source),
                   workedOut(model.over(source), source.size()), source);
}

QByteArray EngineTester::compare(const QImage &engine, const QImage &gl,
                                 const StackPicture &expected, const QImage &source)
{
    QByteArray difference = StackTester::compare(gl, expected, source);
    if (!difference.isEmpty()) {
        return "GL beside the model: " + difference;
    }
    difference = StackTester::compare(engine, expected, source);
    if (!difference.isEmpty()) {
        return "the engine beside the model: " + difference;
    }
    return compareWithGl(engine, gl, expected.expected());
}

QByteArray EngineTester::compare(const QImage &engine, const QImage &gl,
                                 const ExpectedPixel &expected, const QImage &source)
{
    for (const auto &[picture, drawer] : {std::pair(&gl, "GL"), std::pair(&engine, "the engine")}) {
        QByteArray difference = comparePictures(*picture, expected, roundingTolerance);
        if (difference.isEmpty()) {
            difference = checkAlphaUntouched(*picture, source);
        }
        if (!difference.isEmpty()) {
            return drawer + (" beside the model: " + difference);
        }
    }
    return compareWithGl(engine, gl, expected);
}

QByteArray EngineTester::compare(const QImage &engine, const QImage &gl)
{
    return compareWithGl(engine, gl, [](int, int) { return PixelRange{}; });
}

QByteArray EngineTester::compareWithGl(const QImage &engine, const QImage &gl,
                                       const ExpectedPixel &expected)
{
    if (engine.size() != gl.size()) {
        return "the engine's picture has another size";
    }
    ++m_pictures;
    // Where the model leaves a doubt this is what the engine drew: nothing is said about it.
    QImage wanted = gl;
    for (int y = 0; y < gl.height(); ++y) {
        const uchar *drawn = engine.constScanLine(y);
        uchar *want = wanted.scanLine(y);
        for (int x = 0; x < gl.width(); ++x) {
            const PixelRange range = expected(x, y);
            int most = 0;
            bool inDoubt = false;
            for (size_t channel = 0; channel < range.size(); ++channel, ++drawn, ++want) {
                const int apart = std::abs(int(*drawn) - int(*want));
                most = std::max(most, apart);
                if (apart > m_mostLevels && apart <= levelsInDoubt(range[channel])) {
                    inDoubt = true;
                    *want = *drawn;
                }
            }
            ++m_pixels[size_t(most)];
            m_inDoubt += inDoubt ? 1 : 0;
        }
    }
    const QByteArray difference = comparePictures(engine, wanted, double(m_mostLevels));
    return difference.isEmpty() ? difference : "the engine beside GL: " + difference;
}

} // namespace ko::imagefx::test
