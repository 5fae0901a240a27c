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
// down apart from the library, so that equal pixels say something about the library too. Tables are
// the library's own.
struct EffectCase {
    struct Uniform {
        const char *name;
        std::vector<float> components;
    };
    // A table that the effect's state leaves bound.
    struct Table {
        const char *name;
        int unit;
    };

    std::string name;
    std::unique_ptr<ImageEffect> (*makeEffect)();
    std::vector<Uniform> uniforms; // "u_alpha" is 1 for all of them
    std::vector<Table> tables;
    // Draws more than once: no single program does the same, uniforms and tables are left empty.
    bool multiPass = false;
};

const std::vector<EffectCase> &effectCases();
// Null when there is none of that name.
const EffectCase *findEffectCase(const std::string &name);

} // namespace ko::imagefx::benchmarks
