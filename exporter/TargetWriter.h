#pragma once

#include "exporter/Failure.h"
#include "exporter/PictureFormat.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtGui/QImage>

namespace ko::exporter
{

// The file to write. It appears complete or not at all, in place of an older one, whatever ends the
// program; only a kill while the bytes go to the disk leaves a temporary file beside it. Needs no
// application object.
class TargetWriter
{
public:
    explicit TargetWriter(const QString &path);

    // What can be told before there is a picture: the format and the folder.
    Outcome check() const;
    // Encodes the picture with its profile, which may be empty, and writes it. Where the format has
    // no alpha channel the picture is composed over white.
    Outcome write(const QImage &image, const QByteArray &iccProfile);
    // What write() had to leave out.
    QStringList warnings() const { return m_warnings; }

private:
    QImage prepared(const QImage &image, QByteArray *iccProfile);
    Outcome encode(const QImage &image, const QByteArray &iccProfile, QByteArray *file);
    Outcome save(const QByteArray &file) const;

    const QString m_path;
    const PictureFormat m_format;
    QStringList m_warnings;
};

} // namespace ko::exporter
