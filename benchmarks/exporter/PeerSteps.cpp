#include "benchmarks/exporter/PeerSteps.h"

#include <cstdlib>
#include <iostream>
#include <sstream>

namespace ko::exporter::benchmarks
{

namespace
{

using Kind = PeerStep::Kind;

[[noreturn]] void giveUp(const std::string &word)
{
    std::cerr << "not understood: " << word << "\n";
    std::exit(1);
}

double number(const std::string &text, const std::string &word)
{
    char *end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0') {
        giveUp(word);
    }
    return value;
}

PeerStep parseStep(const std::string &word)
{
    std::istringstream text(word);
    std::string name;
    std::string first;
    std::string second;
    std::getline(text, name, ':');
    std::getline(text, first, ':');
    std::getline(text, second);
    if (name == "table") {
        return {Kind::Table, 0.0, 0.0, first};
    }
    for (const auto &[known, kind] :
         {std::pair("linear", Kind::Linear), std::pair("hsv", Kind::Hsv),
          std::pair("blur", Kind::Blur), std::pair("sharpen", Kind::Sharpen)}) {
        if (name == known) {
            return {kind, number(first, word), number(second, word), {}};
        }
    }
    giveUp(word);
}

} // namespace

bool isVersionWanted(int argc, char **argv)
{
    return argc == 2 && std::string(argv[1]) == "--version";
}

PeerJob parsePeerJob(int argc, char **argv)
{
    if (argc < 3) {
        giveUp("PROGRAM SOURCE TARGET STEP... is wanted");
    }
    PeerJob job{argv[1], argv[2], {}};
    job.steps.reserve(std::size_t(argc));
    for (int i = 3; i < argc; ++i) {
        job.steps.push_back(parseStep(argv[i]));
    }
    return job;
}

} // namespace ko::exporter::benchmarks
