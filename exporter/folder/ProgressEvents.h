#pragma once

#include "exporter/Failure.h"
#include "exporter/folder/Tally.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ko::exporter
{

// The events of a run for programs: one JSON object a line on standard output, written at once.
// docs/many-pictures.md is the contract. Every function returns whether the line went out; when the
// reader has gone it did not.
class ProgressEvents
{
public:
    bool started(const Tally &tally) const;
    bool done(const QString &source, const QString &target, double seconds,
              const QStringList &warnings) const;
    bool failed(const QString &source, const QString &target, const Failure &failure) const;
    bool skipped(const QString &source, const QString &target) const;
    bool ended(const Tally &tally, double seconds, bool interrupted) const;

private:
    bool write(const char *event, QJsonObject properties) const;
};

} // namespace ko::exporter
