// exporter_benchmark_opencv SOURCE TARGET STEP...: what a program that is made for speed does with
// OpenCV, from JPEG to JPEG, as 8-bit pictures in two buffers that serve again and on all
// processors. Prints how many milliseconds it took since main() began, for the library takes long
// to load.

#include "benchmarks/exporter/PeerSteps.h"

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <iostream>

using namespace ko::exporter::benchmarks;

namespace
{

// The picture, and the memory for what is made of it.
struct Buffers {
    cv::Mat picture;
    cv::Mat other;

    void swap() { cv::swap(picture, other); }
};

cv::Mat readPicture(const std::string &name)
{
    cv::Mat picture = cv::imread(name, cv::IMREAD_COLOR);
    if (picture.empty()) {
        std::cerr << name << " cannot be read\n";
        std::exit(1);
    }
    return picture;
}

// Faster than a table.
void linear(const PeerStep &step, Buffers *buffers)
{
    buffers->picture.convertTo(buffers->other, -1, step.first, step.second);
    buffers->swap();
}

void hsv(const PeerStep &step, Buffers *buffers)
{
    const int turn = int(std::lround(step.first * 256));
    cv::Mat table(1, 256, CV_8UC3);
    for (int level = 0; level < 256; ++level) {
        table.at<cv::Vec3b>(level) = {uchar((level + turn) & 255),
                                      cv::saturate_cast<uchar>(level * step.second), uchar(level)};
    }
    cv::cvtColor(buffers->picture, buffers->other, cv::COLOR_BGR2HSV_FULL);
    cv::LUT(buffers->other, table, buffers->other);
    cv::cvtColor(buffers->other, buffers->picture, cv::COLOR_HSV2BGR_FULL);
}

void blur(const PeerStep &step, Buffers *buffers)
{
    const int side = 2 * int(step.first) + 1;
    cv::GaussianBlur(buffers->picture, buffers->other, cv::Size(side, side), step.second,
                     step.second, cv::BORDER_REPLICATE);
    buffers->swap();
}

// Faster with a small Gaussian kernel than with a box.
void sharpen(const PeerStep &step, Buffers *buffers)
{
    const int side = 2 * int(step.first) + 1;
    // That of the box.
    const double sigma = std::sqrt(step.first * (step.first + 1) / 3);
    cv::GaussianBlur(buffers->picture, buffers->other, cv::Size(side, side), sigma, sigma,
                     cv::BORDER_REPLICATE);
    cv::addWeighted(buffers->picture, 1 + step.second, buffers->other, -step.second, 0,
                    buffers->picture);
}

void table(const PeerStep &step, Buffers *buffers)
{
    cv::LUT(buffers->picture, readPicture(step.file), buffers->picture);
}

void apply(const PeerStep &step, Buffers *buffers)
{
    switch (step.kind) {
    case PeerStep::Kind::Linear:
        return linear(step, buffers);
    case PeerStep::Kind::Hsv:
        return hsv(step, buffers);
    case PeerStep::Kind::Blur:
        return blur(step, buffers);
    case PeerStep::Kind::Sharpen:
        return sharpen(step, buffers);
    case PeerStep::Kind::Table:
        return table(step, buffers);
    }
}

} // namespace

int main(int argc, char **argv)
{
    const auto start = std::chrono::steady_clock::now();
    if (isVersionWanted(argc, argv)) {
        std::cout << "OpenCV " << CV_VERSION << '\n';
        return 0;
    }
    const PeerJob job = parsePeerJob(argc, argv);
    Buffers buffers;
    buffers.picture = readPicture(job.source);
    for (const PeerStep &step : job.steps) {
        apply(step, &buffers);
    }
    if (!cv::imwrite(job.target, buffers.picture, {cv::IMWRITE_JPEG_QUALITY, peerQuality})) {
        std::cerr << job.target << " cannot be written\n";
        return 1;
    }
    const auto end = std::chrono::steady_clock::now();
    std::cout << std::chrono::duration<double, std::milli>(end - start).count() << '\n';
    return 0;
}
