#include "benchmarks/FrameBenchmarks.h"

#include "benchmarks/EffectCases.h"
#include "benchmarks/Fixture.h"
#include "benchmarks/FrameScene.h"
#include "benchmarks/Results.h"
#include "benchmarks/Rounds.h"

#include "imagefx/model/ImageEffect.h"
#include "imagefx/quick/PixelBuffer.h"
#include "imagefx/render/BasePass.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/ImageEffectState.h"
#include "imagefx/render/PassTargets.h"
#include "imagefx/render/PixelBufferState.h"

#include <benchmark/benchmark.h>

#include <numeric>
#include <utility>

namespace ko::imagefx::benchmarks
{

namespace
{

const char *const frameTable = "Frames";
const char *const frameNote =
    "The frame of a window that a PixelBuffer with six effects fills, one of which has just "
    "changed. "
    "\"window\" is the same with an unchanged item: what the scene graph takes to put its picture "
    "on "
    "the screen. \"passes\" is the sum of a plain copy and the six effects, each drawn offscreen "
    "and "
    "timed by itself, in turns with the frames. The ratio is that of frame less window to passes.";

const std::vector<const char *> shownEffects{
    "BrightnessContrast", "HSV", "Exposure", "LookupTable", "GrayScale", "SelectiveSaturation"};

// The passes of the same frame, drawn one by one.
class Passes
{
public:
    Passes(const QImage &picture, const std::vector<std::unique_ptr<ImageEffect>> &effects)
        : m_effects(effects),
          m_size(picture.size()),
          m_picture(m_size, GL_TEXTURE_2D),
          m_source(m_size, GL_TEXTURE_2D),
          m_target(m_size, GL_TEXTURE_2D),
          m_basePass(BasePass::shared())
    {
        fill(m_picture.texture(), picture);
    }

    void copy()
    {
        prepareState(m_size);
        m_source.bind();
        m_basePass->draw(m_picture.texture(), QRectF(0, 0, 1, 1));
        m_source.release();
    }

    void draw(std::size_t index, const PassTargets &targets) const
    {
        prepareState(m_size);
        const QSharedPointer<ImageEffectState> state = m_effects[index]->currentState();
        const QSharedPointer<ImageEffectPass> pass = state->effectPass(&m_pbs);
        pass->render(targets, state.data(), &m_pbs);
    }

    std::vector<Contender> contenders()
    {
        std::vector<Contender> all{{"copy", [this] { copy(); }}};
        for (std::size_t i = 0; i < m_effects.size(); ++i) {
            all.push_back({shownEffects[i], [this, i] { draw(i, {&m_source, &m_target}); }});
        }
        return all;
    }

    // All of them, one after the other.
    QImage picture()
    {
        copy();
        PassTargets targets{&m_source, &m_target};
        for (std::size_t i = 0; i < m_effects.size(); ++i) {
            draw(i, targets);
            std::swap(targets.source, targets.target);
        }
        targets.source->bind();
        QImage drawn = readBound(m_size);
        targets.source->release();
        copy(); // what the contenders read
        return drawn;
    }

private:
    const std::vector<std::unique_ptr<ImageEffect>> &m_effects;
    const QSize m_size;
    const PixelBufferState m_pbs;
    QOpenGLFramebufferObject m_picture;
    QOpenGLFramebufferObject m_source;
    QOpenGLFramebufferObject m_target;
    const QSharedPointer<BasePass> m_basePass;
};

void frame(::benchmark::State &state, const QSize &size)
{
    std::vector<std::unique_ptr<ImageEffect>> effects;
    effects.reserve(shownEffects.size());
    for (const char *name : shownEffects) {
        effects.push_back(findEffectCase(name)->makeEffect());
    }
    const QImage picture = makePicture(size, QImage::Format_RGBA8888_Premultiplied);
    FrameScene scene(picture);
    for (const auto &effect : effects) {
        scene.item()->insertEffect(effect.get());
    }
    // A new source is shown by the second frame at the latest.
    scene.draw();
    scene.draw();
    Passes passes(picture, effects);
    const bool alike = scene.read() == passes.picture().mirrored();
    if (!alike) {
        Results::instance().fail("frame: the item and its passes draw different pixels");
    }
    if (!checkGl("frame") || !alike) {
        state.SkipWithError("not the right pixels");
        return;
    }

    const auto edited = [&] {
        Q_EMIT effects.front()->updateRequired();
        scene.draw();
    };
    std::vector<Contender> contenders = passes.contenders();
    contenders.push_back({"window", [&] { scene.draw(); }});
    contenders.push_back({"frame", edited});
    const std::vector<double> medians = interleave(state, contenders);
    const double whole = medians.back();
    const double window = medians[medians.size() - 2];
    const double sum = std::accumulate(medians.begin(), medians.end() - 2, 0.0);
    state.counters["ratio"] = (whole - window) / sum;
    Results::instance().add(frameTable, {{{"size", label(size)}},
                                         {{"frame", whole, false},
                                          {"window", window, false},
                                          {"passes", sum, false},
                                          {"ratio", (whole - window) / sum, true}}});
    checkGl("frame");
}

} // namespace

void registerFrameBenchmarks(const Plan &plan)
{
    Results::instance().note(frameTable, frameNote);
    const QSize size = plan.smoke ? plan.sizes.front() : QSize(1920, 1080);
    ::benchmark::RegisterBenchmark(("frame/" + label(size)).c_str(),
                                   [size](::benchmark::State &state) { frame(state, size); })
        ->Iterations(plan.rounds(size))
        ->UseManualTime()
        ->Unit(::benchmark::kMillisecond);
}

} // namespace ko::imagefx::benchmarks
