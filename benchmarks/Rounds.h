#pragma once

#include <functional>
#include <string>
#include <vector>

namespace benchmark
{
class State;
}

namespace ko::imagefx::benchmarks
{

// One of several ways of doing the same work, with a name for its column.
struct Contender {
    std::string name;
    std::function<void()> work;
};

// Times every contender once a round, in turns and in the opposite order every other round, so that
// whatever else the machine does hits all of them alike. A time ends with glFinish(), so it holds
// the GPU's work too. Warms up first. The benchmark's own time is that of the first contender; the
// medians of all become its counters, named "<contender>_ms". Returns those medians, milliseconds.
std::vector<double> interleave(::benchmark::State &state, const std::vector<Contender> &contenders);

// Middle value of a list that is not empty; of an even number, the mean of the middle two.
double median(std::vector<double> values);

} // namespace ko::imagefx::benchmarks
