#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QSize>
#include <QtGui/QColor>

namespace ko::exporter
{

// What is the same for every picture of one call of the program.
struct ExportOptions {
    // What draws. Automatic: GL where there is hardware for it, else the processor.
    enum class Engine { Automatic, Gl, Processor };
    // What of the source's metadata goes into the target.
    enum class Keep { All, Icc, None };

    Engine engine = Engine::Automatic;
    Keep keep = Keep::All;
    // 1 to 100, for JPEG and WebP.
    int quality = 92;
    // The target fits inside; never enlarges. Not valid: no limit.
    QSize maxSize;
    // "jpg", "png", "webp", "tif" or "bmp"; empty: what the target's suffix tells.
    QByteArray format;
    // Opaque; what translucent pictures are laid over in formats without alpha.
    QColor background = Qt::white;
    // Larger sources are refused before they are decoded.
    qint64 maxPixels = 300000000;
    // A stack with anything that would be left out or read differently is a failure.
    bool strict = false;
    // Notes on standard error.
    bool verbose = false;
};

} // namespace ko::exporter
