#include "exporter/TargetWriter.h"

#include "exporter/ErrorCapture.h"
#include "exporter/containers/IccProfile.h"

#include <QtCore/QBuffer>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtGui/QImageWriter>
#include <QtGui/QPainter>
#include <QtGui/QPixelFormat>

namespace ko::exporter
{

namespace
{

QImage overWhite(const QImage &image)
{
    QImage opaque(image.size(), QImage::Format_RGB32);
    opaque.fill(Qt::white);
    opaque.setDotsPerMeterX(image.dotsPerMeterX());
    opaque.setDotsPerMeterY(image.dotsPerMeterY());
    QPainter painter(&opaque);
    painter.drawImage(0, 0, image);
    return opaque;
}

// Decoders refuse a file whose profile describes other channels than its pixels have.
QImage inRgb(const QImage &image)
{
    if (image.pixelFormat().colorModel() == QPixelFormat::RGB) {
        return image;
    }
    return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32
                                                         : QImage::Format_RGB32);
}

} // namespace

TargetWriter::TargetWriter(const QString &path)
    : m_path(path), m_format(PictureFormat::ofFileName(path))
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

Outcome TargetWriter::write(const QImage &image, const QByteArray &iccProfile)
{
    if (Outcome failure = check()) {
        return failure;
    }
    QByteArray profile = iccProfile;
    const QImage picture = prepared(image, &profile);
    QByteArray file;
    if (Outcome failure = encode(picture, profile, &file)) {
        return failure;
    }
    return save(file);
}

// Clears the profile where it cannot describe what is written.
QImage TargetWriter::prepared(const QImage &image, QByteArray *iccProfile)
{
    QImage picture = image.hasAlphaChannel() && !m_format.holdsAlpha() ? overWhite(image) : image;
    if (iccProfile->isEmpty() || !m_format.holdsProfile()) {
        iccProfile->clear();
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

Outcome TargetWriter::encode(const QImage &image, const QByteArray &iccProfile, QByteArray *file)
{
    const ErrorCapture capture;
    QBuffer buffer(file);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, m_format.qtName());
    writer.setQuality(m_format.quality());
    if (!writer.write(image)) {
        return Failure{ExitCode::TargetWrite,
                       QStringLiteral("the target %1 of %2 x %3 pixels cannot be encoded: %4")
                           .arg(m_path, QString::number(image.width()),
                                QString::number(image.height()), writer.errorString())};
    }
    buffer.close();
    if (iccProfile.isEmpty()) {
        return {};
    }
    const QByteArray profiled = m_format.withProfile(*file, iccProfile, image);
    if (profiled.isEmpty()) {
        return Failure{
            ExitCode::TargetWrite,
            QStringLiteral("the target %1 cannot hold the source's ICC profile").arg(m_path)};
    }
    *file = profiled;
    return {};
}

Outcome TargetWriter::save(const QByteArray &file) const
{
    QSaveFile target(m_path);
    if (!target.open(QIODevice::WriteOnly)) {
        const bool exists = QFileInfo::exists(m_path);
        return Failure{exists ? ExitCode::TargetWrite : ExitCode::TargetFolder,
                       QStringLiteral("the target %1 cannot be written: %2")
                           .arg(m_path, target.errorString())};
    }
    if (target.write(file) != file.size() || !target.commit()) {
        return Failure{ExitCode::TargetWrite, QStringLiteral("the target %1 cannot be written: %2")
                                                  .arg(m_path, target.errorString())};
    }
    return {};
}

} // namespace ko::exporter
