#pragma once

#include "exporter/containers/EmbeddedData.h"

namespace ko::exporter
{

// Both take any bytes: what is no PNG, or ends early, gives what could be found until there.
EmbeddedData readPngContainer(const QByteArray &file);
// The file with the profile directly behind its header.
QByteArray pngWithProfile(const QByteArray &file, const QByteArray &iccProfile);

} // namespace ko::exporter
