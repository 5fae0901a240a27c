#include "engine/InstructionSets.h"

#include <algorithm>
#include <atomic>

namespace ko::imagefx::engine
{

namespace
{

std::vector<const Kernels *> findUsable()
{
    std::vector<const Kernels *> usable{&kernelsScalar()};
#if defined(__x86_64__)
    __builtin_cpu_init();
    usable.push_back(&kernelsSse2());
    if (__builtin_cpu_supports("sse4.1") != 0) {
        usable.push_back(&kernelsSse41());
    }
    if (__builtin_cpu_supports("avx2") != 0) {
        usable.push_back(&kernelsAvx2());
    }
    if (__builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
        __builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512dq") != 0) {
        usable.push_back(&kernelsAvx512());
    }
#elif defined(__aarch64__)
    usable.push_back(&kernelsNeon());
#endif
    return usable;
}

std::atomic<const Kernels *> &current()
{
    static std::atomic<const Kernels *> kernels(usableKernels().back());
    return kernels;
}

} // namespace

// Never destroyed, so that a rendering may still run while the process ends.
const std::vector<const Kernels *> &usableKernels()
{
    static const auto &usable = *new std::vector<const Kernels *>(findUsable());
    return usable;
}

const Kernels &currentKernels()
{
    return *current().load(std::memory_order_acquire);
}

bool useKernels(const QString &name)
{
    const std::vector<const Kernels *> &usable = usableKernels();
    const auto named = std::find_if(usable.begin(), usable.end(), [&name](const Kernels *kernels) {
        return name == QLatin1String(kernels->name);
    });
    if (named == usable.end()) {
        return false;
    }
    current().store(*named, std::memory_order_release);
    return true;
}

} // namespace ko::imagefx::engine
