#pragma once

#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtGui/QImage>

namespace ko::contactsheet
{

struct Photograph {
    // The file's name without its suffix.
    QString name;
    // Turned upright and reduced; opaque.
    QImage thumbnail;
    // Thumbnail pixels per pixel of the file, at most 1.
    float scale = 1.0F;
};

// The JPEG and PNG files of a folder by name, each reduced to `height` pixels in height unless it
// is smaller. Throws an Error for a folder without any and for a file that cannot be read.
QVector<Photograph> readPhotographs(const QString &folder, int height);

} // namespace ko::contactsheet
