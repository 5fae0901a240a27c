#pragma once

#include <QtCore/QByteArray>

namespace ko::exporter
{

// zlib streams.
QByteArray deflated(const QByteArray &bytes);
// Empty when the stream is damaged or gives more than 32 MB, which no metadata
// has: a few bytes of a file could fill the memory otherwise.
QByteArray inflated(const QByteArray &stream);

// The checksum of PNG and zip.
quint32 crc32Of(const QByteArray &bytes);

} // namespace ko::exporter
