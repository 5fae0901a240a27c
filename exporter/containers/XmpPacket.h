#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QSize>

namespace ko::exporter
{

// The packet for an upright picture of that size: orientation and pixel
// dimensions are set where the packet has them under their usual names, stored
// thumbnails are gone. Every other byte stays. The text is searched, not
// parsed, so any depth of nesting is harmless.
QByteArray xmpForPicture(const QByteArray &xmp, const QSize &size);

} // namespace ko::exporter
