#pragma once

#include "exporter/Failure.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ko::exporter
{

class EffectStack;

// Reads a file into a new stack. What cannot be drawn is left out, each with a line in `warnings`.
// When `strict`, everything that StackCheck tells of is a failure.
Outcome readStack(const QString &path, bool strict, EffectStack *stack, QStringList *warnings);

} // namespace ko::exporter
