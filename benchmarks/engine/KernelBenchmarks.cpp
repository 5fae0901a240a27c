#include "benchmarks/engine/KernelBenchmarks.h"

#include "benchmarks/engine/EnginePictures.h"

#include "engine/InstructionSets.h"
#include "engine/TapFinder.h"
#include "engine/kernels/Kernels.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace ko::imagefx::benchmarks
{

using engine::Colour;
using engine::Convolution;
using engine::Kernels;
using engine::Mask;
using engine::Pass;
using engine::Pixels;

namespace
{

constexpr int width = 1024;
constexpr int largestReach = 17;
constexpr int roomyWidth = width + 2 * largestReach + engine::rowSlack;

using Row = std::vector<uint32_t>;

Row noisyRow(bool opaque)
{
    const QImage picture = noisyPicture(QSize(roomyWidth, 1), opaque);
    Row row(roomyWidth);
    std::memcpy(row.data(), picture.constScanLine(0), row.size() * sizeof(uint32_t));
    return row;
}

Pixels pixelsOf(const Row &source, const Row &batch)
{
    // In the middle of a picture, where distance masks see all of their gradient.
    return {source.data(), batch.data(), width, 0, width / 3, width, width};
}

// A table of so many texels that changes colours.
Row gradient(int texels)
{
    Row table(std::size_t(texels) + engine::rowSlack);
    for (int i = 0; i < texels; ++i) {
        const uint32_t level = uint32_t(255 - 200 * i / texels);
        table[std::size_t(i)] = 0xff000000U | level << 16U | level << 8U | level;
    }
    return table;
}

void countPixels(::benchmark::State &state)
{
    state.SetItemsProcessed(state.iterations() * width);
}

void measurePoint(::benchmark::State &state, const Kernels &kernels, Pass pass)
{
    const Row table = gradient(512);
    pass.table = {table.data(), pass.colour == Colour::SelectiveSaturation ? 360 : 256};
    pass.gradient = {table.data(), 512};
    const Row source = noisyRow(pass.opaque);
    const Row batch = noisyRow(pass.opaque);
    Row target(roomyWidth);
    const Pixels pixels = pixelsOf(source, batch);
    while (state.KeepRunning()) {
        kernels.point(pass, pixels, target.data());
        ::benchmark::ClobberMemory();
    }
    countPixels(state);
}

void measureLookUp(::benchmark::State &state, const Kernels &kernels)
{
    uint8_t levels[256];
    for (int i = 0; i < 256; ++i) {
        levels[i] = uint8_t(255 - i);
    }
    const Row source = noisyRow(true);
    Row target(roomyWidth);
    while (state.KeepRunning()) {
        kernels.lookUp(levels, levels, levels, source.data(), target.data(), width);
        ::benchmark::ClobberMemory();
    }
    countPixels(state);
}

template <typename Number>
void measureExpand(::benchmark::State &state,
                   void (*expand)(const uint32_t *row, Number *target, int64_t plane, int count))
{
    const Row source = noisyRow(true);
    std::vector<Number> target(4 * std::size_t(roomyWidth));
    while (state.KeepRunning()) {
        expand(source.data(), target.data(), roomyWidth, width);
        ::benchmark::ClobberMemory();
    }
    countPixels(state);
}

// The row is its own neighbour above and below: the addresses of a vertical convolution differ only
// in where they are.
void measureConvolve(::benchmark::State &state, const Kernels &kernels, Convolution kind,
                     float radius, bool integers, Pass pass)
{
    engine::Convolve convolve{kind, {}, pass};
    std::vector<int> first;
    std::vector<int> second;
    engine::arrangeTaps(engine::findTaps(kind, radius), &convolve.sums, &first, &second);
    convolve.sums.integers = integers;

    const Row table = gradient(512);
    convolve.pass.gradient = {table.data(), 512};
    convolve.pass.uniforms[0] = 0.5F;
    const Row source = noisyRow(pass.opaque);
    Row target(roomyWidth);
    std::vector<uint16_t> expanded16(4 * std::size_t(roomyWidth));
    std::vector<float> expandedFloat(4 * std::size_t(roomyWidth));
    const int whole = width + 2 * largestReach;
    kernels.expand16(source.data(), expanded16.data(), roomyWidth, whole);
    kernels.expandFloat(source.data(), expandedFloat.data(), roomyWidth, whole);
    const auto address = [&](int offset) -> const void * {
        const int at = largestReach + offset;
        return integers ? static_cast<const void *>(expanded16.data() + at)
                        : expandedFloat.data() + at;
    };
    std::vector<const void *> firsts;
    std::vector<const void *> seconds;
    firsts.reserve(first.size());
    seconds.reserve(second.size());
    for (const int offset : first) {
        firsts.push_back(address(offset));
    }
    for (const int offset : second) {
        seconds.push_back(address(offset));
    }
    Pixels pixels = pixelsOf(source, source);
    pixels.source = source.data() + largestReach;
    while (state.KeepRunning()) {
        kernels.convolve(convolve, {firsts.data(), seconds.data(), roomyWidth}, pixels.source,
                         pixels, target.data());
        ::benchmark::ClobberMemory();
    }
    countPixels(state);
    state.counters["taps"] = double(first.size() + second.size());
}

Pass passOf(Colour colour)
{
    return {colour, Mask::None, 0, 1.0F, {0.125F, 0.25F, 0.0625F, 1.0F}, {}, {}, true};
}

struct Registrar {
    const Kernels &kernels;

    void add(const std::string &name, const std::function<void(::benchmark::State &)> &work) const
    {
        ::benchmark::RegisterBenchmark(("kernel/" + name + "/" + kernels.name).c_str(), work);
    }
    void addPoint(const std::string &name, const Pass &pass) const
    {
        add(name,
            [k = &kernels, pass](::benchmark::State &state) { measurePoint(state, *k, pass); });
    }
    void addConvolve(const std::string &name, Convolution kind, float radius, bool integers,
                     const Pass &pass) const
    {
        add(name, [k = &kernels, kind, radius, integers, pass](::benchmark::State &state) {
            measureConvolve(state, *k, kind, radius, integers, pass);
        });
    }
    void addColours() const;
    void addVariants() const;
    void addConvolutions() const;
};

void Registrar::addColours() const
{
    addPoint("BrightnessContrast", passOf(Colour::BrightnessContrast));
    addPoint("ChannelShift", passOf(Colour::ChannelShift));
    addPoint("ColorFill", passOf(Colour::ColorFill));
    addPoint("Exposure", passOf(Colour::Exposure));
    addPoint("GrayScale", passOf(Colour::GrayScale));
    addPoint("HSV", passOf(Colour::Hsv));
    addPoint("LookupTable", passOf(Colour::LookupTable));
    addPoint("SelectiveSaturation", passOf(Colour::SelectiveSaturation));
    addPoint("Batch", passOf(Colour::Batch));
    add("byte table", [k = &kernels](::benchmark::State &state) { measureLookUp(state, *k); });
}

void Registrar::addVariants() const
{
    static const char *const blendModes[] = {"Add",        "Subtract",    "Difference", "Multiply",
                                             "Divide",     "Screen",      "Overlay",    "HardLight",
                                             "SoftLight",  "LinearLight", "ColorDodge", "ColorBurn",
                                             "LinearBurn", "LightenOnly", "DarkenOnly"};
    const std::string base = "BrightnessContrast, ";
    Pass pass = passOf(Colour::BrightnessContrast);
    pass.opaque = false;
    addPoint(base + "translucent", pass);
    pass = passOf(Colour::BrightnessContrast);
    pass.alpha = 0.5F;
    addPoint(base + "alpha 0.5", pass);
    pass = passOf(Colour::BrightnessContrast);
    pass.mask = Mask::Distance;
    addPoint(base + "distance mask", pass);
    pass.mask = Mask::Hue;
    addPoint(base + "hue mask", pass);
    pass.mask = Mask::Luminance;
    addPoint(base + "luminance mask", pass);
    pass.mask = Mask::None;
    for (const char *mode : blendModes) {
        ++pass.blendMode;
        addPoint(base + mode, pass);
    }
}

void Registrar::addConvolutions() const
{
    add("row to 16 bits",
        [k = &kernels](::benchmark::State &state) { measureExpand(state, k->expand16); });
    add("row to floats",
        [k = &kernels](::benchmark::State &state) { measureExpand(state, k->expandFloat); });
    struct Case {
        const char *name;
        Convolution kind;
        float radius;
    };
    const Pass opaque = passOf(Colour::Batch); // of which the colour does not count
    Pass translucent = opaque;
    translucent.opaque = false;
    for (const Case &each : {Case{"blur 16, columns", Convolution::BlurPre, 16.0F},
                             Case{"blur 16, rows", Convolution::Blur, 16.0F},
                             Case{"sharpen 2, rows", Convolution::SharpenPre, 2.0F},
                             Case{"sharpen 2, columns", Convolution::Sharpen, 2.0F}}) {
        const std::string name = each.name;
        addConvolve(name + ", 16 bits", each.kind, each.radius, true, opaque);
        addConvolve(name + ", floats", each.kind, each.radius, false, opaque);
        addConvolve(name + ", floats, translucent", each.kind, each.radius, false, translucent);
    }
}

} // namespace

void registerKernelBenchmarks()
{
    for (const Kernels *kernels : engine::usableKernels()) {
        const Registrar registrar{*kernels};
        registrar.addColours();
        registrar.addVariants();
        registrar.addConvolutions();
    }
}

} // namespace ko::imagefx::benchmarks
