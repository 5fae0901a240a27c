#pragma once

#include <memory>
#include <string>
#include <vector>

namespace ko::imagefx
{
class ImageEffect;
}

namespace ko::imagefx::benchmarks
{

// One effect with values that are not neutral, and the uniforms that these values mean: written
// down apart from the library, so that equal pixels say something about the library too.
struct EffectCase {
    struct Uniform {
        const char *name;
        std::vector<float> components;
    };

    std::string name;
    std::unique_ptr<ImageEffect> (*makeEffect)();
    std::vector<Uniform> uniforms; // "u_alpha" is 1 for all of them
};

const std::vector<EffectCase> &effectCases();
// Null when there is none of that name.
const EffectCase *findEffectCase(const std::string &name);

} // namespace ko::imagefx::benchmarks
