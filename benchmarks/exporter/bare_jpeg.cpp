// exporter_bare_jpeg TIMES SOURCE TARGET: decodes and encodes a JPEG so many times and writes the
// result. Prints, a line each, how many milliseconds decoding and encoding took from memory to
// memory. With TIMES 1 the whole process is the least that an export of a JPEG can be.

#include "benchmarks/exporter/BareJpeg.h"

#include <chrono>
#include <cstdlib>
#include <iostream>

using namespace ko::exporter::benchmarks;

int main(int argc, char **argv)
{
    if (argc != 4) {
        std::cerr << "exporter_bare_jpeg TIMES SOURCE TARGET\n";
        return 1;
    }
    constexpr int quality = 92; // the exporter's default
    const int times = std::atoi(argv[1]);
    const Bytes source = readFile(argv[2]);
    Pixels pixels;
    Encoder target;
    for (int i = 0; i < times; ++i) {
        const auto start = std::chrono::steady_clock::now();
        decode(source, &pixels);
        target.encode(&pixels, quality);
        const auto end = std::chrono::steady_clock::now();
        std::cout << std::chrono::duration<double, std::milli>(end - start).count() << '\n';
    }
    writeFile(argv[3], target.data(), target.size());
    return 0;
}
