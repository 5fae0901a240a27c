#pragma once

#include <string>
#include <utility>
#include <vector>

namespace ko::exporter::benchmarks
{

// How long the steps of a program take, one after the other.
class StepClock
{
public:
    // Ends a step, which began where the one before ended or where this was made.
    void lap(const std::string &step);
    // What was done since the last step belongs to none.
    void skip();
    // A step that somebody else has measured.
    void add(const std::string &step, double milliseconds);
    // A line each, in order: milliseconds, a space, the name.
    void print() const;

    // Milliseconds of a clock that only goes forward.
    static double now();

private:
    double m_last = now();
    std::vector<std::pair<std::string, double>> m_steps;
};

} // namespace ko::exporter::benchmarks
