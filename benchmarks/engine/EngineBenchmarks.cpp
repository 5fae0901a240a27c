#include "benchmarks/engine/EngineBenchmarks.h"

#include "benchmarks/EffectCases.h"
#include "benchmarks/engine/EnginePictures.h"

#include "imagefx/model/DistanceAlphaMask.h"
#include "imagefx/model/HueAlphaMask.h"
#include "imagefx/model/ImageEffect.h"
#include "imagefx/model/LuminanceAlphaMask.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace ko::imagefx::benchmarks
{

namespace
{

// A picture is so large that two are enough of a sample.
constexpr int iterations = 2;
constexpr int rowsInMemory = 64;

using Effects = std::vector<std::unique_ptr<ImageEffect>>;

// Google Benchmark itself would go on and end well.
[[noreturn]] void giveUp(const char *reason)
{
    std::fprintf(stderr, "%s\n", reason);
    std::exit(1);
}

Effects makeEffects(const std::vector<std::string> &names)
{
    Effects effects;
    effects.reserve(names.size());
    for (const std::string &name : names) {
        effects.push_back(findEffectCase(name)->makeEffect());
    }
    return effects;
}

QList<ImageEffect *> listOf(const Effects &effects)
{
    QList<ImageEffect *> list;
    for (const auto &effect : effects) {
        list.append(effect.get());
    }
    return list;
}

void measure(::benchmark::State &state, const Effects &effects, const QSize &size, bool opaque,
             int threads)
{
    EffectEngine::Options options;
    options.threads = threads;
    const EffectEngine engine(listOf(effects), options);
    RepeatedRows source(noisyPicture(QSize(size.width(), rowsInMemory), opaque));
    while (state.KeepRunning()) {
        CountedRows sink;
        if (!engine.render(size, opaque, &source, &sink) || sink.count() != size.height()) {
            giveUp("not all rows were drawn");
        }
    }
    state.SetItemsProcessed(state.iterations() * size.width() * size.height());
}

// The picture as a whole in memory, and its result too.
void measureWhole(::benchmark::State &state, const Effects &effects, const QSize &size, int threads)
{
    EffectEngine::Options options;
    options.threads = threads;
    const EffectEngine engine(listOf(effects), options);
    const QImage picture = noisyPicture(size, true);
    while (state.KeepRunning()) {
        if (engine.render(picture).isNull()) {
            giveUp("not drawn");
        }
    }
    state.SetItemsProcessed(state.iterations() * size.width() * size.height());
}

template <typename Work>
::benchmark::internal::Benchmark *add(const std::string &name, const Work &work)
{
    return ::benchmark::RegisterBenchmark(name.c_str(), work)
        ->Iterations(iterations)
        ->Unit(::benchmark::kMillisecond);
}

void addStack(const std::string &name, const std::vector<std::string> &effects, const QSize &size)
{
    for (const int threads : {1, 2}) {
        add("engine/" + name + "/" + std::to_string(threads), [effects, size,
                                                               threads](::benchmark::State &state) {
            measure(state, makeEffects(effects), size, true, threads);
        })->UseRealTime();
    }
}

// What an effect may have besides its own properties.
struct Variant {
    const char *name;
    bool opaque;
    std::unique_ptr<AlphaMask> (*makeMask)();
    ImageEffect::BlendMode blendMode;
    float alpha;
};

template <typename Mask>
std::unique_ptr<AlphaMask> made()
{
    auto mask = std::make_unique<Mask>();
    mask->addGradientStop(0.0F, 0.25F);
    mask->addGradientStop(1.0F, 0.75F);
    return mask;
}

void addVariant(const std::string &effectName, const Variant &variant, const QSize &size)
{
    add("variant/" + effectName + "/" + variant.name,
        [effectName, variant, size](::benchmark::State &state) {
            const std::unique_ptr<AlphaMask> mask =
                variant.makeMask != nullptr ? variant.makeMask() : nullptr;
            const Effects effects = makeEffects({effectName});
            ImageEffect *effect = effects.front().get();
            effect->setAlphaMask(mask.get());
            effect->setBlendMode(variant.blendMode);
            effect->setAlpha(variant.alpha);
            measure(state, effects, size, variant.opaque, 1);
        });
}

void addVariants(const QSize &size)
{
    const Variant variants[] = {
        {"opaque", true, nullptr, ImageEffect::Normal, 1.0F},
        {"translucent", false, nullptr, ImageEffect::Normal, 1.0F},
        {"alpha 0.5", true, nullptr, ImageEffect::Normal, 0.5F},
        {"distance mask", true, made<DistanceAlphaMask>, ImageEffect::Normal, 1.0F},
        {"hue mask", true, made<HueAlphaMask>, ImageEffect::Normal, 1.0F},
        {"luminance mask", true, made<LuminanceAlphaMask>, ImageEffect::Normal, 1.0F},
        {"Multiply", true, nullptr, ImageEffect::Multiply, 1.0F},
        {"SoftLight", true, nullptr, ImageEffect::SoftLight, 1.0F},
        {"ColorDodge", true, nullptr, ImageEffect::ColorDodge, 1.0F},
        {"translucent, hue mask, SoftLight", false, made<HueAlphaMask>, ImageEffect::SoftLight,
         0.5F},
    };
    for (const char *effect :
         {"BrightnessContrast", "HSV", "LookupTable", "Blur, radius 16", "Sharpen, radius 2"}) {
        for (const Variant &variant : variants) {
            addVariant(effect, variant, size);
        }
    }
}

} // namespace

void registerEngineBenchmarks(const QSize &size)
{
    addStack("no effect", {}, size);
    for (const EffectCase &effectCase : effectCases()) {
        addStack(effectCase.name, {effectCase.name}, size);
    }
    // Those that see more than one channel at once stand together: no table serves for them.
    addStack("five point effects",
             {"BrightnessContrast", "HSV", "SelectiveSaturation", "GrayScale", "LookupTable"},
             size);
    addStack("five effects, file to file",
             {"BrightnessContrast", "HSV", "Blur, radius 16", "Sharpen, radius 2", "LookupTable"},
             size);
    for (const int threads : {1, 2}) {
        add("engine/HSV, whole pictures in memory/" + std::to_string(threads),
            [size, threads](::benchmark::State &state) {
                measureWhole(state, makeEffects({"HSV"}), size, threads);
            })
            ->UseRealTime();
    }
    addVariants(QSize(size.width(), (size.height() + 2) / 3));
}

} // namespace ko::imagefx::benchmarks
