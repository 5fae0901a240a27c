#include "imagefx/effects/TableDataUrl.h"

#include <QtCore/QBuffer>
#include <QtGui/QImage>

#include <algorithm>

namespace ko::imagefx
{

QUrl tableDataUrl(const QImage &table)
{
    // The pixels alone: a profile or a comment of the file would use up the length of the URL.
    QImage plain(table.size(), table.format());
    std::copy_n(table.constBits(), table.sizeInBytes(), plain.bits());
    QByteArray png;
    QBuffer buffer(&png);
    if (!buffer.open(QIODevice::WriteOnly) || !plain.save(&buffer, "png")) {
        return {};
    }
    return QUrl(QLatin1String("data:") + tableDataPrefix + QLatin1String(png.toBase64()));
}

} // namespace ko::imagefx
