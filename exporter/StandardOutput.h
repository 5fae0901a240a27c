#pragma once

#include "exporter/Failure.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace ko::exporter
{

// Prints to standard output as it is.
void print(const QByteArray &text);
// Prints one line. Control characters become blanks, so it is always one.
void printLine(const QString &text);
// Standard output does not take more, for the reason `error`, a value of errno.
Failure unprintable(int error);
// To be called when everything is printed: whether it went out, as it does not on a full disk.
Outcome finishPrinting();

} // namespace ko::exporter
