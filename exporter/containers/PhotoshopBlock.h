#pragma once

#include <QtCore/QByteArray>

namespace ko::exporter
{

// Photoshop's image resources, one behind the other, as JPEG and TIFF hold
// them. All functions take any bytes.

// The IPTC data among them; empty where there is none.
QByteArray iptcIn(const QByteArray &photoshop);
// Resources that hold nothing but IPTC data. Bytes that are resources already
// come back as they are, since some formats take both.
QByteArray photoshopWithIptc(const QByteArray &iptc);
// The same resources without thumbnails, which would be stale. From the first
// damage on the bytes stay as they are.
QByteArray photoshopWithoutThumbnail(const QByteArray &photoshop);

} // namespace ko::exporter
