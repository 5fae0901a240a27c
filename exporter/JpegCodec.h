#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtGui/QImage>

namespace ko::exporter
{

// JPEG by libjpeg-turbo itself: straight into and out of the layout that GL
// takes. Nothing is printed; every function may run on several threads at once.
// JpegRowReader and JpegRowWriter do the same row by row.

// What decodeJpeg() made of a file. Null image: `error` tells why.
struct DecodedJpeg {
    // Format_RGBX8888, or Format_Grayscale8 for grey files; with the file's
    // resolution.
    QImage image;
    QString error;
    // What libjpeg says of a picture that it made in spite of it. Not all damage can be told.
    QString warning;
    // The colours were CMYK or YCCK and are sRGB now; true for `byProfile` when a
    // profile told how, and not the plain formula R = (1 - C)(1 - K).
    bool wasCmyk = false;
    bool byProfile = false;
};

// Of the stored pixels; empty where the header cannot be read.
QSize jpegSize(const QByteArray &file);

// `iccProfile` is used for CMYK only. A valid `wanted`, the size to which the
// picture will be scaled, allows a result of 1/2, 1/4 or 1/8 of the stored
// size, but at least twice `wanted`. A file that ends early or whose data is
// damaged is an error.
DecodedJpeg decodeJpeg(const QByteArray &file, const QByteArray &iccProfile,
                       const QSize &wanted = {});

// Baseline, with halved chroma; grey images give grey files. `image` is opaque.
// Returns an empty text, or what is wrong.
QString encodeJpeg(const QImage &image, int quality, QByteArray *file);

} // namespace ko::exporter
