// The pictures of the exporter's benchmark, made and compared the same way wherever it runs:
//
//   exporter_benchmark_pictures make SOURCE WIDTH HEIGHT TARGET
//       a JPEG of that size: SOURCE laid on its long side, scaled and cut to fill it, with the
//       grain that a sensor leaves and scaling up does not.
//   exporter_benchmark_pictures difference PICTURE PICTURE
//       prints the mean difference of two JPEGs in levels of 255.

#include "benchmarks/exporter/BareJpeg.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <utility>

using namespace ko::exporter::benchmarks;

namespace
{

// The quality of what cameras write, and its grain in levels up and down.
constexpr int quality = 92;
constexpr int grain = 4;

void layOnItsSide(Pixels *picture)
{
    if (picture->width() >= picture->height()) {
        return;
    }
    Pixels turned;
    turned.resize(picture->height(), picture->width());
    for (int y = 0; y < turned.height(); ++y) {
        for (int x = 0; x < turned.width(); ++x) {
            std::copy_n(picture->pixel(y, x), 3, turned.pixel(x, y));
        }
    }
    std::swap(*picture, turned);
}

// Where a pixel of the target lies between two of the source.
struct Place {
    Place(int i, double scale, int middle, int count)
    {
        const double at = std::clamp((i + 0.5 - middle * 0.5) * scale + (count - 1) * 0.5, 0.0,
                                     double(count - 1));
        low = int(at);
        high = std::min(low + 1, count - 1);
        part = at - low;
    }
    int low;
    int high;
    double part;
};

class Grain
{
public:
    int next()
    {
        m_state = m_state * 1664525U + 1013904223U;
        return int((m_state >> 16U) % (2U * unsigned(grain) + 1U)) - grain;
    }

private:
    std::uint32_t m_state = 1;
};

Pixels enlarged(Pixels &source, int width, int height)
{
    Pixels target;
    target.resize(width, height);
    Grain noise;
    const double scale = std::min(double(source.width()) / width, double(source.height()) / height);
    for (int y = 0; y < height; ++y) {
        const Place v(y, scale, height, source.height());
        const unsigned char *upper = source.row(v.low);
        const unsigned char *lower = source.row(v.high);
        unsigned char *out = target.row(y);
        for (int x = 0; x < width; ++x) {
            const Place u(x, scale, width, source.width());
            const int shift = noise.next();
            for (int channel = 0; channel < 3; ++channel) {
                const int left = 3 * u.low + channel;
                const int right = 3 * u.high + channel;
                const double above = upper[left] + (upper[right] - upper[left]) * u.part;
                const double below = lower[left] + (lower[right] - lower[left]) * u.part;
                const int level = int(std::lround(above + (below - above) * v.part)) + shift;
                *out++ = static_cast<unsigned char>(std::clamp(level, 0, 255));
            }
        }
    }
    return target;
}

int make(const std::string &sourceName, int width, int height, const std::string &targetName)
{
    Pixels source;
    decode(readFile(sourceName), &source);
    layOnItsSide(&source);
    Pixels target = enlarged(source, width, height);
    Encoder jpeg;
    jpeg.encode(&target, quality);
    writeFile(targetName, jpeg.data(), jpeg.size());
    return 0;
}

int printDifference(const std::string &name, const std::string &otherName)
{
    Pixels one;
    Pixels other;
    decode(readFile(name), &one);
    decode(readFile(otherName), &other);
    if (one.width() != other.width() || one.height() != other.height()) {
        std::cerr << name << " and " << otherName << " differ in size\n";
        return 1;
    }
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < one.byteCount(); ++i) {
        sum += std::abs(int(one.data()[i]) - int(other.data()[i]));
    }
    std::cout << double(sum) / double(one.byteCount()) << '\n';
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "make" && argc == 6) {
        return make(argv[2], std::atoi(argv[3]), std::atoi(argv[4]), argv[5]);
    }
    if (command == "difference" && argc == 4) {
        return printDifference(argv[2], argv[3]);
    }
    std::cerr << "exporter_benchmark_pictures make SOURCE WIDTH HEIGHT TARGET\n"
                 "exporter_benchmark_pictures difference PICTURE PICTURE\n";
    return 1;
}
