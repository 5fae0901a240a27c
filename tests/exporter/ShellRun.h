#pragma once

#include "ExporterRun.h"

// Runs a bash script in a folder, with the tool's path in $TOOL: for names of any bytes, pipes,
// and whatever else a process starter for text cannot hand over. As the tool itself it has a
// minute.
ToolRun runShell(const QByteArray &script, const QString &folder,
                 const Environment &environment = {});

// The largest memory, in bytes, that a process that this one started had when it ended.
qint64 largestMemoryOfChildren();
