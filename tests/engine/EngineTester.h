#pragma once

#include "imagefx/model/ImageEffect.h"
#include "tests/support/EngineRendering.h"
#include "tests/support/StackTester.h"

#include <array>
#include <functional>
#include <memory>

namespace ko::imagefx::test
{

// One effect of every kind that there is, those with neighbours and batches among them.
struct EngineCase {
    QString name;
    std::function<std::unique_ptr<ImageEffect>()> create;
    PictureEffect model;
};
QVector<EngineCase> engineCases();

// Pictures of the GPU and of the engine, both beside the model and beside each other. Prints at the
// end how far the two engines are apart.
class EngineTester : public StackTester
{
public:
    // One pass rounds once: two engines that are right may choose neighbouring levels.
    static constexpr int onePass = 1;
    // What is left of such choices at the end of a stack.
    static constexpr int aStack = 2;

    // `mostLevels`: how far the engines may be apart where the model leaves no doubt.
    explicit EngineTester(int mostLevels) : m_mostLevels(mostLevels) {}
    ~EngineTester() override;

    // Empty when both engines draw what the model says, and the same. Needs a current GL context.
    QByteArray check(const QList<ImageEffect *> &effects, const ModelStack &model,
                     const QImage &source, const RenderSettings &settings = {}) override;
    // The same for one effect that sees only its own pixel. No pixel is left out.
    QByteArray check(ImageEffect *effect, const EffectModel &model, const QImage &source);
    // The same for pictures that have been rendered.
    QByteArray compare(const QImage &engine, const QImage &gl, const StackPicture &expected,
                       const QImage &source);
    // The same, and no pixel is left out.
    QByteArray compare(const QImage &engine, const QImage &gl, const ExpectedPixel &expected,
                       const QImage &source);
    // For stacks without a model: no pixel is in doubt.
    QByteArray compare(const QImage &engine, const QImage &gl);

private:
    Q_DISABLE_COPY(EngineTester)

    QByteArray compareWithGl(const QImage &engine, const QImage &gl, const ExpectedPixel &expected);

    const int m_mostLevels;
    int m_pictures = 0;
    // Pixels by how far the engines are apart, in levels of the worst channel.
    std::array<qint64, 256> m_pixels{};
    qint64 m_inDoubt = 0;
};

} // namespace ko::imagefx::test
