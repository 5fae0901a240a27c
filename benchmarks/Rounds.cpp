#include "benchmarks/Rounds.h"

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>

namespace ko::imagefx::benchmarks
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr int leastWarmUpRounds = 3;
constexpr std::chrono::milliseconds warmUpTime{200};

double timed(const Contender &contender)
{
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    gl->glFinish();
    const Clock::time_point start = Clock::now();
    contender.work();
    gl->glFinish();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void warmUp(const std::vector<Contender> &contenders, bool once)
{
    const Clock::time_point start = Clock::now();
    for (int round = 0; round < leastWarmUpRounds || Clock::now() - start < warmUpTime; ++round) {
        for (const Contender &contender : contenders) {
            timed(contender);
        }
        if (once) {
            return;
        }
    }
}

} // namespace

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

std::vector<double> interleave(::benchmark::State &state, const std::vector<Contender> &contenders)
{
    warmUp(contenders, state.max_iterations == 1);
    const std::size_t count = contenders.size();
    std::vector<std::vector<double>> times(count);
    bool forward = true;
    while (state.KeepRunning()) {
        for (std::size_t turn = 0; turn < count; ++turn) {
            const std::size_t index = forward ? turn : count - 1 - turn;
            times[index].push_back(timed(contenders[index]));
        }
        forward = !forward;
        state.SetIterationTime(times[0].back() / 1000.0);
    }
    std::vector<double> medians;
    for (std::size_t index = 0; index < count; ++index) {
        medians.push_back(median(times[index]));
        state.counters[contenders[index].name + "_ms"] = medians.back();
    }
    return medians;
}

} // namespace ko::imagefx::benchmarks
