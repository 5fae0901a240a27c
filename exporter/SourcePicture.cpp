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

// The JPEG codec fills the missing rest of a picture with grey and only prints a warning.
bool tellsTruncatedJpeg(const QByteArray &errors)
{
    return errors.toLower().contains("premature end");
}

// The TIFF codec prints "MODULE: TEXT." for damage that it passes over, "MODULE: Warning, TEXT."
// for things that are merely unusual. Lines of Qt's own begin with their category.
bool tellsDamagedTiff(const QByteArray &errors)
{
    const QList<QByteArray> lines = errors.split('\n');
    for (const QByteArray &line : lines) {
        if (!line.isEmpty() && !line.contains("Warning, ") && !line.startsWith("qt.")) {
            return true;
        }
    }
    return false;
}

bool isDamaged(PictureFormat::Kind kind, const QByteArray &file, const QByteArray &errors)
{
    switch (kind) {
    case PictureFormat::Jpeg:
        return tellsTruncatedJpeg(errors);
    case PictureFormat::Tiff:
        return tellsDamagedTiff(errors);
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
    // Qt turns whole bytes exactly, but resamples bits.
    QImage turned = image.depth() < 8 ? image.convertToFormat(QImage::Format_Indexed8) : image;
    turned = turned.mirrored(transformation.testFlag(QImageIOHandler::TransformationMirror),
                             transformation.testFlag(QImageIOHandler::TransformationFlip));
    if (transformation.testFlag(QImageIOHandler::TransformationRotate90)) {
        turned = turned.transformed(QTransform().rotate(90.0));
    }
    return turned;
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
    if (const Outcome failure = readFile()) {
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
        return Failure{ExitCode::SourceUnreadable,
                       QStringLiteral("the source %1 is not a file").arg(m_path)};
    }
    QFile file(m_path);
    const bool opened = file.open(QIODevice::ReadOnly);
    if (!opened && !info.exists() && file.error() != QFileDevice::PermissionsError) {
        return Failure{ExitCode::SourceMissing,
                       QStringLiteral("the source %1 does not exist").arg(m_path)};
    }
    if (opened && file.size() > largestFile) {
        return Failure{ExitCode::SourceUnreadable,
                       QStringLiteral("the source %1 is larger than 2 GiB").arg(m_path)};
    }
    m_file = file.readAll();
    if (!opened || file.error() != QFileDevice::NoError) {
        return Failure{
            ExitCode::SourceUnreadable,
            QStringLiteral("the source %1 cannot be read: %2").arg(m_path, file.errorString())};
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
    // Reads the headers: what codecs complain about there, such as odd tags, harms no pixel.
    reader.size();
    const int headerErrors = capture.text().size();
    QImage image;
    if (!reader.read(&image)) {
        return notAPicture(reader.errorString());
    }
    if (isDamaged(m_format.kind(), m_file, capture.text().mid(headerErrors))) {
        return notAPicture(QStringLiteral("its data is damaged or ends early"));
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

Failure SourcePicture::notAPicture(const QString &reason) const
{
    return {ExitCode::SourceNotAPicture,
            QStringLiteral("the source %1 is not a readable picture: %2").arg(m_path, reason)};
}

} // namespace ko::exporter
