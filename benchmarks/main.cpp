#include "benchmarks/FirstUseBenchmarks.h"
#include "benchmarks/Fixture.h"
#include "benchmarks/FrameBenchmarks.h"
#include "benchmarks/Machine.h"
#include "benchmarks/PassBenchmarks.h"
#include "benchmarks/Results.h"
#include "benchmarks/TransferBenchmarks.h"

#include "headless/HeadlessImport.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>

#include <benchmark/benchmark.h>

#include <clocale>
#include <cstdio>
#include <iostream>

using namespace ko::imagefx::benchmarks;

namespace
{

const char *const help =
    "imagefx_benchmarks [--table | --smoke] [--benchmark_...]\n"
    "  --table  the report as Markdown on standard output, progress on standard error\n"
    "  --smoke  everything once on a tiny picture: does it still work?\n"
    "The options of Google Benchmark choose what runs and how it is reported. The exit code is 0\n"
    "when everything that ran drew the right pixels.\n";

struct Options {
    bool table = false;
    bool smoke = false;
    bool help = false;
    std::string firstUse; // one sample, for a run that has started this program itself
};

// Takes out of `arguments` what this program understands.
Options parse(std::vector<char *> *arguments)
{
    Options options;
    std::vector<char *> others;
    for (char *argument : *arguments) {
        const std::string text = argument;
        if (text == "--table") {
            options.table = true;
        } else if (text == "--smoke") {
            options.smoke = true;
        } else if (text == "--help") {
            options.help = true;
        } else if (text.compare(0, 12, "--first-use=") == 0) {
            options.firstUse = text.substr(12);
        } else {
            others.push_back(argument);
        }
    }
    *arguments = others;
    return options;
}

void printReport(const Machine &machine, const Plan &plan)
{
    std::string text = machine.description() + "- Sizes:";
    for (const QSize &size : plan.sizes) {
        text += (size == plan.sizes.front() ? " " : ", ") + label(size);
    }
    text += "\n- Every figure is a median; a time ends with glFinish(). Contenders take turns "
            "within a measurement. A ratio is the library's time by that of bare GL calls with "
            "the same shaders and uniforms (the aim is at most 1.10 for effects at 4 MP), or by "
            "that of the library's plain copy where the column says so.\n";
    std::fputs((text + Results::instance().tables()).c_str(), stdout);
}

int run(const Options &options, const Machine &machine)
{
    const Plan plan = makePlan(options.smoke);
    registerPassBenchmarks(plan);
    registerFrameBenchmarks(plan);
    registerTransferBenchmarks(plan);
    registerFirstUseBenchmarks(plan);
    std::size_t count = 0;
    if (options.table || options.smoke) {
        ::benchmark::ConsoleReporter progress(::benchmark::ConsoleReporter::OO_Tabular);
        progress.SetOutputStream(&std::cerr);
        progress.SetErrorStream(&std::cerr);
        count = ::benchmark::RunSpecifiedBenchmarks(&progress);
        printReport(machine, plan);
    } else {
        count = ::benchmark::RunSpecifiedBenchmarks();
    }
    if (count == 0) {
        Results::instance().fail("nothing was run");
    }
    for (const std::string &failure : Results::instance().failures()) {
        std::cerr << "FAILED " << failure << "\n";
    }
    return Results::instance().failures().empty() ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<char *> arguments(argv, argv + argc);
    const Options options = parse(&arguments);
    if (options.help) {
        std::fputs(help, stdout);
        return 0;
    }
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "headless");
    }
    int count = int(arguments.size());
    arguments.push_back(nullptr);
    const QGuiApplication application(count, arguments.data());
    // Qt has taken over the user's locale, in which a decimal point may be a comma.
    std::setlocale(LC_NUMERIC, "C");

    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    if (!context.create() || !context.makeCurrent(&surface)) {
        std::cerr << "no OpenGL context\n";
        return 1;
    }
    if (!options.firstUse.empty()) {
        return measureFirstUse(options.firstUse);
    }
    ::benchmark::Initialize(&count, arguments.data());
    if (::benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 1;
    }
    const Machine machine;
    return run(options, machine);
}
