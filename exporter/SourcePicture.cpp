#include "exporter/SourcePicture.h"

#include "exporter/ErrorCapture.h"
#include "exporter/containers/BmpContainer.h"
#include "exporter/containers/Exif.h"

#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtGui/QColorSpace>
#include <QtGui/QImageReader>
#include <QtGui/QTransform>

#include <limits>

namespace ko::exporter
{

namespace
{

constexpr qint64 largestFile = std::numeric_limits<int>::max() - 64;

// Two codecs do not fail where the file ends early. That of JPEG fills the rest with grey and
// prints a warning; that of BMP leaves it black.
bool isTruncated(PictureFormat::Kind kind, const QByteArray &file, const QByteArray &errors)
{
    switch (kind) {
    case PictureFormat::Jpeg:
        return errors.toLower().contains("premature end");
    case PictureFormat::Bmp:
        return isTruncatedBmp(file);
    default:
        return false;
    }
}

// Mirrors first, then turns by a quarter clockwise, as the flags are meant.
QImage upright(const QImage &image, QImageIOHandler::Transformations transformation)
{
    if (transformation == QImageIOHandler::TransformationNone) {
        return image;
    }
    const QImage mirrored =
        image.mirrored(transformation.testFlag(QImageIOHandler::TransformationMirror),
                       transformation.testFlag(QImageIOHandler::TransformationFlip));
    return transformation.testFlag(QImageIOHandler::TransformationRotate90)
               ? mirrored.transformed(QTransform().rotate(90.0))
               : mirrored;
}

QByteArray profileOf(const QColorSpace &colorSpace)
{
    const bool special = colorSpace.isValid() && colorSpace != QColorSpace(QColorSpace::SRgb);
    return special ? colorSpace.iccProfile() : QByteArray();
}

} // namespace

SourcePicture::SourcePicture(const QString &path) : m_path(path) {}

Outcome SourcePicture::open()
{
    if (Outcome failure = readFile()) {
        return failure;
    }
    m_format = PictureFormat::ofContent(m_file);
    if (!m_format.isKnown()) {
        return notAPicture(QStringLiteral("it is no JPEG, PNG, WebP, TIFF or BMP file"));
    }
    const ErrorCapture capture;
    QBuffer buffer(&m_file);
    QImageReader reader(&buffer, m_format.qtName());
    m_storedSize = reader.size();
    return {};
}

Outcome SourcePicture::readFile()
{
    const QFileInfo info(m_path);
    if (info.exists() && !info.isFile()) {
        return unreadable(QStringLiteral("it is not a file"));
    }
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly)) {
        const bool missing = !info.exists() && file.error() != QFileDevice::PermissionsError;
        return missing ? Failure{ExitCode::SourceMissing,
                                 QStringLiteral("the source %1 does not exist").arg(m_path)}
                       : unreadable(file.errorString());
    }
    if (file.size() > largestFile) {
        return unreadable(QStringLiteral("it is larger than 2 GiB"));
    }
    m_file = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return unreadable(file.errorString());
    }
    return {};
}

Outcome SourcePicture::decode()
{
    const ErrorCapture capture;
    QBuffer buffer(&m_file);
    QImageReader reader(&buffer, m_format.qtName());
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(false);
    QImage image;
    if (!reader.read(&image)) {
        return notAPicture(reader.errorString());
    }
    if (isTruncated(m_format.kind(), m_file, capture.text())) {
        return notAPicture(QStringLiteral("its data ends early"));
    }
    const EmbeddedData embedded = m_format.embeddedData(m_file);
    m_file.clear();
    m_iccProfile =
        embedded.iccProfile.isEmpty() ? profileOf(image.colorSpace()) : embedded.iccProfile;
    image.setColorSpace(QColorSpace());
    m_image =
        upright(image, m_format.kind() == PictureFormat::Tiff ? reader.transformation()
                                                              : exifTransformation(embedded.exif));
    return {};
}

Failure SourcePicture::unreadable(const QString &reason) const
{
    return {ExitCode::SourceUnreadable,
            QStringLiteral("the source %1 cannot be read: %2").arg(m_path, reason)};
}

Failure SourcePicture::notAPicture(const QString &reason) const
{
    return {ExitCode::SourceNotAPicture,
            QStringLiteral("the source %1 is not a readable picture: %2").arg(m_path, reason)};
}

} // namespace ko::exporter
