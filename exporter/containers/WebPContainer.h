#pragma once

#include "exporter/containers/EmbeddedData.h"

#include <QtCore/QSize>

namespace ko::exporter
{

// Takes any bytes: what is no WebP, or ends early, gives what could be found
// until there.
EmbeddedData readWebPContainer(const QByteArray &file);
// The file, whose picture has `size` pixels, with profile, EXIF and XMP; WebP
// holds nothing else. A file in WebP's simple layout is brought into the
// extended one, the only one that holds any.
QByteArray webPWithData(const QByteArray &file, const EmbeddedData &data, const QSize &size,
                        bool hasAlpha);

} // namespace ko::exporter
