#include "exporter/TargetWriter.h"

#include "exporter/ErrorCapture.h"
#include "exporter/JpegCodec.h"
#include "exporter/SignalPause.h"
#include "exporter/containers/Exif.h"
#include "exporter/containers/IccProfile.h"
#include "exporter/containers/PhotoshopBlock.h"
#include "exporter/containers/XmpPacket.h"

#include <QtCore/QBuffer>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtGui/QImageWriter>
#include <QtGui/QPainter>
#include <QtGui/QPixelFormat>

#include <climits>
#include <utility>

namespace ko::exporter
{

namespace
{

QImage over(const QColor &background, const QImage &image)
{
    QImage opaque(image.size(), QImage::Format_RGB32);
    opaque.fill(background);
    opaque.setDotsPerMeterX(image.dotsPerMeterX());
    opaque.setDotsPerMeterY(image.dotsPerMeterY());
    QPainter painter(&opaque);
    painter.drawImage(0, 0, image);
    return opaque;
}

// Decoders refuse a file whose profile describes other channels than its pixels
// have.
QImage inRgb(const QImage &image)
{
    if (image.pixelFormat().colorModel() == QPixelFormat::RGB) {
        return image;
    }
    return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32
                                                         : QImage::Format_RGB32);
}

// A disk may take a part; only the next attempt tells why not more.
bool writeAll(QSaveFile *target, const QByteArray &bytes)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const qint64 count = target->write(bytes.constData() + done, bytes.size() - done);
        if (count <= 0) {
            return false;
        }
        done += count;
    }
    return true;
}

// A file that is replaced has another one with a longer name beside it for a moment.
bool isTooLongToBeReplaced(const QString &path)
{
    constexpr int addition = 7; // ".XXXXXX"
    const QString name = QFileInfo(QFileInfo(path).canonicalFilePath()).fileName();
    return QFile::encodeName(name).size() + addition > NAME_MAX;
}

QString reasonOf(const QSaveFile &target)
{
    return target.error() == QFileDevice::UnspecifiedError &&
                   isTooLongToBeReplaced(target.fileName())
               ? QStringLiteral("its name is too long to be replaced safely")
               : target.errorString();
}

PictureFormat chosenFormat(const QString &path, const QByteArray &format)
{
    return format.isEmpty() ? PictureFormat::ofFileName(path)
                            : PictureFormat::ofSuffix(QString::fromLatin1(format));
}

} // namespace

TargetWriter::TargetWriter(const QString &path, const ExportOptions &options)
    : m_path(path), m_options(options), m_format(chosenFormat(path, options.format))
{
}

Outcome TargetWriter::check() const
{
    if (!m_format.isKnown()) {
        return Failure{ExitCode::TargetFormatUnknown,
                       QStringLiteral("the target %1 has no suffix of a known format: %2")
                           .arg(m_path, PictureFormat::knownSuffixes())};
    }
    const QFileInfo info(m_path);
    if (info.isDir()) {
        return Failure{ExitCode::TargetWrite,
                       QStringLiteral("the target %1 is a folder").arg(m_path)};
    }
    if (info.exists() && !info.isFile()) {
        return Failure{ExitCode::TargetWrite,
                       QStringLiteral("the target %1 is not a file").arg(m_path)};
    }
    const QFileInfo folder(info.absolutePath());
    if (!folder.isDir()) {
        return Failure{ExitCode::TargetFolder,
                       QStringLiteral("the folder of the target %1 does not exist").arg(m_path)};
    }
    if (!folder.isWritable()) {
        return Failure{ExitCode::TargetFolder,
                       QStringLiteral("the folder of the target %1 is not writable").arg(m_path)};
    }
    return {};
}

Outcome TargetWriter::write(const QImage &image, const EmbeddedData &data,
                            const QMap<QString, QString> &texts)
{
    if (Outcome failure = check()) {
        return failure;
    }
    noteUnread(data);
    EmbeddedData kept = keptData(data, image.size());
    QImage picture = prepared(image, &kept.iccProfile);
    if (m_format.kind() == PictureFormat::Png && m_options.keep == ExportOptions::Keep::All) {
        for (auto text = texts.begin(); text != texts.end(); ++text) {
            picture.setText(text.key(), text.value());
        }
    }
    QByteArray file;
    const QString error = encode(picture, &file);
    if (!error.isEmpty()) {
        return unencodable(image.size(), error);
    }
    return save(withData(std::move(file), picture, kept));
}

// A profile of another kind decides by the pixels.
bool TargetWriter::takesJpegRows(const EmbeddedData &data) const
{
    return m_format.kind() == PictureFormat::Jpeg &&
           (keptProfile(data).isEmpty() || profileSpace(keptProfile(data)) == ProfileSpace::Rgb);
}

bool TargetWriter::takesGrayRows(const EmbeddedData &data) const
{
    return m_format.kind() == PictureFormat::Jpeg && keptProfile(data).isEmpty();
}

