#pragma once

#include "exporter/ExitCode.h"

#include <QtCore/QStringList>

namespace ko::exporter
{

// Checks stacks one after the other and prints a line for each mistake, as a compiler does:
// "FILE:LINE:COLUMN: PATH: MISTAKE". A stack that cannot be read is reported on standard error, and
// the rest goes on. Returns the code of the first stack that cannot be read; without one,
// CheckFoundMistakes when there are any.
ExitCode checkStacks(const QStringList &paths);

} // namespace ko::exporter
