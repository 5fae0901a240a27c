#pragma once

#include "exporter/ExportOptions.h"
#include "exporter/Failure.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ko::exporter
{

// The options of one call of the program. Paths are taken as they are: plain local paths, absolute
// or relative to the working folder. As QString they stand for any bytes, see FileNameCodec.
class CommandLine
{
public:
    // What the program is to do.
    enum class Task { ExportOne, ExportFolder, ListEffects, Check, Help, Version };
    // How a folder run tells how far it is. Automatic: a bar when standard error is a terminal.
    enum class Progress { Automatic, Bar, Json, None };
    enum class Listing { Text, Json };

    // `arguments` without the program's name. Help and version win over every mistake elsewhere.
    Outcome parse(const QStringList &arguments);

    Task task() const { return m_task; }
    const ExportOptions &options() const { return m_options; }
    // The stack; for every export, and for Check when inputs() is empty.
    QString effects() const { return m_effects; }
    // The Qt platform plug-in, with its parameters. One that was asked for makes GL the engine.
    QString platform() const { return m_platform; }
    // How many threads shall work; without the option as many as the process may use processors.
    int usedThreads() const;

    // ExportOne.
    QString source() const { return m_source; }
    QString target() const { return m_target; }

    // ExportFolder.
    QString targetFolder() const { return m_targetFolder; }
    // The suffix of every target, without its dot; empty: each target has that of its source.
    QString suffix() const { return m_suffix; }
    Progress progress() const { return m_progress; }
    bool skipExisting() const { return m_skipExisting; }
    // What stands beside the options, in order: files and folders for ExportFolder, stacks for
    // Check.
    QStringList inputs() const { return m_inputs; }

    // ListEffects.
    Listing listing() const { return m_listing; }

    bool helpWanted() const { return m_task == Task::Help; }
    bool versionWanted() const { return m_task == Task::Version; }
    bool strict() const { return m_options.strict; }

    // What --help prints.
    static QString helpText();

private:
    Outcome parseOptions(const QStringList &arguments);
    Outcome parseOption(const QString &argument);
    Outcome setValue(const QString &option, const QString &value);
    Outcome setNumber(const QString &option, const QString &value);
    Outcome setChoice(const QString &option, const QString &value);
    Outcome checkTask();
    Outcome checkEngine();
    Outcome checkExportOne() const;
    Outcome checkExportFolder() const;
    Outcome checkNoInputs() const;
    bool isGiven(const char *option) const;

    Task m_task = Task::ExportOne;
    ExportOptions m_options;
    QString m_effects;
    QString m_platform = QStringLiteral("headless");
    bool m_platformGiven = false;
    QString m_source;
    QString m_target;
    QString m_targetFolder;
    QString m_suffix;
    Progress m_progress = Progress::Automatic;
    bool m_skipExisting = false;
    int m_threads = 0;
    QStringList m_inputs;
    Listing m_listing = Listing::Text;
    // The names of the options that were given.
    QStringList m_given;
};

} // namespace ko::exporter
