#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtGui/QImage>

namespace ko::exporter::benchmarks
{

// Steps that the ways of drawing have in common, by the exporter's own code. Failures end the
// program with a line on standard error.

[[noreturn]] void giveUp(const QString &reason);

// What is in the file as the exporter holds it; the times of both in milliseconds.
struct LoadedPicture {
    QImage image;
    double reading = 0.0;
    double decoding = 0.0;
};
LoadedPicture loadPicture(const QString &path);

// JPEG of the exporter's default quality.
QByteArray encoded(const QImage &picture);
// As the exporter writes, complete or not at all.
void writeTarget(const QString &path, const QByteArray &bytes);

} // namespace ko::exporter::benchmarks
