#pragma once

#include "exporter/containers/EmbeddedData.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtGui/QImage>

namespace ko::exporter
{

// One of the file formats that the exporter reads and writes, with what it can hold.
class PictureFormat
{
public:
    enum Kind { Unknown, Jpeg, Png, WebP, Tiff, Bmp };

    // By the suffix, in either case.
    static PictureFormat ofFileName(const QString &path);
    // By the first bytes, whatever the file is called.
    static PictureFormat ofContent(const QByteArray &file);
    // The suffixes that ofFileName() knows, as a text for people.
    static QString knownSuffixes();

    bool isKnown() const { return m_kind != Unknown; }
    Kind kind() const { return m_kind; }
    // What QImageReader and QImageWriter call it.
    QByteArray qtName() const;
    bool holdsAlpha() const;
    bool holdsProfile() const { return m_kind != Bmp; }
    // For QImageWriter; -1 is the codec's own default.
    int quality() const;

    EmbeddedData embeddedData(const QByteArray &file) const;
    // The encoded file of `image` with the profile in it; empty when it cannot take the profile.
    QByteArray withProfile(const QByteArray &file, const QByteArray &iccProfile,
                           const QImage &image) const;

private:
    explicit PictureFormat(Kind kind) : m_kind(kind) {}

    Kind m_kind;
};

} // namespace ko::exporter
