#pragma once

namespace ko::imagefx::benchmarks
{

struct Plan;

// Pictures to textures and framebuffers to memory, each next to a memcpy of the same bytes.
void registerTransferBenchmarks(const Plan &plan);

} // namespace ko::imagefx::benchmarks
