#include "benchmarks/PassBenchmarks.h"

#include "benchmarks/BareFramebuffer.h"
#include "benchmarks/BareProgram.h"
#include "benchmarks/EffectCases.h"
#include "benchmarks/Fixture.h"
#include "benchmarks/Results.h"
#include "benchmarks/Rounds.h"

#include "imagefx/model/ImageEffect.h"
#include "imagefx/render/BasePass.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/ImageEffectState.h"
#include "imagefx/render/PassTargets.h"
#include "imagefx/render/PixelBufferState.h"

#include <QtGui/QOpenGLFramebufferObject>

#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <optional>

namespace ko::imagefx::benchmarks
{

namespace
{

const char *const passTable = "Passes";
const char *const passNote =
    "Blur, sharpen and batch draw several times and make framebuffers in between, so there is no "
    "single bare GL draw to set beside them, and their pixels are only checked to differ from the "
    "picture: their yardstick is the library's plain copy, measured in turns with them.";

// Two framebuffers of the library's kind and two of the bare kind, both sources with the same
// picture.
struct Canvas {
    explicit Canvas(const QSize &canvasSize)
        : size(canvasSize),
          picture(makePicture(size, QImage::Format_RGBA8888)),
          source(size, GL_TEXTURE_2D),
          target(size, GL_TEXTURE_2D),
          bareSource(size.width(), size.height(), source.format().internalTextureFormat(),
                     source.texture()),
          bareTarget(size.width(), size.height(), source.format().internalTextureFormat(),
                     source.texture())
    {
        fill(source.texture(), picture);
        fill(bareSource.texture(), picture);
        prepareState(size);
    }

