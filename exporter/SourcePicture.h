#pragma once

#include "exporter/Failure.h"
#include "exporter/PictureFormat.h"

#include <QtCore/QByteArray>
#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtGui/QImage>

namespace ko::exporter
{

// The picture to export: read at once, so that the file may be replaced later, decoded on demand.
// Needs no application object.
class SourcePicture
{
public:
    explicit SourcePicture(const QString &path);

    // Reads the file and recognises its format.
    Outcome open();
    // As stored; empty where only decoding tells.
    QSize storedSize() const { return m_storedSize; }

    // Decodes what open() read, turns it upright and forgets the file's bytes. A file that ends
    // early is a failure also where its codec would make something up.
    Outcome decode();
    // Null before decode(). Upright, not premultiplied unless the file was, without colour space.
    QImage image() const { return m_image; }
    // The file's own bytes. A file that describes its colours in another way has a profile made for
    // it, unless they are plain sRGB. Empty: sRGB or unknown.
    QByteArray iccProfile() const { return m_iccProfile; }

private:
    Outcome readFile();
    Failure unreadable(const QString &reason) const;
    Failure notAPicture(const QString &reason) const;

    const QString m_path;
    QByteArray m_file;
    PictureFormat m_format = PictureFormat::ofContent({});
    QSize m_storedSize;
    QImage m_image;
    QByteArray m_iccProfile;
};

} // namespace ko::exporter
