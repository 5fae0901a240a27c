#include "examples/contact-sheet/Photograph.h"

#include "examples/contact-sheet/Error.h"

#include <QtCore/QDir>
#include <QtGui/QImageReader>

namespace ko::contactsheet
{

namespace
{

Photograph readPhotograph(const QFileInfo &file, int height)
{
    QImageReader reader(file.filePath());
    reader.setAutoTransform(true);
    QImage picture = reader.read();
    if (picture.isNull()) {
        throw Error{QStringLiteral("the photograph %1 cannot be read: %2")
                        .arg(file.filePath(), reader.errorString())};
    }
    picture = picture.convertToFormat(QImage::Format_RGB32);
    if (picture.height() <= height) {
        return {file.completeBaseName(), picture, 1.0F};
    }
    const QImage thumbnail = picture.scaledToHeight(height, Qt::SmoothTransformation);
    return {file.completeBaseName(), thumbnail, float(height) / float(picture.height())};
}

} // namespace

QVector<Photograph> readPhotographs(const QString &folder, int height)
{
    const QFileInfoList files = QDir(folder).entryInfoList(
        {QStringLiteral("*.jpg"), QStringLiteral("*.jpeg"), QStringLiteral("*.png")}, QDir::Files,
        QDir::Name);
    if (files.isEmpty()) {
        throw Error{QStringLiteral("no photographs (jpg, jpeg, png) in the folder %1").arg(folder)};
    }
    QVector<Photograph> photographs;
    for (const QFileInfo &file : files) {
        photographs.append(readPhotograph(file, height));
    }
    return photographs;
}

} // namespace ko::contactsheet
