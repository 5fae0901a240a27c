#include "exporter/CheckRun.h"

#include "exporter/ErrorCapture.h"
#include "exporter/StackCheck.h"
#include "exporter/StackFile.h"
#include "exporter/StandardOutput.h"

#include <QtCore/QFileInfo>

namespace ko::exporter
{

namespace
{

QString placed(const QString &path, const TextPlace &place, const QString &text)
{
    return QStringLiteral("%1:%2:%3: ").arg(path).arg(place.line).arg(place.column) + text;
}

ExitCode checkStack(const QString &path)
{
    StackFile file(path);
    if (Outcome failure = file.read()) {
        if (file.mistakeOffset() >= 0) {
            failure->message =
                placed(path, placeOf(file.text(), file.mistakeOffset()), failure->message);
        }
        reportLine(failure->message);
        return failure->code;
    }
    const auto mistakes = StackCheck(QFileInfo(path).absolutePath()).check(file.text());
    for (const StackMistake &mistake : mistakes) {
        printLine(placed(path, mistake.place,
                         QStringLiteral("%1: %2").arg(mistake.path, mistake.message)));
    }
    return mistakes.isEmpty() ? ExitCode::Success : ExitCode::CheckFoundMistakes;
}

} // namespace

ExitCode checkStacks(const QStringList &paths)
{
    ExitCode worst = ExitCode::Success;
    for (const QString &path : paths) {
        const ExitCode code = checkStack(path);
        const bool unread = code != ExitCode::Success && code != ExitCode::CheckFoundMistakes;
        if (worst == ExitCode::Success || (worst == ExitCode::CheckFoundMistakes && unread)) {
            worst = code;
        }
    }
    return worst;
}

} // namespace ko::exporter
