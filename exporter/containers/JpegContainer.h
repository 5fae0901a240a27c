#pragma once

#include "exporter/containers/EmbeddedData.h"

namespace ko::exporter
{

// Both take any bytes: what is no JPEG, or ends early, gives what could be found until there.
EmbeddedData readJpegContainer(const QByteArray &file);
// The file with the profile in front of everything but its JFIF header; empty when the profile is
// larger than the 16 MB that JPEG can hold.
QByteArray jpegWithProfile(const QByteArray &file, const QByteArray &iccProfile);

} // namespace ko::exporter
