#pragma once

#include "exporter/Failure.h"
#include "exporter/folder/Tally.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ko::exporter
{

// The events of a run for programs: one JSON object a line on standard output, written at once.
// docs/many-pictures.md is the contract. Every function returns whether the line went out. It waits
// for a slow reader, also where standard output does not; when the reader has gone or the disk is
// full the line is lost, and so are all that follow, since it may have gone out in part.
class ProgressEvents
{
public:
    bool started(const Tally &tally);
    bool done(const QString &source, const QString &target, double seconds,
              const QStringList &warnings);
    bool failed(const QString &source, const QString &target, const Failure &failure);
    bool skipped(const QString &source, const QString &target);
    bool ended(const Tally &tally, double seconds, bool interrupted);

    // Why the first line was lost, a value of errno: EPIPE when the reader has gone. 0 while none
    // was.
    int error() const { return m_error; }

private:
    bool write(const char *event, QJsonObject properties);

    int m_error = 0;
};

} // namespace ko::exporter
