#pragma once

#include <QtCore/QString>

namespace ko::contactsheet
{

// Thrown when no sheet can be made; main() prints the message and ends with the exit code.
struct Error {
    QString message;
    int exitCode = 1;
};

} // namespace ko::contactsheet