Outcome TargetWriter::writeJpeg(QByteArray file, const QSize &size, const EmbeddedData &data)
{
    if (Outcome failure = check()) {
        return failure;
    }
    return save(withData(std::move(file), QImage(), keptData(data, size)));
}

Failure TargetWriter::unencodable(const QSize &size, const QString &error) const
{
    return {ExitCode::TargetWrite,
            QStringLiteral("the target %1 of %2 x %3 pixels cannot be encoded: %4")
                .arg(m_path, QString::number(size.width()), QString::number(size.height()), error)};
}

QByteArray TargetWriter::keptProfile(const EmbeddedData &data) const
{
    return m_options.keep != ExportOptions::Keep::None && m_format.holdsProfile() ? data.iccProfile
                                                                                  : QByteArray();
}

EmbeddedData TargetWriter::keptData(const EmbeddedData &data, const QSize &size) const
{
    EmbeddedData kept;
    kept.iccProfile = keptProfile(data);
    if (m_options.keep == ExportOptions::Keep::All && m_format.holdsMetadata()) {
        kept.exif = exifForPicture(data.exif, size);
        kept.xmp = xmpForPicture(data.xmp, size);
        kept.photoshop = photoshopWithoutThumbnail(data.photoshop);
        kept.extendedXmp = data.extendedXmp;
        kept.comments = data.comments;
    }
    return kept;
}

void TargetWriter::noteUnread(const EmbeddedData &data)
{
    QStringList kinds;
    if (m_options.keep == ExportOptions::Keep::All && m_format.holdsMetadata()) {
        kinds = data.unread;
    }
    if (m_options.keep != ExportOptions::Keep::None && m_format.holdsProfile() &&
        data.hasUnreadProfile) {
        kinds.append(QStringLiteral("ICC profile"));
    }
    for (const QString &kind : qAsConst(kinds)) {
        m_warnings.append(QStringLiteral("the target %1 does not have the source's %2, which "
                                         "cannot be read from BigTIFF")
                              .arg(m_path, kind));
    }
}

// Clears the profile where it cannot describe what is written.
QImage TargetWriter::prepared(const QImage &image, QByteArray *iccProfile)
{
    QImage picture = image.hasAlphaChannel() && !m_format.holdsAlpha()
                         ? over(m_options.background, image)
                         : image;
    if (iccProfile->isEmpty()) {
        return picture;
    }
    const ProfileSpace space = profileSpace(*iccProfile);
    if (space == ProfileSpace::Rgb) {
        return inRgb(picture);
    }
    const bool gray = space == ProfileSpace::Gray && m_format.kind() != PictureFormat::WebP &&
                      !picture.hasAlphaChannel() && picture.allGray();
    if (gray) {
        return picture.convertToFormat(QImage::Format_Grayscale8);
    }
    iccProfile->clear();
    m_warnings.append(QStringLiteral("the target %1 has no ICC profile, since that of the source "
                                     "does not describe RGB colours")
                          .arg(m_path));
    return picture;
}

QString TargetWriter::encode(const QImage &image, QByteArray *file) const
{
    if (m_format.kind() == PictureFormat::Jpeg) {
        return encodeJpeg(image, m_options.quality, file);
    }
    const ErrorCapture capture;
    QBuffer buffer(file);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, m_format.qtName());
    if (m_format.kind() == PictureFormat::WebP) {
        writer.setQuality(m_options.quality);
    }
    return writer.write(image) ? QString() : writer.errorString();
}

QByteArray TargetWriter::withData(QByteArray file, const QImage &image, const EmbeddedData &data)
{
    QStringList leftOut;
    if (m_format.kind() == PictureFormat::WebP && !iptcIn(data.photoshop).isEmpty()) {
        leftOut.append(QStringLiteral("IPTC data"));
    }
    if (m_format.kind() != PictureFormat::Jpeg && !data.extendedXmp.isEmpty()) {
        leftOut.append(QStringLiteral("second part of its XMP data"));
    }
    QByteArray result = m_format.withData(std::move(file), data, image, &leftOut);
    for (const QString &kind : qAsConst(leftOut)) {
        m_warnings.append(
            QStringLiteral("the target %1 cannot hold the source's %2").arg(m_path, kind));
    }
    return result;
}

Outcome TargetWriter::save(const QByteArray &file) const
{
    // What is left to do takes milliseconds, and a file beside the target would
    // stay.
    const SignalPause pause;
    QSaveFile target(m_path);
    if (!target.open(QIODevice::WriteOnly)) {
        const bool exists = QFileInfo::exists(m_path);
        return Failure{exists ? ExitCode::TargetWrite : ExitCode::TargetFolder,
                       QStringLiteral("the target %1 cannot be written: %2")
                           .arg(m_path, target.errorString())};
    }
    if (!writeAll(&target, file) || !target.commit()) {
        return Failure{
            ExitCode::TargetWrite,
            QStringLiteral("the target %1 cannot be written: %2").arg(m_path, reasonOf(target))};
    }
    return {};
}

} // namespace ko::exporter
