#include "exporter/SourcePicture.h"

#include "exporter/ErrorCapture.h"
#include "exporter/JpegCodec.h"
#include "exporter/JpegRowReader.h"
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
constexpr qint64 longestSignature = 16;

// Mirrors first, then turns by a quarter clockwise, as the flags are meant.
QImage upright(QImage image, QImageIOHandler::Transformations transformation)
{
    if (transformation == QImageIOHandler::TransformationNone) {
        return image;
    }
    const bool mirror = transformation.testFlag(QImageIOHandler::TransformationMirror);
    const bool flip = transformation.testFlag(QImageIOHandler::TransformationFlip);
    if (mirror || flip) {
        image = std::move(image).mirrored(mirror, flip);
    }
    return transformation.testFlag(QImageIOHandler::TransformationRotate90)
               ? image.transformed(QTransform().rotate(90.0))
               : image;
}

bool changesSides(QImageIOHandler::Transformations transformation)
{
    return transformation.testFlag(QImageIOHandler::TransformationRotate90);
}

QByteArray profileOf(const QColorSpace &colorSpace)
{
    const bool special = colorSpace.isValid() && colorSpace != QColorSpace(QColorSpace::SRgb);
    return special ? colorSpace.iccProfile() : QByteArray();
}

// The texts that hold metadata are written by us.
QMap<QString, QString> plainTexts(const QImage &image)
{
    QMap<QString, QString> texts;
    const QStringList keys = image.textKeys();
    for (const QString &key : keys) {
        if (key != QLatin1String("XML:com.adobe.xmp") &&
            !key.startsWith(QLatin1String("Raw profile type "))) {
            texts.insert(key, image.text(key));
        }
    }
    return texts;
}

// The same pixels, without a copy. QImage forgets no text, and would write them
// all.
QImage withoutTexts(const QImage &image)
{
    if (image.textKeys().isEmpty()) {
        return image;
    }
    auto *owner = new QImage(image);
    QImage plain(
        owner->constBits(), image.width(), image.height(), image.bytesPerLine(), image.format(),
        [](void *data) { delete static_cast<QImage *>(data); }, owner);
    plain.setColorTable(image.colorTable());
    plain.setDotsPerMeterX(image.dotsPerMeterX());
    plain.setDotsPerMeterY(image.dotsPerMeterY());
    return plain;
}

} // namespace

SourcePicture::SourcePicture(const QString &path) : m_path(path) {}

Outcome SourcePicture::open()
{
    if (Outcome failure = readFile()) {
        return failure;
    }
    readHeader();
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
    m_format = PictureFormat::ofContent(file.peek(longestSignature));
    if (file.error() == QFileDevice::NoError && !m_format.isKnown()) {
        return notAPicture(file.size() == 0
                               ? QStringLiteral("it is empty")
                               : QStringLiteral("it is no JPEG, PNG, WebP, TIFF or BMP file"));
    }
    m_file = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return unreadable(file.errorString());
    }
    return {};
}

void SourcePicture::readHeader()
{
    if (m_format.kind() == PictureFormat::Jpeg) {
        m_storedSize = jpegSize(m_file);
    } else if (m_format.kind() == PictureFormat::Bmp) {
        m_storedSize = bmpSize(m_file);
    } else {
        const ErrorCapture capture;
        QBuffer buffer(&m_file);
        QImageReader reader(&buffer, m_format.qtName());
        m_storedSize = reader.size();
        m_transformation = m_format.kind() == PictureFormat::Tiff
                               ? reader.transformation()
                               : QImageIOHandler::TransformationNone;
    }
    m_data = m_format.takeData(&m_file);
    if (m_format.kind() != PictureFormat::Tiff) {
        m_transformation = exifTransformation(m_data.exif);
    }
}

QSize SourcePicture::size() const
{
    return changesSides(m_transformation) ? m_storedSize.transposed() : m_storedSize;
}

Outcome SourcePicture::decode(const QSize &wanted)
{
    const QSize wantedAsStored = changesSides(m_transformation) ? wanted.transposed() : wanted;
    if (Outcome failure = m_format.kind() == PictureFormat::Jpeg ? decodeByLibjpeg(wantedAsStored)
                                                                 : decodeByQt()) {
        return failure;
    }
    m_file.clear();
    m_image = upright(std::move(m_image), m_transformation);
    return {};
}

Outcome SourcePicture::decodeByLibjpeg(const QSize &wanted)
{
    DecodedJpeg decoded = decodeJpeg(m_file, m_data.iccProfile, wanted);
    if (decoded.image.isNull()) {
        return notAPicture(decoded.error);
    }
    m_image = std::move(decoded.image);
    noteDamage(decoded.warning);
    if (!decoded.wasCmyk) {
        return {};
    }
    if (decoded.byProfile) {
        m_notes.append(QStringLiteral("the source %1 has CMYK colours, which its profile turned "
                                      "into sRGB")
                           .arg(m_path));
    } else if (m_data.iccProfile.isEmpty()) {
        m_notes.append(QStringLiteral("the source %1 has CMYK colours without a profile, so their "
                                      "sRGB colours are a guess")
                           .arg(m_path));
    } else {
        m_warnings.append(QStringLiteral("the profile of the source %1 does not describe its CMYK "
                                         "colours, so their sRGB colours are a guess")
                              .arg(m_path));
    }
    m_data.iccProfile.clear();
    return {};
}

std::unique_ptr<JpegRowReader> SourcePicture::rows(bool colored) const
{
    if (m_format.kind() != PictureFormat::Jpeg ||
        m_transformation != QImageIOHandler::TransformationNone) {
        return nullptr;
    }
    auto rows = std::make_unique<JpegRowReader>(m_file);
    if (!rows->isReadable() || rows->isCmyk()) {
        return nullptr;
    }
    if (colored) {
        rows->expandGray();
    }
    return rows;
}

Outcome SourcePicture::finishRows(JpegRowReader *rows)
{
    const QString error = rows->error();
    if (!error.isEmpty()) {
        return notAPicture(error);
    }
    noteDamage(rows->warning());
    return {};
}

void SourcePicture::noteDamage(const QString &warning)
{
    if (!warning.isEmpty()) {
        m_warnings.append(QStringLiteral("the source %1 may be damaged: %2").arg(m_path, warning));
    }
}

Outcome SourcePicture::decodeByQt()
{
    const ErrorCapture capture;
    QBuffer buffer(&m_file);
    QImageReader reader(&buffer, m_format.qtName());
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(false);
    if (!reader.read(&m_image)) {
        return notAPicture(reader.errorString());
    }
    // The codec of BMP leaves what is missing black and does not tell.
    if (m_format.kind() == PictureFormat::Bmp && isTruncatedBmp(m_file)) {
        return notAPicture(QStringLiteral("its data ends early"));
    }
    if (m_data.iccProfile.isEmpty()) {
        m_data.iccProfile = profileOf(m_image.colorSpace());
    }
    // The codec reads one from every kind of file, if it understands it.
    m_data.hasUnreadProfile = m_data.hasUnreadProfile && !m_image.colorSpace().isValid();
    m_image.setColorSpace(QColorSpace());
    m_texts = plainTexts(m_image);
    m_image = withoutTexts(m_image);
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
