#pragma once

#include <string>

namespace ko::imagefx::benchmarks
{

struct Plan;

// What the first frame with an effect waits for: its program made and drawn once, in a process that
// has drawn other things before. Each sample is a process of its own, started with the driver's
// shader cache on disk switched off, or with one that holds the program already.
void registerFirstUseBenchmarks(const Plan &plan);

// The process of one sample: measures the plain copy and the effect of that name, prints "<ms to
// make the copy's program> <ms of its first draw> <ms to make the effect's> <ms of its first draw>"
// and returns the exit code. Needs a current GL context that has drawn nothing yet.
int measureFirstUse(const std::string &effectName);

} // namespace ko::imagefx::benchmarks
