#pragma once

#include "exporter/ExportOptions.h"
#include "exporter/Failure.h"
#include "exporter/PictureFormat.h"

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtGui/QImage>

namespace ko::exporter
{

// The file to write. It appears complete or not at all, in place of an older
// one, whatever ends the program; only a kill while the bytes go to the disk
// leaves a temporary file beside it. Needs no application object.
class TargetWriter
{
public:
    TargetWriter(const QString &path, const ExportOptions &options);

    QString path() const { return m_path; }
    PictureFormat format() const { return m_format; }

    // What can be told before there is a picture: the format and the folder.
    Outcome check() const;
    // Encodes the picture with what `data` and `texts` hold, as far as the
    // options keep it and the format can hold it, and writes it. Where the format
    // has no alpha channel the picture is composed over the background.
    Outcome write(const QImage &image, const EmbeddedData &data,
                  const QMap<QString, QString> &texts = {});
    // Whether a JPEG file that somebody else encoded can be the target of a picture
    // with that profile; it may then be grey where `takesGrayRows()`.
    bool takesJpegRows(const EmbeddedData &data) const;
    bool takesGrayRows(const EmbeddedData &data) const;
    // As write(), for such a file, encoded with the quality of the options.
    Outcome writeJpeg(QByteArray file, const QSize &size, const EmbeddedData &data);
    // The failure of a picture of that size that cannot be encoded.
    Failure unencodable(const QSize &size, const QString &error) const;
    // What write() had to leave out.
    QStringList warnings() const { return m_warnings; }

private:
    QByteArray keptProfile(const EmbeddedData &data) const;
    EmbeddedData keptData(const EmbeddedData &data, const QSize &size) const;
    void noteUnread(const EmbeddedData &data);
    QImage prepared(const QImage &image, QByteArray *iccProfile);
    QString encode(const QImage &image, QByteArray *file) const;
    QByteArray withData(QByteArray file, const QImage &image, const EmbeddedData &data);
    Outcome save(const QByteArray &file) const;

    const QString m_path;
    const ExportOptions m_options;
    const PictureFormat m_format;
    QStringList m_warnings;
};

} // namespace ko::exporter
