#include "benchmarks/engine/EngineBenchmarks.h"
#include "benchmarks/engine/KernelBenchmarks.h"

#include <QtCore/QSize>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>

using namespace ko::imagefx::benchmarks;

namespace
{

const char *const help =
    "engine_benchmarks [--smoke] [--benchmark_...]\n"
    "  --smoke  everything once, on a tiny picture\n"
    "The options of Google Benchmark choose what runs and how it is reported.\n";

bool takeOption(const char *name, int *count, char **arguments)
{
    for (int i = 1; i < *count; ++i) {
        if (std::strcmp(arguments[i], name) == 0) {
            // The null behind the last one moves too.
            for (int j = i; j < *count; ++j) {
                arguments[j] = arguments[j + 1];
            }
            --*count;
            return true;
        }
    }
    return false;
}

} // namespace

int main(int argc, char **argv)
{
    if (takeOption("--help", &argc, argv)) {
        std::fputs(help, stdout);
        return 0;
    }
    const bool smoke = takeOption("--smoke", &argc, argv);
    ::benchmark::Initialize(&argc, argv);
    if (::benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    registerKernelBenchmarks();
    registerEngineBenchmarks(smoke ? QSize(97, 61) : QSize(4000, 3000));
    return ::benchmark::RunSpecifiedBenchmarks() == 0 ? 1 : 0;
}
