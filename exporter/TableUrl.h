#pragma once

#include <QtCore/QString>
#include <QtCore/QUrl>

namespace ko::exporter
{

// The URL of a lookup table as the library takes it, from what a stack says. A file without a
// folder of its own, as "warm.png" or "file:warm.png", is taken relative to `folder`, that of the
// stack's file. Where a file's name is more than a URL can hold, as bytes that are no text, the URL
// holds the table itself.
QUrl tableUrl(const QString &table, const QString &folder);

} // namespace ko::exporter
