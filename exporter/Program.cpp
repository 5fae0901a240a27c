#include "exporter/Program.h"

#include "exporter/CommandLine.h"
#include "exporter/ErrorCapture.h"
#include "exporter/ImageExport.h"
#include "exporter/OffscreenGl.h"

#include <QtCore/QStringList>

#include <csignal>
#include <cstdio>
#include <new>

namespace ko::exporter
{

namespace
{

QStringList argumentList(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    return arguments;
}

void print(const QString &text)
{
    std::fputs(text.toLocal8Bit().constData(), stdout);
}

Outcome exportOnce(const CommandLine &commandLine)
{
    OffscreenGl gl(commandLine.platform());
    ImageExport image(gl);
    Outcome failure = image.run(
        {commandLine.source(), commandLine.target(), commandLine.effects(), commandLine.strict()});
    const QStringList warnings = failure ? QStringList() : image.warnings();
    for (const QString &warning : warnings) {
        reportLine(QStringLiteral("warning: ") + warning);
    }
    return failure;
}

ExitCode run(const CommandLine &commandLine, const Outcome &mistake)
{
    Outcome failure = mistake;
    if (!failure) {
        try {
            failure = exportOnce(commandLine);
        } catch (const std::bad_alloc &) {
            failure = Failure{ExitCode::RenderingFailed,
                              QStringLiteral("out of memory with %1").arg(commandLine.source())};
        }
    }
    if (!failure) {
        return ExitCode::Success;
    }
    reportLine(failure->message);
    return failure->code;
}

} // namespace

int runProgram(int argc, char *argv[])
{
    // A file size limit shall be an error that can be told, not the end.
    std::signal(SIGXFSZ, SIG_IGN);
    CommandLine commandLine;
    const Outcome mistake = commandLine.parse(argumentList(argc, argv));
    if (commandLine.helpWanted()) {
        print(CommandLine::helpText());
        return int(ExitCode::Success);
    }
    if (commandLine.versionWanted()) {
        print(QStringLiteral("korvel-image-exporter " KORVEL_EXPORTER_VERSION "\n"));
        return int(ExitCode::Success);
    }
    return int(run(commandLine, mistake));
}

} // namespace ko::exporter
