// exporter_benchmark_vips SOURCE TARGET STEP...: the steps as one libvips pipeline, from JPEG to
// JPEG, which the program "vips" cannot do.

#include "benchmarks/exporter/PeerSteps.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

using namespace ko::exporter::benchmarks;

// The little that is needed of libvips' interface: its development package would bring a hundred
// others. Lists of options end with null.
extern "C" {
struct VipsImage;
int vips_init(const char *program);
void vips_shutdown(void);
const char *vips_version_string(void);
const char *vips_error_buffer(void);
VipsImage *vips_image_new_from_file(const char *name, ...);
VipsImage *vips_image_new_from_memory_copy(const void *data, std::size_t size, int width,
                                           int height, int bands, int format);
int vips_linear(VipsImage *in, VipsImage **out, const double *a, const double *b, int n, ...);
int vips_sRGB2HSV(VipsImage *in, VipsImage **out, ...);
int vips_HSV2sRGB(VipsImage *in, VipsImage **out, ...);
int vips_maplut(VipsImage *in, VipsImage **out, VipsImage *lut, ...);
int vips_copy(VipsImage *in, VipsImage **out, ...);
int vips_gaussblur(VipsImage *in, VipsImage **out, double sigma, ...);
int vips_add(VipsImage *left, VipsImage *right, VipsImage **out, ...);
int vips_cast_uchar(VipsImage *in, VipsImage **out, ...);
int vips_jpegsave(VipsImage *in, const char *name, ...);
void g_object_unref(void *object);
}

namespace
{

constexpr int accessSequential = 1;
constexpr int formatUchar = 0;
constexpr int interpretationHsv = 29;
constexpr int subsampleOn = 1;
constexpr const void *end = nullptr;

void check(bool good)
{
    if (!good) {
        std::cerr << vips_error_buffer() << '\n';
        std::exit(1);
    }
}

// A pipeline that grows: every image but the last is held by the next.
class Pipeline
{
public:
    explicit Pipeline(const std::string &source)
        : m_image(vips_image_new_from_file(source.c_str(), "access", accessSequential, end))
    {
        check(m_image != nullptr);
    }
    ~Pipeline() { g_object_unref(m_image); }
    Pipeline(const Pipeline &) = delete;
    Pipeline &operator=(const Pipeline &) = delete;

    void add(const PeerStep &step);
    void save(const std::string &target)
    {
        check(vips_jpegsave(m_image, target.c_str(), "Q", peerQuality, "subsample_mode",
                            subsampleOn, end) == 0);
    }

private:
    // `operation` gets the last image and where to put the next.
    template <typename Operation>
    void append(const Operation &operation)
    {
        VipsImage *next = nullptr;
        check(operation(m_image, &next) == 0);
        g_object_unref(m_image);
        m_image = next;
    }
    // Takes over the table.
    void lookUp(VipsImage *table)
    {
        append(
            [table](VipsImage *in, VipsImage **out) { return vips_maplut(in, out, table, end); });
        g_object_unref(table);
    }
    void scale(const PeerStep &step);
    void turnHue(const PeerStep &step);
    void blur(const PeerStep &step);
    void sharpen(const PeerStep &step);

    VipsImage *m_image;
};

VipsImage *makeTable(const std::vector<unsigned char> &bytes)
{
    constexpr std::size_t levels = 256;
    VipsImage *table = vips_image_new_from_memory_copy(bytes.data(), bytes.size(), int(levels), 1,
                                                       int(bytes.size() / levels), formatUchar);
    check(table != nullptr);
    return table;
}

unsigned char toLevel(double value)
{
    return static_cast<unsigned char>(std::lround(std::clamp(value, 0.0, 255.0)));
}

// A table was nearly twice as fast as vips_linear().
void Pipeline::scale(const PeerStep &step)
{
    std::vector<unsigned char> bytes;
    bytes.reserve(256);
    for (int level = 0; level < 256; ++level) {
        bytes.push_back(toLevel(level * step.first + step.second));
    }
    lookUp(makeTable(bytes));
}

void Pipeline::turnHue(const PeerStep &step)
{
    const int turn = int(std::lround(step.first * 256));
    std::vector<unsigned char> bytes;
    bytes.reserve(std::size_t(3) * 256);
    for (int level = 0; level < 256; ++level) {
        bytes.push_back(static_cast<unsigned char>((level + turn) & 255));
        bytes.push_back(toLevel(level * step.second));
        bytes.push_back(static_cast<unsigned char>(level));
    }
    VipsImage *plain = makeTable(bytes);
    VipsImage *table = nullptr;
    // The result takes over what the table says that its numbers mean.
    check(vips_copy(plain, &table, "interpretation", interpretationHsv, end) == 0);
    g_object_unref(plain);
    append([](VipsImage *in, VipsImage **out) { return vips_sRGB2HSV(in, out, end); });
    lookUp(table);
    append([](VipsImage *in, VipsImage **out) { return vips_HSV2sRGB(in, out, end); });
}

void Pipeline::blur(const PeerStep &step)
{
    // Where the exporter's kernel ends.
    const double least = std::exp(-step.first * step.first / (2 * step.second * step.second));
    append([&](VipsImage *in, VipsImage **out) {
        return vips_gaussblur(in, out, step.second, "min_ampl", least, end);
    });
}

// The colour and its distance from the blurred one, weighted: vips_sharpen(), which works in
// another colour space, takes more than twice as long.
void Pipeline::sharpen(const PeerStep &step)
{
    // That of a box of the radius.
    const double sigma = std::sqrt(step.first * (step.first + 1) / 3);
    const double gain = 1 + step.second;
    const double less = -step.second;
    const double half = 0.5; // since what is behind the point is cut off
    const double zero = 0.0;
    append([&](VipsImage *in, VipsImage **out) {
        VipsImage *blurred = nullptr;
        VipsImage *taken = nullptr;
        VipsImage *given = nullptr;
        VipsImage *sum = nullptr;
        check(vips_gaussblur(in, &blurred, sigma, end) == 0);
        check(vips_linear(blurred, &taken, &less, &zero, 1, end) == 0);
        check(vips_linear(in, &given, &gain, &half, 1, end) == 0);
        check(vips_add(given, taken, &sum, end) == 0);
        const int error = vips_cast_uchar(sum, out, end);
        for (VipsImage *image : {blurred, taken, given, sum}) {
            g_object_unref(image);
        }
        return error;
    });
}

void Pipeline::add(const PeerStep &step)
{
    switch (step.kind) {
    case PeerStep::Kind::Linear:
        return scale(step);
    case PeerStep::Kind::Hsv:
        return turnHue(step);
    case PeerStep::Kind::Blur:
        return blur(step);
    case PeerStep::Kind::Sharpen:
        return sharpen(step);
    case PeerStep::Kind::Table: {
        VipsImage *table = vips_image_new_from_file(step.file.c_str(), end);
        check(table != nullptr);
        return lookUp(table);
    }
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (isVersionWanted(argc, argv)) {
        std::cout << "libvips " << vips_version_string() << '\n';
        return 0;
    }
    const PeerJob job = parsePeerJob(argc, argv);
    check(vips_init(argv[0]) == 0);
    {
        Pipeline pipeline(job.source);
        for (const PeerStep &step : job.steps) {
            pipeline.add(step);
        }
        pipeline.save(job.target);
    }
    vips_shutdown();
    return 0;
}
