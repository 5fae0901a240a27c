#pragma once

#include "exporter/Failure.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ko::exporter
{

// The options of one call of the program. Paths are taken as they are: plain local paths, absolute
// or relative to the working folder.
class CommandLine
{
public:
    // `arguments` without the program's name. Help and version win over every mistake elsewhere.
    Outcome parse(const QStringList &arguments);

    bool helpWanted() const { return m_help; }
    bool versionWanted() const { return m_version; }
    bool strict() const { return m_strict; }
    QString source() const { return m_source; }
    QString target() const { return m_target; }
    QString effects() const { return m_effects; }
    // The Qt platform plug-in, with its parameters.
    QString platform() const { return m_platform; }

    // What --help prints.
    static QString helpText();

private:
    Outcome parseArgument(const QString &argument);
    Outcome setPath(const QString &option, const QString &value);
    Outcome requirePaths() const;

    bool m_help = false;
    bool m_version = false;
    bool m_strict = false;
    QString m_source;
    QString m_target;
    QString m_effects;
    QString m_platform = QStringLiteral("headless");
};

} // namespace ko::exporter
