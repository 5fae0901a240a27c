// exporter_benchmark_tool: korvel-image-exporter, but with the set of processor instructions that
// the environment variable KORVEL_BENCHMARK_INSTRUCTIONS names. With --instruction-sets alone:
// prints the set that the exporter uses, then all that can be used here, the slowest first.

#include "engine/EffectEngine.h"
#include "exporter/Program.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <cstdlib>
#include <cstring>
#include <iostream>

int main(int argc, char **argv)
{
    using ko::imagefx::EffectEngine;
    if (argc == 2 && std::strcmp(argv[1], "--instruction-sets") == 0) {
        std::cout << EffectEngine::instructionSet().toStdString() << '\n'
                  << EffectEngine::instructionSets().join(QLatin1Char('\n')).toStdString() << '\n';
        return 0;
    }
    const char *name = std::getenv("KORVEL_BENCHMARK_INSTRUCTIONS");
    if (name != nullptr && !EffectEngine::setInstructionSet(QString::fromLatin1(name))) {
        std::cerr << "no such instructions here: " << name << '\n';
        return 1;
    }
    return ko::exporter::runProgram(argc, argv);
}
