#pragma once

#include "engine/StackProgram.h"
#include "engine/kernels/Kernels.h"

#include <array>
#include <optional>
#include <vector>

namespace ko::imagefx::engine
{

// One level for each level of red, green and blue.
struct ChannelTables {
    std::array<uint8_t, 256> red;
    std::array<uint8_t, 256> green;
    std::array<uint8_t, 256> blue;
};

// One effect over pixels that do not see each other.
struct PointOp {
    enum class Kind {
        LookUp, // `tables`
        Pass,   // `pass`
        Batch,  // `pass` over the pixels and over what `nested` makes of them
    };

    Kind kind = Kind::Pass;
    Pass pass{};
    ChannelTables tables{};
    std::vector<PointOp> nested;
};
using PointOps = std::vector<PointOp>;

// The longest run of pixels that goes through a list of ops at once: it stays in the nearest cache.
constexpr int stripPixels = 512;

// False when the step, or one nested in it, sees neighbouring pixels.
bool isPointwise(const Step &step);

// What the step does, which isPointwise(): a table wherever that gives the same result, and nothing
// for one that leaves every level.
std::optional<PointOp> pointOp(const Kernels &kernels, const Step &step, bool opaque);

// Adds an op behind the others; of two tables in a row it makes one.
void appendPointOp(PointOp op, PointOps *ops);

// How many strips applyPointOps() needs as scratch.
int scratchStrips(const PointOps &ops);

// Sends up to stripPixels pixels through all ops. `target` may be `pixels.source`; `scratch` has
// room for scratchStrips() strips of stripPixels + rowSlack pixels.
void applyPointOps(const Kernels &kernels, const PointOps &ops, const Pixels &pixels,
                   uint32_t *target, uint32_t *scratch);

} // namespace ko::imagefx::engine
