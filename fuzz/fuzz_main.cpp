// Runs the fuzz target where there is no libFuzzer: over files, or over bytes of its own.

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
// Of the sanitizers, where they are linked.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace
{

using Bytes = std::vector<uint8_t>;

// Where the input of a text begins.
constexpr size_t headBytes = 32;

uint64_t currentSeed = 0;

void nameTheRun()
{
    std::fprintf(stderr, "again with: --runs=1 --seed=%llu\n",
                 static_cast<unsigned long long>(currentSeed));
}

const std::vector<std::string> &texts()
{
    static const std::vector<std::string> stacks = {
        R"([])",
        R"([{"effectId":"ko.orvanto.imageeffect.Blur","radius":4.5,"alpha":0.5}])",
        R"([{"effectId":"ko.orvanto.imageeffect.Sharpen","radius":2,"strength":0.8,"blendMode":7}])",
        R"([{"effectId":"ko.orvanto.imageeffect.HSV","hue":0.3,"saturation":-0.5,"value":0.1,
"alphaMask":{"maskId":"ko.orvanto.alphamask.Hue","gradientInterpolation":0,
"gradientStops":[{"location":0.2,"value":1},{"location":0.7,"value":0}]}}])",
        R"([{"effectId":"ko.orvanto.imageeffect.Batch","imageEffects":[
{"effectId":"ko.orvanto.imageeffect.GrayScale","red":0.3,"green":0.5},
{"effectId":"ko.orvanto.imageeffect.Exposure","exposure":0.4,"enabled":true}]},
{"effectId":"ko.orvanto.imageeffect.ColorFill","color":"#80ff00"}])",
        R"([{"effectId":"ko.orvanto.imageeffect.SelectiveSaturation","red":1,"aqua":-1},
{"effectId":"ko.orvanto.imageeffect.ChannelShift","red":-2,"green":1e9},
{"effectId":"ko.orvanto.imageeffect.LUT","table":"qrc:/imagefx/lib/lut/fargo.png"},
{"effectId":"ko.orvanto.imageeffect.BrightnessContrast","contrast":1.0159}])"};
    return stacks;
}

const std::vector<std::string> &words()
{
    static const std::vector<std::string> parts = {"null",
                                                   "true",
                                                   "[]",
                                                   "{}",
                                                   "\"\"",
                                                   "-",
                                                   "\"enabled\":false,",
                                                   "\"alphaMask\":{},",
                                                   "\"imageEffects\":[],",
                                                   "\"blendMode\":9,",
                                                   "\"alpha\":-3,",
                                                   ","};
    return parts;
}

const std::vector<std::string> &numbers()
{
    static const std::vector<std::string> list = {
        "0",  "1",   "2",   "5",   "7",          "12",   "15",   "16",   "17",       "40",
        "99", "100", "255", "1e9", "2147483648", "1e38", "1e39", "1e-9", "1000e300", "0.0001"};
    return list;
}

class Mutator
{
public:
    explicit Mutator(uint64_t seed) : m_random(seed) {}

    // Half of the inputs are pure chance, for stacks made from bytes; the others a changed text.
    Bytes input()
    {
        Bytes bytes = chance(below(2) == 0 ? headBytes : 400);
        const bool isText = bytes.size() == headBytes;
        bytes.front() = uint8_t(isText ? 0 : 1);
        if (isText) {
            const std::string &text = texts()[below(texts().size())];
            bytes.insert(bytes.end(), text.begin(), text.end());
            for (size_t left = below(6); left > 0; --left) {
                change(&bytes);
            }
        }
        return bytes;
    }

private:
    size_t below(size_t count)
    {
        return std::uniform_int_distribution<size_t>(0, count - 1)(m_random);
    }

    Bytes chance(size_t count)
    {
        Bytes bytes(count);
        for (uint8_t &byte : bytes) {
            byte = uint8_t(m_random());
        }
        return bytes;
    }

    void change(Bytes *bytes)
    {
        const size_t place = headBytes + below(bytes->size() - headBytes + 1);
        const auto at = bytes->begin() + ptrdiff_t(place);
        const size_t behind = bytes->size() - place;
        const size_t count = behind == 0 ? 0 : 1 + below(behind < 12 ? behind : 12);
        switch (below(8)) {
        case 0:
            if (behind > 0) {
                *at = uint8_t(m_random());
            }
            break;
        case 1:
            bytes->erase(at, at + ptrdiff_t(count));
            break;
        case 2: {
            const Bytes part(at, at + ptrdiff_t(count));
            bytes->insert(at, part.begin(), part.end());
            break;
        }
        case 3: {
            const std::string &word = words()[below(words().size())];
            bytes->insert(at, word.begin(), word.end());
            break;
        }
        default:
            changeNumber(bytes, place);
            break;
        }
    }

    // The next number becomes another, so that most texts stay stacks.
    void changeNumber(Bytes *bytes, size_t place)
    {
        const auto isDigit = [](uint8_t byte) { return byte >= '0' && byte <= '9'; };
        const auto begin = std::find_if(bytes->begin() + ptrdiff_t(place), bytes->end(), isDigit);
        const auto end = std::find_if_not(begin, bytes->end(), isDigit);
        const std::string &number = numbers()[below(numbers().size())];
        bytes->insert(bytes->erase(begin, end), number.begin(), number.end());
    }

    std::mt19937_64 m_random;
};

void runMutations(uint64_t runs, uint64_t firstSeed)
{
    for (uint64_t run = 0; run < runs; ++run) {
        currentSeed = firstSeed + run;
        const Bytes bytes = Mutator(currentSeed).input();
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::printf("%llu runs from seed %llu on\n", static_cast<unsigned long long>(runs),
                static_cast<unsigned long long>(firstSeed));
}

bool runFile(const char *path)
{
    std::ifstream file(path, std::ios::binary);
    const Bytes bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open()) {
        std::fprintf(stderr, "%s cannot be opened\n", path);
        return false;
    }
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    return true;
}

bool takeNumber(const char *argument, const char *name, uint64_t *number)
{
    const size_t length = std::strlen(name);
    if (std::strncmp(argument, name, length) != 0) {
        return false;
    }
    *number = std::strtoull(argument + length, nullptr, 10);
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    uint64_t runs = 0;
    uint64_t seed = 1;
    std::signal(SIGABRT, [](int) { nameTheRun(); });
    if (__sanitizer_set_death_callback != nullptr) {
        __sanitizer_set_death_callback(nameTheRun);
    }
    std::vector<const char *> files;
    for (int i = 1; i < argc; ++i) {
        if (!takeNumber(argv[i], "--runs=", &runs) && !takeNumber(argv[i], "--seed=", &seed)) {
            files.push_back(argv[i]);
        }
    }
    if (runs == 0 && files.empty()) {
        std::fprintf(stderr, "Usage: %s FILE... | --runs=COUNT [--seed=SEED]\n", argv[0]);
        return 2;
    }
    for (const char *file : files) {
        if (!runFile(file)) {
            return 2;
        }
    }
    if (runs > 0) {
        runMutations(runs, seed);
    }
    return 0;
}
