#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace ko::exporter
{

class JpegRowReader;
class ProcessorRenderer;

// What streamJpeg() made.
struct StreamedJpeg {
    // The encoded picture; empty after a failure, whose reason is that of the reader, or else
    // `error`, or else that memory ran out.
    QByteArray file;
    bool drawn = false;
    // What the encoder reports.
    QString error;
};

// Draws the rows of one JPEG into another, which never is in memory as a picture. Where the
// renderer has more than one thread, decoding and encoding have one each of their own. `reader` has
// rows left, no CMYK ones; afterwards it tells whether the source was sound.
StreamedJpeg streamJpeg(JpegRowReader *reader, const ProcessorRenderer &renderer, int quality);

} // namespace ko::exporter
