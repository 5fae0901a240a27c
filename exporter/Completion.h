#pragma once

#include <QtCore/QByteArray>

namespace ko::exporter
{

// Scripts that complete the program's options, the words that they take, and file names, for a
// shell that has read them. Bash's needs no package beside bash.
QByteArray bashCompletion();
QByteArray zshCompletion();

} // namespace ko::exporter
