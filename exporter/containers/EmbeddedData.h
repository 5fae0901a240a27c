#pragma once

#include <QtCore/QByteArray>

namespace ko::exporter
{

// What a picture file carries beside its pixels, as raw bytes; empty where it has none.
struct EmbeddedData {
    QByteArray iccProfile;
    // A TIFF structure, perhaps behind the six bytes "Exif\0\0".
    QByteArray exif;
};

} // namespace ko::exporter
