#include "exporter/StandardOutput.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace ko::exporter
{

void print(const QByteArray &text)
{
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
}

void printLine(const QString &text)
{
    QString line = text;
    std::replace_if(
        line.begin(), line.end(), [](QChar c) { return c.category() == QChar::Other_Control; },
        QLatin1Char(' '));
    print(line.toLocal8Bit() + '\n');
}

Failure unprintable(int error)
{
    return {ExitCode::TargetWrite,
            QStringLiteral("standard output cannot be written: %1").arg(qt_error_string(error))};
}

Outcome finishPrinting()
{
    errno = 0;
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return {};
    }
    return unprintable(errno);
}

} // namespace ko::exporter
