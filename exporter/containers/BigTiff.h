#pragma once

#include <QtCore/QByteArray>

#include <vector>

namespace ko::exporter
{

// The tags of the first directory of a BigTIFF file; none for other files and damaged ones. Any
// bytes are safe.
std::vector<quint16> bigTiffTags(const QByteArray &file);

} // namespace ko::exporter
