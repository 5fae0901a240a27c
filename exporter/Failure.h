#pragma once

#include "exporter/ExitCode.h"

#include <QtCore/QString>

#include <optional>

namespace ko::exporter
{

// Why an export ended without its target. `message` is one English sentence without a full stop
// that names the file concerned.
struct Failure {
    ExitCode code;
    QString message;
};

// What a step that may fail returns: nothing when it succeeded.
using Outcome = std::optional<Failure>;

} // namespace ko::exporter
