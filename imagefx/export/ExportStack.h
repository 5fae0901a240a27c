#pragma once

#include <QtCore/QJsonArray>
#include <QtCore/QList>

namespace ko::imagefx
{

class ImageEffect;

// The JSON of a stack for another process: as serialize() writes it, but for lookup tables that
// would not mean the same there. A relative file name becomes absolute, and the application's own
// resources, as well as a table that is shown although its URL could not be loaded, become data
// URLs.
QJsonArray writeExportStack(const QList<ImageEffect *> &effects);

} // namespace ko::imagefx
