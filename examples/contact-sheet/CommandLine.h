#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ko::contactsheet
{

// Where the sheet comes from and where it goes.
struct CommandLine {
    QString photographs;
    QString stacks;
    QString target;

    // `arguments` begins with the program's name. Prints the help and ends the program when it is
    // asked for; throws an Error of exit code 2 when anything is missing or unknown.
    static CommandLine parse(const QStringList &arguments);
};

} // namespace ko::contactsheet
