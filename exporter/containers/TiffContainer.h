#pragma once

#include "exporter/containers/EmbeddedData.h"

#include <QtCore/QStringList>

namespace ko::exporter
{

// What belongs to the first picture of the file, which is changed where it is
// and of no use afterwards. TIFF keeps EXIF among its own tags: they are put
// together as a block. Of BigTIFF only what is not read; nothing for bytes that
// are no TIFF.
EmbeddedData takeTiffContainer(QByteArray *file);
// The file, as QImageWriter made it, with the data; what cannot be added is
// named in `leftOut`.
QByteArray tiffWithData(const QByteArray &file, const EmbeddedData &data, QStringList *leftOut);

} // namespace ko::exporter
