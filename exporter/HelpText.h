#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

namespace ko::exporter
{

// What the program does, its calls and what is true for every export: the parts that --help and
// the manual page share beside the table of options.
QString programSummary();
QStringList programCalls();
QStringList programNotes();

struct ProgramExample {
    QString purpose;
    QString command;
};
QVector<ProgramExample> programExamples();

// What only the manual page has room for.
QStringList programDetails();
QVector<ProgramExample> programLongExamples();

// A command in lines of at most so many columns that a shell reads as one.
QStringList commandLines(const QString &command, int columns);

// What --help prints: at most 80 columns.
QString helpText();

} // namespace ko::exporter
