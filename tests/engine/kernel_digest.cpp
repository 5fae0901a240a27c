// Prints what the kernels of one set of processor instructions make of fixed pseudo-random rows, a
// digest for each kind of kernel. With --compare it does so for every set that this processor has
// and names what differs from the scalar one. Without Qt, so that it runs under an emulator, too.

#include "engine/kernels/Kernels.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

using namespace ko::imagefx::engine;

namespace
{

struct Digest {
    std::string name;
    uint64_t value;
};
using Digests = std::vector<Digest>;

// Fowler, Noll and Vo's, of 64 bits.
class Hash
{
public:
    void add(const void *bytes, size_t count)
    {
        for (size_t i = 0; i < count; ++i) {
            m_value = (m_value ^ static_cast<const uint8_t *>(bytes)[i]) * 0x100000001b3U;
        }
    }
    uint64_t value() const { return m_value; }

private:
    uint64_t m_value = 0xcbf29ce484222325U;
};

class Random
{
public:
    uint32_t next()
    {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        return m_state;
    }
    // From -1 to 1 in steps that every processor computes alike.
    float share() { return float(int(next() >> 8 & 0xffff) - 0x8000) / float(0x8000); }

private:
    uint32_t m_state = 0x2545f491U;
};

// Strips of the kernels are 64 pixels long, their vectors at most 16: rows shorter than either, of
// whole ones, and one pixel beside.
constexpr int rowLengths[] = {1, 7, 16, 63, 64, 65, 201};
constexpr int longest = 201;

using Row = std::vector<uint32_t>;

// With greys, clear pixels, and in a translucent row colours brighter than their alpha allows.
Row randomRow(Random *random, bool opaque)
{
    Row row(longest + rowSlack);
    for (uint32_t &pixel : row) {
        const uint32_t bits = random->next();
        const bool grey = bits % 8 == 0;
        const uint32_t colour = grey ? (bits >> 24) * 0x010101U : bits & 0xffffffU;
        const uint32_t alpha = bits % 16 == 5 ? 0 : random->next() >> 24;
        pixel = colour | (opaque ? 0xff000000U : alpha << 24);
    }
    return row;
}

// A pass with numbers of the sizes that effects have, and the tables that it reads.
struct RandomPass {
    Pass pass{};
    Row texels;
    Row gradient;

