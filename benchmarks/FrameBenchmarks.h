#pragma once

namespace ko::imagefx::benchmarks
{

struct Plan;

// A frame of a Qt Quick item that shows a picture through six effects, one of which changed, beside
// the passes that it consists of, drawn offscreen.
void registerFrameBenchmarks(const Plan &plan);

} // namespace ko::imagefx::benchmarks
