#pragma once

namespace ko::imagefx::benchmarks
{

struct Plan;

// One draw of each effect, and of the plain copy, against a bare GL program with the same shaders
// and uniforms; and memcpy of the same bytes. Each first draws with both and compares every pixel.
void registerPassBenchmarks(const Plan &plan);

} // namespace ko::imagefx::benchmarks