    RandomPass(Random *random, Colour colour, Mask mask, int blendMode, bool opaque)
    {
        constexpr int gradientSize = 512;
        const int tableSize = colour == Colour::SelectiveSaturation ? 360 : 256;
        for (int i = 0; i < tableSize; ++i) {
            texels.push_back(random->next());
        }
        for (int i = 0; i < gradientSize; ++i) {
            gradient.push_back(random->next());
        }
        pass.colour = colour;
        pass.mask = mask;
        pass.blendMode = blendMode;
        pass.alpha = blendMode % 3 == 0 ? 1.0F : random->share();
        for (float &number : pass.uniforms) {
            number = random->share();
        }
        pass.table = {texels.data(), tableSize};
        pass.gradient = {gradient.data(), gradientSize};
        pass.opaque = opaque;
    }
};

Pixels pixelsOf(const Row &source, const Row &batch, int count)
{
    return {source.data(), batch.data(), count, 3, 11, 2 * longest, 23};
}

void add(Hash *hash, const Row &row, int count)
{
    hash->add(row.data(), size_t(count) * sizeof row[0]);
}

const char *alphaName(bool opaque)
{
    return opaque ? " opaque" : " translucent";
}

// Calls `use` with every mask and every blend mode.
template <class Use>
void forEachComposition(const Use &use)
{
    for (int mask = 0; mask < 4; ++mask) {
        for (int blendMode = 0; blendMode < 16; ++blendMode) {
            use(Mask(mask), blendMode);
        }
    }
}

void digestPoints(const Kernels &kernels, Digests *digests)
{
    constexpr const char *names[colourCount] = {"brightness and contrast",
                                                "channel shift",
                                                "colour fill",
                                                "exposure",
                                                "grey scale",
                                                "hue",
                                                "lookup table",
                                                "selective saturation",
                                                "batch"};
    Random random;
    for (int colour = 0; colour < colourCount; ++colour) {
        for (const bool opaque : {true, false}) {
            const Row source = randomRow(&random, opaque);
            const Row batch = randomRow(&random, opaque);
            Hash hash;
            forEachComposition([&](Mask mask, int blendMode) {
                const RandomPass made(&random, Colour(colour), mask, blendMode, opaque);
                for (const int count : rowLengths) {
                    Row target = source;
                    kernels.point(made.pass, pixelsOf(source, batch, count), target.data());
                    add(&hash, target, count);
                    Row inPlace = source;
                    kernels.point(made.pass, pixelsOf(inPlace, batch, count), inPlace.data());
                    add(&hash, inPlace, count);
                }
            });
            digests->push_back({std::string(names[colour]) + alphaName(opaque), hash.value()});
        }
    }
}

void digestLookUp(const Kernels &kernels, Digests *digests)
{
    Random random;
    uint8_t tables[3][256];
    for (auto &table : tables) {
        for (uint8_t &level : table) {
            level = uint8_t(random.next() >> 24);
        }
    }
    const Row source = randomRow(&random, false);
    Hash hash;
    for (const int count : rowLengths) {
        Row target = source;
        kernels.lookUp(tables[0], tables[1], tables[2], source.data(), target.data(), count);
        add(&hash, target, count);
        Row inPlace = source;
        kernels.lookUp(tables[0], tables[1], tables[2], inPlace.data(), inPlace.data(), count);
        add(&hash, inPlace, count);
    }
    digests->push_back({"tables of bytes", hash.value()});
}

// Three planes, and room for the whole vectors that are read behind the last one.
constexpr int plane = longest + rowSlack;

template <class Number>
std::vector<Number> expanded(void (*expand)(const uint32_t *, Number *, int64_t, int),
                             const Row &row, int count)
{
    std::vector<Number> numbers(size_t(4) * plane);
    // What is behind the row means nothing, and may be anything.
    constexpr int anything = 0xbe;
    std::memset(numbers.data(), anything, numbers.size() * sizeof(Number));
    expand(row.data(), numbers.data(), plane, count);
    return numbers;
}

// With what is behind the planes, which stays as it was.
void digestExpansions(const Kernels &kernels, Digests *digests)
{
    Random random;
    const Row row = randomRow(&random, false);
    Hash integers;
    Hash floats;
    for (const int count : rowLengths) {
        const auto sixteen = expanded(kernels.expand16, row, count);
        integers.add(sixteen.data(), sixteen.size() * sizeof sixteen[0]);
        const auto single = expanded(kernels.expandFloat, row, count);
        floats.add(single.data(), single.size() * sizeof single[0]);
    }
    digests->push_back({"expansion to integers", integers.value()});
    digests->push_back({"expansion to floats", floats.value()});
}

// Weights that fall from tap to tap and add up to 1.
Sums sumsOf(int pairs, int singles, bool integers)
{
    Sums sums{};
    sums.pairs = pairs;
    sums.singles = singles;
    sums.integers = integers;
    const int taps = pairs + singles;
    constexpr int finest = 500;
    int total = 0;
    for (int i = 0; i < taps; ++i) {
        sums.weights16[i] = int16_t((taps + 3 - i) * finest + i);
        total += sums.weights16[i] * (i < pairs ? 2 : 1);
    }
    sums.scale16 = 1.0F / (255.0F * float(total));
    for (int i = 0; i < taps; ++i) {
        sums.weights[i] = float(sums.weights16[i]) / float(total);
    }
    return sums;
}

void digestConvolutions(const Kernels &kernels, Digests *digests)
{
    constexpr const char *names[] = {"blur's first pass", "blur", "sharpen's first pass",
                                     "sharpen"};
    constexpr std::pair<int, int> tapCounts[] = {{0, 1}, {1, 1}, {4, 3}, {16, 1}, {3, 0}};
    Random random;
    for (int kind = 0; kind < 4; ++kind) {
        for (int variant = 0; variant < 4; ++variant) {
            const bool opaque = variant % 2 == 0;
            const bool integers = variant / 2 == 0;
            std::vector<Row> rows;
            std::vector<std::vector<uint16_t>> rows16;
            std::vector<std::vector<float>> rowsFloat;
            for (int i = 0; i < 2 * mostTaps; ++i) {
                rows.push_back(randomRow(&random, opaque));
                rows16.push_back(expanded(kernels.expand16, rows.back(), longest));
                rowsFloat.push_back(expanded(kernels.expandFloat, rows.back(), longest));
            }
            Hash hash;
            forEachComposition([&](Mask mask, int blendMode) {
                const RandomPass made(&random, Colour::Batch, mask, blendMode, opaque);
                const auto &[pairs, singles] = tapCounts[blendMode % 5];
                const Convolve convolve{Convolution(kind), sumsOf(pairs, singles, integers),
                                        made.pass};
                const void *addresses[2 * mostTaps];
                for (int i = 0; i < 2 * mostTaps; ++i) {
                    const size_t number = size_t(i);
                    addresses[i] = integers ? static_cast<const void *>(rows16[number].data())
                                            : rowsFloat[number].data();
                }
                for (const int count : rowLengths) {
                    Row target(longest + rowSlack);
                    kernels.convolve(convolve, {addresses, addresses + mostTaps, plane},
                                     rows[0].data(), pixelsOf(rows[1], rows[1], count),
                                     target.data());
                    add(&hash, target, count);
                }
            });
            digests->push_back({std::string(names[kind]) +
                                    (integers ? " of integers" : " of floats") + alphaName(opaque),
                                hash.value()});
        }
    }
}

Digests digestsOf(const Kernels &kernels)
{
    Digests digests;
    digestPoints(kernels, &digests);
    digestLookUp(kernels, &digests);
    digestExpansions(kernels, &digests);
    digestConvolutions(kernels, &digests);
    return digests;
}

// The slowest first.
std::vector<const Kernels *> usableSets()
{
    std::vector<const Kernels *> sets{&kernelsScalar()};
#if defined(__x86_64__)
    sets.push_back(&kernelsSse2());
    const auto add = [&sets](bool usable, const Kernels &kernels) {
        if (usable) {
            sets.push_back(&kernels);
        } else {
            std::fprintf(stderr, "%s: this processor does not have it\n", kernels.name);
        }
    };
    add(__builtin_cpu_supports("sse4.1") != 0, kernelsSse41());
    add(__builtin_cpu_supports("avx2") != 0, kernelsAvx2());
    add(__builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vl") != 0 &&
            __builtin_cpu_supports("avx512dq") != 0,
        kernelsAvx512());
#elif defined(__aarch64__)
    sets.push_back(&kernelsNeon());
#endif
    return sets;
}

int compareSets()
{
    const std::vector<const Kernels *> sets = usableSets();
    const Digests scalar = digestsOf(*sets.front());
    int differences = 0;
    for (const Kernels *kernels : sets) {
        const Digests digests = digestsOf(*kernels);
        int here = 0;
        for (size_t i = 0; i < digests.size(); ++i) {
            if (digests[i].value != scalar[i].value) {
                ++here;
                std::printf("%s: %s differs\n", kernels->name, digests[i].name.c_str());
            }
        }
        std::printf("%s: %d of %zu digests differ from scalar's\n", kernels->name, here,
                    digests.size());
        differences += here;
    }
    return differences == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 2 && std::strcmp(argv[1], "--compare") == 0) {
        return compareSets();
    }
    for (const Kernels *kernels : usableSets()) {
        if (argc == 2 && std::strcmp(argv[1], kernels->name) == 0) {
            for (const Digest &digest : digestsOf(*kernels)) {
                std::printf("%016llx %s\n", static_cast<unsigned long long>(digest.value),
                            digest.name.c_str());
            }
            return 0;
        }
    }
    std::fprintf(stderr, "Usage: %s --compare | SET\nSets:", argv[0]);
    for (const Kernels *kernels : usableSets()) {
        std::fprintf(stderr, " %s", kernels->name);
    }
    std::fprintf(stderr, "\n");
    return 2;
}
