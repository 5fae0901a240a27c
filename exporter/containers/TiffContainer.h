#pragma once

#include "exporter/containers/EmbeddedData.h"

namespace ko::exporter
{

// The profile of the file's first picture; no EXIF block, since in TIFF those tags are the file's
// own. Nothing for bytes that are no TIFF, and for BigTIFF.
EmbeddedData readTiffContainer(const QByteArray &file);
// Empty when the file cannot be read.
QByteArray tiffWithProfile(const QByteArray &file, const QByteArray &iccProfile);

} // namespace ko::exporter
