#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QSize>
#include <QtGui/QImage>

#include <functional>

// JPEG files of the kinds that Qt does not write, and a profile for CMYK, made by libjpeg and
// Little CMS themselves.

// Amounts of ink, 0 to 255.
struct Inks {
    int cyan;
    int magenta;
    int yellow;
    int black;
};

struct CmykFile {
    bool asYcck = false;
    // As Adobe does: inverted, and with its marker.
    bool adobe = true;
    QByteArray iccProfile = {};
};

// Quality 100 and no subsampling. `inks` tells those of each pixel.
QByteArray encodeCmyk(const QSize &size, const std::function<Inks(int x, int y)> &inks,
                      const CmykFile &kind);

QByteArray encodeProgressive(const QImage &image);
// Colours that change slowly, of a picture that is never in memory.
QByteArray encodeGradient(const QSize &size);
// The first scan again and again, which is of no harm.
QByteArray withRepeatedScans(const QByteArray &progressive, int count);

// A profile that disagrees with the plain formula: in it yellow ink takes away red, and cyan blue.
// Exact for multiples of 51.
QByteArray swappedCmykProfile();
