#include "engine/pipeline/PointOps.h"

#include <algorithm>
#include <utility>

namespace ko::imagefx::engine
{

namespace
{

constexpr int levels = 256;

bool mapsChannelsAlone(Colour colour)
{
    switch (colour) {
    case Colour::BrightnessContrast:
    case Colour::ChannelShift:
    case Colour::ColorFill:
    case Colour::Exposure:
    case Colour::LookupTable:
        return true;
    case Colour::GrayScale:
    case Colour::Hsv:
    case Colour::SelectiveSaturation:
    case Colour::Batch:
        break;
    }
    return false;
}

// Whether each channel of the result depends on that channel of the source alone.
bool isTable(const PointOp &op)
{
    if (op.kind == PointOp::Kind::LookUp) {
        return true;
    }
    if (!op.pass.opaque || op.pass.mask != Mask::None) {
        return false;
    }
    return op.kind == PointOp::Kind::Batch
               ? std::all_of(op.nested.begin(), op.nested.end(), isTable)
               : mapsChannelsAlone(op.pass.colour);
}

// What the op makes of every level.
ChannelTables tablesOf(const Kernels &kernels, const PointOp &op)
{
    std::array<uint32_t, levels + rowSlack> greys{};
    for (uint32_t level = 0; level < levels; ++level) {
        greys.at(level) = level | level << 8U | level << 16U | 0xff000000U;
    }
    const PointOps ops{op};
    std::vector<uint32_t> scratch(size_t(scratchStrips(ops)) * (stripPixels + rowSlack));
    Pixels pixels{};
    pixels.source = greys.data();
    pixels.count = levels;
    pixels.width = levels;
    pixels.height = 1;
    applyPointOps(kernels, ops, pixels, greys.data(), scratch.data());
    ChannelTables tables{};
    for (size_t level = 0; level < levels; ++level) {
        const uint32_t pixel = greys.at(level);
        tables.red.at(level) = uint8_t(pixel & 0xffU);
        tables.green.at(level) = uint8_t(pixel >> 8U & 0xffU);
        tables.blue.at(level) = uint8_t(pixel >> 16U & 0xffU);
    }
    return tables;
}

bool isIdentity(const ChannelTables &tables)
{
    for (size_t level = 0; level < levels; ++level) {
        if (tables.red.at(level) != level || tables.green.at(level) != level ||
            tables.blue.at(level) != level) {
            return false;
        }
    }
    return true;
}

void lookUpIn(const std::array<uint8_t, levels> &table, std::array<uint8_t, levels> *entries)
{
    for (uint8_t &entry : *entries) {
        entry = table.at(entry);
    }
}

} // namespace

bool isPointwise(const Step &step)
{
    switch (step.kind) {
    case Step::Kind::Point:
        return true;
    case Step::Kind::Batch:
        return std::all_of(step.nested.begin(), step.nested.end(), isPointwise);
    case Step::Kind::Blur:
    case Step::Kind::Sharpen:
        break;
    }
    return false;
}

std::optional<PointOp> pointOp(const Kernels &kernels, const Step &step, bool opaque)
{
    PointOp op;
    op.pass = step.pass;
    op.pass.opaque = opaque;
    if (step.kind == Step::Kind::Batch) {
        op.kind = PointOp::Kind::Batch;
        for (const Step &nested : step.nested) {
            if (std::optional<PointOp> inner = pointOp(kernels, nested, opaque)) {
                appendPointOp(std::move(*inner), &op.nested);
            }
        }
    }
    if (!isTable(op)) {
        return op;
    }
    PointOp table;
    table.kind = PointOp::Kind::LookUp;
    table.tables = tablesOf(kernels, op);
    return isIdentity(table.tables) ? std::nullopt : std::make_optional(std::move(table));
}

void appendPointOp(PointOp op, PointOps *ops)
{
    const auto isLookUp = [](const PointOp &any) { return any.kind == PointOp::Kind::LookUp; };
    if (ops->empty() || !isLookUp(ops->back()) || !isLookUp(op)) {
        ops->push_back(std::move(op));
        return;
    }
    ChannelTables &former = ops->back().tables;
    lookUpIn(op.tables.red, &former.red);
    lookUpIn(op.tables.green, &former.green);
    lookUpIn(op.tables.blue, &former.blue);
}

int scratchStrips(const PointOps &ops)
{
    int most = 0;
    for (const PointOp &op : ops) {
        if (op.kind == PointOp::Kind::Batch) {
            most = std::max(most, 1 + scratchStrips(op.nested));
        }
    }
    return most;
}

void applyPointOps(const Kernels &kernels, const PointOps &ops, const Pixels &pixels,
                   uint32_t *target, uint32_t *scratch)
{
    Pixels part = pixels;
    for (const PointOp &op : ops) {
        switch (op.kind) {
        case PointOp::Kind::LookUp:
            kernels.lookUp(op.tables.red.data(), op.tables.green.data(), op.tables.blue.data(),
                           part.source, target, part.count);
            break;
        case PointOp::Kind::Batch:
            applyPointOps(kernels, op.nested, part, scratch, scratch + stripPixels + rowSlack);
            part.batch = scratch;
            kernels.point(op.pass, part, target);
            break;
        case PointOp::Kind::Pass:
            kernels.point(op.pass, part, target);
            break;
        }
        part.source = target;
    }
    if (part.source != target) {
        std::copy_n(part.source, part.count, target);
    }
}

} // namespace ko::imagefx::engine
