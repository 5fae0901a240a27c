// exporter_engine_profile EFFECTS SOURCE TARGET THREADS: exports one JPEG on the processor by the
// exporter's own code, one step after the other with whole pictures in between, and prints, a line
// each, how many milliseconds every step took and its name. The exporter itself does them at the
// same time, with bands of rows in between.

#include "benchmarks/exporter/ProfiledSteps.h"
#include "benchmarks/exporter/StepClock.h"

#include "exporter/EffectStack.h"
#include "exporter/ProcessorRenderer.h"
#include "exporter/StackReading.h"

#include <QtCore/QStringList>

#include <algorithm>

using namespace ko::exporter;
using namespace ko::exporter::benchmarks;

int main(int argc, char **argv)
{
    if (argc != 5) {
        giveUp(QStringLiteral("exporter_engine_profile EFFECTS SOURCE TARGET THREADS"));
    }
    StepClock clock;
    QStringList warnings;
    EffectStack stack;
    if (const Outcome failure =
            readStack(QString::fromLocal8Bit(argv[1]), true, &stack, &warnings)) {
        giveUp(failure->message);
    }
    const ProcessorRenderer renderer(stack, std::max(1, std::atoi(argv[4])));
    clock.lap("effects read");
    LoadedPicture loaded = loadPicture(QString::fromLocal8Bit(argv[2]));
    clock.add("file read", loaded.reading);
    clock.add("decoded", loaded.decoding);
    clock.skip();
    if (!renderer.isIdle() && !renderer.draw(&loaded.image, 1.0F)) {
        giveUp(QStringLiteral("not drawn"));
    }
    clock.lap("drawn");
    const QByteArray bytes = encoded(loaded.image);
    clock.lap("encoded");
    writeTarget(QString::fromLocal8Bit(argv[3]), bytes);
    clock.lap("written");
    clock.print();
    return 0;
}
