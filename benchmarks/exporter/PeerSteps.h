#pragma once

#include <string>
#include <vector>

namespace ko::exporter::benchmarks
{

// What a program that measures another library is to do with a picture.
struct PeerStep {
    // linear:GAIN:OFFSET, offset in levels; hsv:TURN:SATURATION, a part of a whole turn and a
    // factor; blur:RADIUS:SIGMA; sharpen:RADIUS:STRENGTH; table:FILE, a picture of one
    // row with a column for each level.
    enum class Kind { Linear, Hsv, Blur, Sharpen, Table };
    Kind kind = Kind::Linear;
    double first = 0.0;
    double second = 0.0;
    std::string file;
};

struct PeerJob {
    std::string source;
    std::string target;
    std::vector<PeerStep> steps;
};

constexpr int peerQuality = 92; // the exporter's default

// `PROGRAM --version`
bool isVersionWanted(int argc, char **argv);
// Of `PROGRAM SOURCE TARGET STEP...`. A mistake ends the program with a line on standard error.
PeerJob parsePeerJob(int argc, char **argv);

} // namespace ko::exporter::benchmarks
