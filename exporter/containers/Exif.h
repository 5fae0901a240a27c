#pragma once

#include <QtCore/QByteArray>
#include <QtGui/QImageIOHandler>

namespace ko::exporter
{

// How stored pixels are to be turned to stand upright, told by the orientation tag of an EXIF
// block; no turn where the block is empty, damaged or without the tag.
QImageIOHandler::Transformations exifTransformation(const QByteArray &exif);

} // namespace ko::exporter
