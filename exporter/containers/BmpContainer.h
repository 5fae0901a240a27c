#pragma once

#include <QtCore/QByteArray>

namespace ko::exporter
{

// True when the file ends before its pixels do. The decoder does not tell: it leaves the rest
// black.
bool isTruncatedBmp(const QByteArray &file);

} // namespace ko::exporter
