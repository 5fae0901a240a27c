#pragma once

namespace ko::imagefx::benchmarks
{

// Every kernel with every set of instructions that can be used here, on rows that stay in the
// cache, under names like "kernel/HSV/avx2".
void registerKernelBenchmarks();

} // namespace ko::imagefx::benchmarks
