#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <vector>

namespace ko::exporter
{

// One option of the program. All texts are ASCII, so that they read the same in every locale.
struct Option {
    enum class Value { None, Required, Optional, NextArgument };
    enum class Kind { None, Text, File, Folder, Choice };

    // With its dashes, as "--quality".
    const char *name;
    Value value;
    // How help calls the value, as "FILE"; for a choice the words, divided by '|'.
    const char *placeholder;
    // What the value is, for completion.
    Kind kind;
    // One sentence or two for --help, without a full stop.
    const char *help;
    // More for the manual page, in whole sentences; may be empty.
    const char *details;

    QStringList choices() const;
    // As it is written: "--quality=N", "--list-effects[=text|json]".
    QString usage() const;
};

struct OptionGroup {
    const char *title;
    std::vector<Option> options;
};

// Every option of the program, in the order of --help. Help, the manual page, both completions and
// the suggestions for misspelt options are made from it.
const std::vector<OptionGroup> &optionGroups();

// Null when no option has this name.
const Option *findOption(const QString &name);

// The option that was most likely meant by an unknown one; empty when none is near.
QString nearestOption(const QString &unknown);
// The word that was most likely meant, of those given; empty when none is near.
QString nearestWord(const QString &unknown, const QStringList &words);

} // namespace ko::exporter
