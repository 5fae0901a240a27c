#include "benchmarks/exporter/StepClock.h"

#include <chrono>
#include <iostream>

namespace ko::exporter::benchmarks
{

void StepClock::lap(const std::string &step)
{
    add(step, now() - m_last);
    skip();
}

void StepClock::skip()
{
    m_last = now();
}

void StepClock::add(const std::string &step, double milliseconds)
{
    m_steps.emplace_back(step, milliseconds);
}

void StepClock::print() const
{
    for (const auto &[step, milliseconds] : m_steps) {
        std::cout << milliseconds << ' ' << step << '\n';
    }
}

double StepClock::now()
{
    const auto since = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(since).count();
}

} // namespace ko::exporter::benchmarks
