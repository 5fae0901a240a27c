#include "ShellRun.h"

#include <QtCore/QTemporaryFile>

#include <sys/resource.h>

ToolRun runShell(const QByteArray &script, const QString &folder, const Environment &environment)
{
    // As a file: an argument would pass through the locale's codec.
    QTemporaryFile file;
    if (!file.open() || file.write(script) != script.size() || !file.flush()) {
        qFatal("%s cannot be written", qPrintable(file.fileName()));
    }
    const Environment toolToo = Environment{{QStringLiteral("TOOL"), toolPath()}} + environment;
    return runProgram(QStringLiteral("bash"), {file.fileName()}, toolToo, folder);
}

qint64 largestMemoryOfChildren()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return qint64(usage.ru_maxrss) * 1024;
}
