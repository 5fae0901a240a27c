#include "exporter/JpegCodec.h"

#include "exporter/CmykConversion.h"
#include "exporter/JpegRowReader.h"
#include "exporter/JpegRowWriter.h"

#include <QtCore/QVector>

#include <memory>

namespace ko::exporter
{

namespace
{

bool readCmyk(JpegRowReader *reader, const CmykConversion &conversion, QImage *image)
{
    QVector<uchar> row(4 * image->width());
    for (int y = 0; y < image->height(); ++y) {
        if (!reader->read(row.data(), row.size(), 1)) {
            return false;
        }
        conversion.convert(row.constData(), image->scanLine(y), image->width());
    }
    return true;
}

} // namespace

QSize jpegSize(const QByteArray &file)
{
    const JpegRowReader reader(file);
    return reader.isReadable() ? reader.storedSize() : QSize();
}

DecodedJpeg decodeJpeg(const QByteArray &file, const QByteArray &iccProfile, const QSize &wanted)
{
    DecodedJpeg result;
    JpegRowReader reader(file, wanted);
    if (!reader.isReadable()) {
        result.error = reader.error();
        return result;
    }
    QImage image(reader.size(),
                 reader.isGray() ? QImage::Format_Grayscale8 : QImage::Format_RGBX8888);
    if (image.isNull()) {
        result.error = QStringLiteral("there is not enough memory for it");
        return result;
    }
    if (reader.isCmyk()) {
        const CmykConversion conversion(iccProfile, reader.isInvertedCmyk());
        result.wasCmyk = true;
        result.byProfile = conversion.usesProfile();
        readCmyk(&reader, conversion, &image);
    } else {
        reader.read(image.bits(), image.bytesPerLine(), image.height());
    }
    result.error = reader.error();
    if (result.error.isEmpty()) {
        reader.copyResolution(&image);
        result.image = image;
        result.warning = reader.warning();
    }
    return result;
}

QString encodeJpeg(const QImage &image, int quality, QByteArray *file)
{
    const bool isGray = image.format() == QImage::Format_Grayscale8;
    const QImage pixels = isGray || image.format() == QImage::Format_RGBX8888
                              ? image
                              : image.convertToFormat(QImage::Format_RGBX8888);
    JpegRowWriter writer(pixels.size(), isGray, pixels, quality, file);
    for (int y = 0; y < pixels.height() && writer.write(pixels.constScanLine(y)); ++y) {
    }
    return writer.finish();
}

} // namespace ko::exporter
