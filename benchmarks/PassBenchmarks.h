#pragma once

namespace ko::imagefx::benchmarks
{

struct Plan;

// Each effect, and the plain copy, against a bare GL program with the same shaders and uniforms,
// and the effects against the plain copy; and memcpy of the same bytes. Each first draws with the
// library and with bare GL and compares every pixel. Effects of several passes have no bare program
// and are checked to change the picture.
void registerPassBenchmarks(const Plan &plan);

} // namespace ko::imagefx::benchmarks
