#include "ShellRun.h"

#include <QtCore/QProcess>
#include <QtCore/QTemporaryFile>

#include <sys/resource.h>

ToolRun runShell(const QByteArray &script, const QString &folder, const Environment &environment)
{
    constexpr int timeLimit = 60000;
    // As a file: an argument would pass through the locale's codec.
    QTemporaryFile file;
    if (!file.open() || file.write(script) != script.size() || !file.flush()) {
        qFatal("%s cannot be written", qPrintable(file.fileName()));
    }
    QProcess process;
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.insert(QStringLiteral("TOOL"), toolPath());
    for (const auto &variable : environment) {
        variables.insert(variable.first, variable.second);
    }
    process.setProcessEnvironment(variables);
    process.setWorkingDirectory(folder);
    process.start(QStringLiteral("bash"), {file.fileName()});
    ToolRun run;
    if (!process.waitForFinished(timeLimit)) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.output = process.readAllStandardOutput();
    run.errors = process.readAllStandardError();
    return run;
}

qint64 largestMemoryOfChildren()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return qint64(usage.ru_maxrss) * 1024;
}
