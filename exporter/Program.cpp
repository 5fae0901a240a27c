#include "exporter/Program.h"

#include "exporter/CheckRun.h"
#include "exporter/CommandLine.h"
#include "exporter/EffectCatalogue.h"
#include "exporter/ErrorCapture.h"
#include "exporter/FileNameCodec.h"
#include "exporter/ImageExport.h"
#include "exporter/OffscreenGl.h"
#include "exporter/StandardOutput.h"
#include "exporter/folder/FolderExport.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

#include <csignal>
#include <new>

namespace ko::exporter
{

namespace
{

using Task = CommandLine::Task;

QStringList argumentList(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    return arguments;
}

ExitCode reported(const Outcome &failure, ExitCode otherwise = ExitCode::Success)
{
    if (!failure) {
        return otherwise;
    }
    reportLine(failure->message);
    return failure->code;
}

Outcome exportOnce(const CommandLine &commandLine)
{
    OffscreenGl gl(commandLine.platform());
    ImageExport image(gl);
    Outcome failure = image.run({commandLine.source(), commandLine.target(), commandLine.effects(),
                                 commandLine.options(), commandLine.usedThreads()});
    const QStringList warnings = failure ? QStringList() : image.warnings();
    for (const QString &warning : warnings) {
        reportLine(QStringLiteral("warning: ") + warning);
    }
    const QStringList notes = commandLine.options().verbose ? image.notes() : QStringList();
    for (const QString &note : notes) {
        reportLine(QStringLiteral("note: ") + note);
    }
    return failure;
}

QByteArray listedEffects(CommandLine::Listing listing)
{
    const EffectCatalogue catalogue;
    return listing == CommandLine::Listing::Json ? catalogue.json() : catalogue.text().toUtf8();
}

// The exit status of what the command line asks for.
int runTask(const CommandLine &commandLine)
{
    ExitCode code = ExitCode::Success;
    switch (commandLine.task()) {
    case Task::ExportOne:
        return int(reported(exportOnce(commandLine)));
    case Task::ExportFolder:
        return exportFolder(commandLine);
    case Task::Check:
        code = checkStacks(commandLine.inputs().isEmpty() ? QStringList{commandLine.effects()}
                                                          : commandLine.inputs());
        break;
    case Task::ListEffects:
        print(listedEffects(commandLine.listing()));
        break;
    case Task::Help:
        print(CommandLine::helpText().toUtf8());
        break;
    case Task::Version:
        print("korvel-image-exporter " KORVEL_EXPORTER_VERSION "\n");
        break;
    }
    return int(reported(finishPrinting(), code));
}

} // namespace

int runProgram(int argc, char *argv[])
{
    // A file size limit shall be an error that can be told, not the end.
    std::signal(SIGXFSZ, SIG_IGN);
    useLosslessFileNames();
    // A picture without a density gets the same one whether there is a screen yet or not.
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    CommandLine commandLine;
    if (const Outcome mistake = commandLine.parse(argumentList(argc, argv))) {
        return int(reported(mistake));
    }
    try {
        return runTask(commandLine);
    } catch (const std::bad_alloc &) {
        const QString file =
            commandLine.source().isEmpty() ? commandLine.effects() : commandLine.source();
        return int(reported(
            Failure{ExitCode::RenderingFailed, QStringLiteral("out of memory with %1").arg(file)}));
    }
}

} // namespace ko::exporter
