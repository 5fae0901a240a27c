#pragma once

#include "exporter/containers/EmbeddedData.h"

#include <QtCore/QSize>

namespace ko::exporter
{

// Both take any bytes: what is no WebP, or ends early, gives what could be found until there.
EmbeddedData readWebPContainer(const QByteArray &file);
// The file, whose picture has `size` pixels, with the profile. A file in WebP's simple layout is
// brought into the extended one, the only one that holds a profile.
QByteArray webPWithProfile(const QByteArray &file, const QByteArray &iccProfile, const QSize &size,
                           bool hasAlpha);

} // namespace ko::exporter
