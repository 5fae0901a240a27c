#include "exporter/StackReading.h"

#include "exporter/EffectStack.h"
#include "exporter/StackFile.h"

#include <QtCore/QFileInfo>

namespace ko::exporter
{

Outcome readStack(const QString &path, bool strict, EffectStack *stack, QStringList *warnings)
{
    StackFile file(path);
    if (Outcome failure = file.read()) {
        return failure;
    }
    stack->read(file.array(), QFileInfo(path).absolutePath());
    const QStringList complaints = stack->complaints();
    if (strict && !complaints.isEmpty()) {
        return Failure{ExitCode::EffectsNotExact,
                       QStringLiteral("the effects file %1 cannot be applied as it is: %2")
                           .arg(path, complaints.join(QStringLiteral("; ")))};
    }
    for (const QString &complaint : complaints) {
        warnings->append(QStringLiteral("%1: %2, so it is left out").arg(path, complaint));
    }
    return {};
}

} // namespace ko::exporter
