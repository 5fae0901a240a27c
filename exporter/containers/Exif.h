#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QSize>
#include <QtGui/QImageIOHandler>

namespace ko::exporter
{

// An EXIF block as formats hold it, without the six bytes "Exif\0\0" in front
// of it that some put there.
QByteArray withoutExifPrefix(const QByteArray &exif);

// How stored pixels are to be turned to stand upright, told by the orientation
// tag of an EXIF block; no turn where the block is empty, damaged or without
// the tag.
QImageIOHandler::Transformations exifTransformation(const QByteArray &exif);

// The block for an upright picture of that size: orientation and pixel
// dimensions are set where the block has them, the thumbnail is gone. All other
// bytes stay as they are and where they are, since makers' notes hold
// positions. A block that cannot be read comes back unchanged.
QByteArray exifForPicture(const QByteArray &exif, const QSize &size);

} // namespace ko::exporter
