#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtGui/QImage>

// Picture files with profile, orientation and more, put together and taken apart byte by byte, so
// that the tests do not depend on what the tool uses for it. Formats are "jpg", "png", "webp" and
// "tif".

struct PictureFile {
    QByteArray iccProfile; // empty: none
    int orientation = 0;   // EXIF's 1 to 8; 0: none
    bool bigEndianExif = false;
    QByteArray exif =
        {}; // a whole block, in place of one with nothing but the orientation; not in TIFF
    QByteArray xmp = {};
    QByteArray photoshop = {}; // image resources; not in WebP
};

// Lossless but for JPEG. `image` must be opaque.
QByteArray encodePicture(const QString &format, const QImage &image, const PictureFile &embedded);

// The profile in a file; empty when there is none.
QByteArray profileIn(const QString &format, const QByteArray &file);

// An uncompressed RGB BigTIFF with further tags, each of bytes.
QByteArray encodeBigTiff(const QImage &image, bool isBigEndian,
                         const QMap<quint16, QByteArray> &blocks);

// An uncompressed RGB TIFF whose pixels come last, behind the directory.
QByteArray encodeTiff(const QImage &image, const PictureFile &embedded);
