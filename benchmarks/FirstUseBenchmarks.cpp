#include "benchmarks/FirstUseBenchmarks.h"

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

#include <QtCore/QCoreApplication>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>

namespace ko::imagefx::benchmarks
{

namespace
{

using Clock = std::chrono::steady_clock;

// Small, so that the pixels take no time.
const QSize size(64, 48);
const char *const firstUseTable = "First use";
const char *const firstUseNote =
    "The programs of a batch's nested effects are made in its first draw. Those of both passes of "
    "blur and sharpen are made together.";
constexpr int longestSample = 60000; // milliseconds

enum class Cache { Off, Warm };

struct Sample {
    double copyProgram = 0.0;
    double copyDraw = 0.0;
    double effectProgram = 0.0;
    double effectDraw = 0.0;
};

// Samples of the copy, one from each process, whichever effect that process measured.
struct CopySamples {
    std::vector<double> program;
    std::vector<double> draw;
};
CopySamples copySamples[2];

template <class Work>
double timed(const Work &work)
{
    const Clock::time_point start = Clock::now();
    work();
    QOpenGLContext::currentContext()->functions()->glFinish();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

QProcessEnvironment environment(Cache cache, const QTemporaryDir &folder)
{
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.remove(QStringLiteral("MESA_SHADER_CACHE_DISABLE"));
    if (cache == Cache::Off) {
        variables.insert(QStringLiteral("MESA_SHADER_CACHE_DISABLE"), QStringLiteral("true"));
    } else {
        variables.insert(QStringLiteral("MESA_SHADER_CACHE_DIR"), folder.path());
    }
    return variables;
}

bool sample(const std::string &effect, const QProcessEnvironment &variables, Sample *result)
{
    QProcess process;
    process.setProcessEnvironment(variables);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QCoreApplication::applicationFilePath(),
                  {QStringLiteral("--first-use=") + QString::fromStdString(effect)});
    if (!process.waitForFinished(longestSample) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0) {
        return false;
    }
    const QList<QByteArray> numbers = process.readAllStandardOutput().trimmed().split(' ');
    bool complete = numbers.size() == 4;
    double *const values[] = {&result->copyProgram, &result->copyDraw, &result->effectProgram,
                              &result->effectDraw};
    for (int i = 0; complete && i < 4; ++i) {
        *values[i] = numbers.at(i).toDouble(&complete);
    }
    return complete;
}

void addRow(const std::string &name, Cache cache, const std::vector<double> &programs,
            const std::vector<double> &draws)
{
    std::vector<double> totals;
    for (std::size_t i = 0; i < programs.size(); ++i) {
        totals.push_back(programs[i] + draws[i]);
    }
    Results::instance().add(firstUseTable,
                            {{{"pass", name}, {"disk cache", cache == Cache::Off ? "off" : "warm"}},
                             {{"program made", median(programs), false},
                              {"first draw", median(draws), false},
                              {"both", median(totals), false}}});
}

void firstUse(::benchmark::State &state, const std::string &effect, Cache cache)
{
    const QTemporaryDir folder;
    const QProcessEnvironment variables = environment(cache, folder);
    Sample result;
    bool complete = folder.isValid();
    if (cache == Cache::Warm) {
        complete = complete && sample(effect, variables, &result);
    }
    std::vector<double> programs;
    std::vector<double> draws;
    while (state.KeepRunning()) {
        complete = complete && sample(effect, variables, &result);
        programs.push_back(result.effectProgram);
        draws.push_back(result.effectDraw);
        copySamples[int(cache)].program.push_back(result.copyProgram);
        copySamples[int(cache)].draw.push_back(result.copyDraw);
        state.SetIterationTime((result.effectProgram + result.effectDraw) / 1000.0);
    }
    if (!complete) {
        Results::instance().fail("first use of " + effect + ": a measuring process failed");
        state.SkipWithError("a measuring process failed");
        return;
    }
    state.counters["program_ms"] = median(programs);
    state.counters["draw_ms"] = median(draws);
    addRow(effect, cache, programs, draws);
    if (effect == effectCases().back().name) {
        const CopySamples &copy = copySamples[int(cache)];
        addRow("plain copy", cache, copy.program, copy.draw);
    }
}

} // namespace

void registerFirstUseBenchmarks(const Plan &plan)
{
    Results::instance().note(firstUseTable, firstUseNote);
    for (const Cache cache : {Cache::Off, Cache::Warm}) {
        for (const EffectCase &effectCase : effectCases()) {
            const std::string name = "firstuse/" + effectCase.name +
                                     (cache == Cache::Off ? "/cache off" : "/cache warm");
            ::benchmark::RegisterBenchmark(name.c_str(),
                                           [&effectCase, cache](::benchmark::State &state) {
                                               firstUse(state, effectCase.name, cache);
                                           })
                ->Iterations(plan.firstUseRounds())
                ->UseManualTime()
                ->Unit(::benchmark::kMillisecond);
        }
    }
}

int measureFirstUse(const std::string &effectName)
{
    const EffectCase *effectCase = findEffectCase(effectName);
    if (effectCase == nullptr) {
        return 1;
    }
    QOpenGLFramebufferObject source(size, GL_TEXTURE_2D);
    QOpenGLFramebufferObject target(size, GL_TEXTURE_2D);
    fill(source.texture(), makePicture(size, QImage::Format_RGBA8888));
    prepareState(size);
    // The driver's compiler starts up with the first program, whichever that is.
    const BareFramebuffer bareTarget(size.width(), size.height(), GL_RGBA, source.texture());
    const BareProgram opener(
        "attribute vec4 a_vertex; attribute vec2 a_texCoord; varying vec2 v_position;"
        "void main() { gl_Position = a_vertex; v_position = a_texCoord * 0.5; }",
        "uniform sampler2D u_image; varying vec2 v_position;"
        "void main() { gl_FragColor = texture2D(u_image, v_position).bgra * 0.5; }");
    timed([&] { opener.draw(source.texture(), bareTarget); });

    Sample result;
    QSharedPointer<BasePass> copy;
    result.copyProgram = timed([&] { copy = BasePass::shared(); });
    target.bind();
    result.copyDraw = timed([&] { copy->draw(source.texture(), QRectF(0, 0, 1, 1)); });
    target.release();

    const PixelBufferState pbs;
    const std::unique_ptr<ImageEffect> effect = effectCase->makeEffect();
    const QSharedPointer<ImageEffectState> state = effect->currentState();
    QSharedPointer<ImageEffectPass> pass;
    result.effectProgram = timed([&] { pass = state->effectPass(&pbs); });
    result.effectDraw = timed([&] {
        pass->render(PassTargets{&source, &target}, state.data(), &pbs);
    });
    if (!opener.isLinked() || !copy->isLinked() || !pass->isLinked()) {
        return 1;
    }
    for (const double milliseconds :
         {result.copyProgram, result.copyDraw, result.effectProgram, result.effectDraw}) {
        std::fputs((QByteArray::number(milliseconds, 'f', 4) + ' ').constData(), stdout);
    }
    return 0;
}

} // namespace ko::imagefx::benchmarks
