#include "benchmarks/exporter/ProfiledSteps.h"

#include "benchmarks/exporter/StepClock.h"

#include "exporter/ExportOptions.h"
#include "exporter/JpegCodec.h"
#include "exporter/SourcePicture.h"

#include <QtCore/QSaveFile>

#include <cstdlib>
#include <iostream>

namespace ko::exporter::benchmarks
{

void giveUp(const QString &reason)
{
    std::cerr << reason.toStdString() << '\n';
    std::exit(1);
}

LoadedPicture loadPicture(const QString &path)
{
    LoadedPicture loaded;
    SourcePicture source(path);
    const double start = StepClock::now();
    if (const Outcome failure = source.open()) {
        giveUp(failure->message);
    }
    const double read = StepClock::now();
    if (const Outcome failure = source.decode()) {
        giveUp(failure->message);
    }
    loaded.image = source.takeImage();
    loaded.reading = read - start;
    loaded.decoding = StepClock::now() - read;
    return loaded;
}

QByteArray encoded(const QImage &picture)
{
    QByteArray bytes;
    const QString error = encodeJpeg(picture, ExportOptions().quality, &bytes);
    if (!error.isEmpty()) {
        giveUp(error);
    }
    return bytes;
}

void writeTarget(const QString &path, const QByteArray &bytes)
{
    QSaveFile target(path);
    if (!target.open(QIODevice::WriteOnly) || target.write(bytes) != bytes.size() ||
        !target.commit()) {
        giveUp(target.errorString());
    }
}

} // namespace ko::exporter::benchmarks
