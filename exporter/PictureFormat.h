#pragma once

#include "exporter/containers/EmbeddedData.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtGui/QImage>

namespace ko::exporter
{

// One of the file formats that the exporter reads and writes, with what it can
// hold.
class PictureFormat
{
public:
    enum Kind { Unknown, Jpeg, Png, WebP, Tiff, Bmp };

    // By the suffix, in either case.
    static PictureFormat ofFileName(const QString &path);
    static PictureFormat ofSuffix(const QString &suffix);
    // By the first bytes, whatever the file is called.
    static PictureFormat ofContent(const QByteArray &file);
    // The suffixes that ofFileName() knows, as a text for people.
    static QString knownSuffixes();

    bool isKnown() const { return m_kind != Unknown; }
    Kind kind() const { return m_kind; }
    // What QImageReader and QImageWriter call it.
    QByteArray qtName() const;
    bool holdsAlpha() const;
    // 16 bits a channel.
    bool holdsDeepChannels() const { return m_kind == Png || m_kind == Tiff; }
    bool holdsProfile() const { return m_kind != Bmp; }
    // EXIF and XMP; IPTC too, but for WebP.
    bool holdsMetadata() const { return m_kind != Bmp; }

    // What `file`, which may be changed in places that hold no pixels, carries
    // beside its pixels.
    EmbeddedData takeData(QByteArray *file) const;
    // The encoded file of `image` with the data in it; what cannot be added is
    // named in `leftOut`.
    QByteArray withData(QByteArray file, const EmbeddedData &data, const QImage &image,
                        QStringList *leftOut) const;

private:
    explicit PictureFormat(Kind kind) : m_kind(kind) {}

    Kind m_kind;
};

} // namespace ko::exporter
