#pragma once

#include <QtCore/QLatin1String>
#include <QtCore/QUrl>

class QImage;

namespace ko::imagefx
{

// What the path of a data URL that holds a lookup table begins with.
inline const QLatin1String tableDataPrefix("image/png;base64,");

// A table of RGB888 pixels as an inline PNG; empty when it cannot be encoded.
QUrl tableDataUrl(const QImage &table);

} // namespace ko::imagefx