    const QSize size;
    const QImage picture;
    QOpenGLFramebufferObject source;
    QOpenGLFramebufferObject target;
    const BareFramebuffer bareSource;
    const BareFramebuffer bareTarget;
};

std::string shader(const char *name)
{
    return ImageEffect::readShader(QString::fromLatin1(name)).toStdString();
}

bool isConfigured(BareProgram *program, const EffectCase &effectCase)
{
    bool configured = program->isLinked() && program->setTextureUnit("u_source", 0) &&
                      program->setUniform("u_alpha", {1.0F});
    for (const EffectCase::Uniform &uniform : effectCase.uniforms) {
        configured = configured && program->setUniform(uniform.name, uniform.components);
    }
    for (const EffectCase::Table &table : effectCase.tables) {
        configured = configured && program->setTextureUnit(table.name, table.unit);
    }
    return configured;
}

// The ways of drawing one row of the table.
struct Match {
    std::function<void()> library;
    std::function<void()> bare; // empty where there is no single program to compare with
    std::function<void()> copy; // empty where the row is the copy itself
};

std::function<void()> libraryCopy(Canvas *canvas)
{
    return [canvas, pass = BasePass::shared()] {
        canvas->target.bind();
        pass->draw(canvas->source.texture(), QRectF(0, 0, 1, 1));
        canvas->target.release();
    };
}

// Draws once with each and compares; whether the picture should have changed depends on the pass.
bool drawsRight(const std::string &name, Canvas *canvas, const Match &match, bool changes)
{
    match.library();
    canvas->target.bind();
    const QImage drawn = readBound(canvas->size);
    bool alike = true;
    if (match.bare) {
        match.bare();
        canvas->bareTarget.bind();
        alike = drawn == readBound(canvas->size);
    }
    canvas->target.release();

    Results &results = Results::instance();
    const bool sensible = (drawn != canvas->picture) == changes;
    if (!alike) {
        results.fail(name + ": the library and bare GL draw different pixels");
    }
    if (!sensible) {
        results.fail(name + (changes ? ": the picture is unchanged" : ": the copy differs"));
    }
    return checkGl(name) && alike && sensible;
}

void compare(::benchmark::State &state, const std::string &name, Canvas *canvas, const Match &match,
             bool changes)
{
    if (!drawsRight(name, canvas, match, changes)) {
        state.SkipWithError("not the right pixels");
        return;
    }
    std::vector<Contender> contenders{{"library", match.library}};
    if (match.bare) {
        contenders.push_back({"bare", match.bare});
    }
    if (match.copy) {
        contenders.push_back({"copy", match.copy});
    }
    const std::vector<double> medians = interleave(state, contenders);
    std::optional<double> bare;
    std::optional<double> ratio;
    std::optional<double> copies;
    if (match.bare) {
        bare = medians[1];
        ratio = medians[0] / medians[1];
        state.counters["ratio"] = *ratio;
    }
    if (match.copy) {
        copies = medians[0] / medians.back();
        state.counters["copies"] = *copies;
    }
    Results::instance().add(passTable, {{{"size", label(canvas->size)}, {"pass", name}},
                                        {{"library", medians[0], false},
                                         {"bare GL", bare, false},
                                         {"ratio", ratio, true},
                                         {"ratio to the copy", copies, true}}});
    checkGl(name);
}

void effectPass(::benchmark::State &state, const EffectCase &effectCase, const QSize &size)
{
    Canvas canvas(size);
    const std::unique_ptr<ImageEffect> effect = effectCase.makeEffect();
    const PixelBufferState pbs;
    // What the library's renderer does for each effect of a chain.
    const auto library = [&] {
        const QSharedPointer<ImageEffectState> snapshot = effect->currentState();
        const QSharedPointer<ImageEffectPass> pass = snapshot->effectPass(&pbs);
        pass->render(PassTargets{&canvas.source, &canvas.target}, snapshot.data(), &pbs);
    };
    if (effectCase.multiPass) {
        compare(state, effectCase.name, &canvas, {library, {}, libraryCopy(&canvas)}, true);
        return;
    }
    BareProgram bare(shader("fx_default.vert"),
                     effect->currentState()->generateFragmentShader(&pbs).toStdString());
    if (!isConfigured(&bare, effectCase)) {
        Results::instance().fail(effectCase.name + ": no bare GL program");
        state.SkipWithError("no bare GL program");
        return;
    }
    // Tables stay bound from the library's draw, which comes first.
    const auto yardstick = [&] { bare.draw(canvas.bareSource.texture(), canvas.bareTarget); };
    compare(state, effectCase.name, &canvas, {library, yardstick, libraryCopy(&canvas)}, true);
}

void copyPass(::benchmark::State &state, const QSize &size)
{
    Canvas canvas(size);
    BareProgram bare(shader("pb_base.vert"), shader("pb_base.frag"));
    if (!bare.isLinked() || !bare.setTextureUnit("u_texture", 0)) {
        Results::instance().fail("plain copy: no bare GL program");
        state.SkipWithError("no bare GL program");
        return;
    }
    const auto yardstick = [&] { bare.draw(canvas.bareSource.texture(), canvas.bareTarget); };
    compare(state, "plain copy", &canvas, {libraryCopy(&canvas), yardstick, {}}, false);
}

void copyMemory(::benchmark::State &state, const QSize &size)
{
    const QImage picture = makePicture(size, QImage::Format_RGBA8888);
    const auto bytes = std::size_t(picture.sizeInBytes());
    std::vector<uchar> source(picture.constBits(), picture.constBits() + bytes);
    std::vector<uchar> target(bytes);
    const auto copy = [&] {
        std::memcpy(target.data(), source.data(), bytes);
        ::benchmark::DoNotOptimize(target.data());
        ::benchmark::ClobberMemory();
    };
    const double middle = interleave(state, {{"memcpy", copy}}).front();
    Results::instance().add("memcpy of the same bytes",
                            {{{"size", label(size)}}, {{"memcpy", middle, false}}});
}

} // namespace

void registerPassBenchmarks(const Plan &plan)
{
    Results::instance().note(passTable, passNote);
    for (const QSize &size : plan.sizes) {
        const auto add = [&](const std::string &name, auto function) {
            ::benchmark::RegisterBenchmark((name + "/" + label(size)).c_str(), function)
                ->Iterations(plan.rounds(size))
                ->UseManualTime()
                ->Unit(::benchmark::kMillisecond);
        };
        for (const EffectCase &effectCase : effectCases()) {
            add("pass/" + effectCase.name, [&effectCase, size](::benchmark::State &state) {
                effectPass(state, effectCase, size);
            });
        }
        add("pass/copy", [size](::benchmark::State &state) { copyPass(state, size); });
        add("memcpy", [size](::benchmark::State &state) { copyMemory(state, size); });
    }
}

} // namespace ko::imagefx::benchmarks
