#include "exporter/StackReading.h"

#include "exporter/EffectStack.h"
#include "exporter/StackCheck.h"
#include "exporter/StackFile.h"

#include <QtCore/QFileInfo>

namespace ko::exporter
{

namespace
{

// The first few: a stack of another program may have one in every line.
QStringList firstMistakes(const QVector<StackMistake> &mistakes)
{
    constexpr int most = 3;
    QStringList texts;
    for (const StackMistake &mistake : mistakes.mid(0, most)) {
        texts.append(QStringLiteral("%1: %2").arg(mistake.path, mistake.message));
    }
    if (mistakes.size() > most) {
        texts.append(
            QStringLiteral("and %1 more, which --check tells").arg(mistakes.size() - most));
    }
    return texts;
}

Outcome checkExact(const StackFile &file, const QString &path, const QStringList &complaints)
{
    const QStringList mistakes =
        firstMistakes(StackCheck(QFileInfo(path).absolutePath()).check(file.text()));
    if (mistakes.isEmpty() && complaints.isEmpty()) {
        return {};
    }
    return Failure{
        ExitCode::EffectsNotExact,
        QStringLiteral("the effects file %1 cannot be applied as it is: %2")
            .arg(path, (mistakes.isEmpty() ? complaints : mistakes).join(QStringLiteral("; ")))};
}

} // namespace

Outcome readStack(const QString &path, bool strict, EffectStack *stack, QStringList *warnings)
{
    StackFile file(path);
    if (Outcome failure = file.read()) {
        return failure;
    }
    stack->read(file.array(), QFileInfo(path).absolutePath());
    const QStringList complaints = stack->complaints();
    if (strict) {
        return checkExact(file, path, complaints);
    }
    for (const QString &complaint : complaints) {
        warnings->append(QStringLiteral("%1: %2, so it is left out").arg(path, complaint));
    }
    return {};
}

} // namespace ko::exporter
