#pragma once

#include "exporter/containers/EmbeddedData.h"

#include <QtCore/QStringList>

namespace ko::exporter
{

// Takes any bytes: what is no JPEG, or ends early, gives what could be found
// until there.
EmbeddedData readJpegContainer(const QByteArray &file);
// The file with the data in front of everything but its JFIF header. What is
// larger than JPEG can hold (64 KB of EXIF or XMP, 16 MB of a profile) is left
// out and named in `leftOut`.
QByteArray jpegWithData(QByteArray file, const EmbeddedData &data, QStringList *leftOut);

} // namespace ko::exporter
