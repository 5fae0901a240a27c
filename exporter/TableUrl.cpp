#include "exporter/TableUrl.h"

#include <QtCore/QBuffer>
#include <QtCore/QDir>
#include <QtGui/QImage>

#include <algorithm>

namespace ko::exporter
{

namespace
{

constexpr QSize tableSize(256, 1);

// Empty when the file is no table.
QUrl inlineTable(const QString &path)
{
    const QImage image = QImage(path).convertToFormat(QImage::Format_RGB888);
    if (image.size() != tableSize) {
        return {};
    }
    // The pixels alone: the library takes short URLs only.
    QImage plain(image.size(), image.format());
    std::copy_n(image.constBits(), image.sizeInBytes(), plain.bits());
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    plain.save(&buffer, "png");
    return QUrl(QStringLiteral("data:image/png;base64,") + QString::fromLatin1(png.toBase64()));
}

} // namespace

QUrl tableUrl(const QString &table, const QString &folder)
{
    QUrl url(table);
    const QString name = url.path(QUrl::FullyDecoded);
    const bool isFile = url.scheme().isEmpty() || url.scheme() == QLatin1String("file");
    if (!isFile || !url.host().isEmpty() || name.isEmpty()) {
        return url;
    }
    const QString path = QDir(folder).absoluteFilePath(name);
    QUrl file(QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded));
    if (file.toLocalFile() == path) {
        return file;
    }
    const QUrl inlined = inlineTable(path);
    return inlined.isEmpty() ? file : inlined;
}

} // namespace ko::exporter
