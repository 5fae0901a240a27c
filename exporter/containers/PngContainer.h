#pragma once

#include "exporter/containers/EmbeddedData.h"

namespace ko::exporter
{

// Takes any bytes: what is no PNG, or ends early, gives what could be found until there. Compressed
// data of more than 32 MB counts as damaged. What was taken is hidden from later readers of the
// file, as are compressed texts beyond a few: each of them may expand a thousandfold.
EmbeddedData takePngContainer(QByteArray *file);
// The file with the data directly behind its header.
QByteArray pngWithData(const QByteArray &file, const EmbeddedData &data);

} // namespace ko::exporter
