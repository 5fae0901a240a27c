#include "exporter/containers/Exif.h"

#include "exporter/containers/TiffDirectory.h"

namespace ko::exporter
{

namespace
{

enum Tag : quint16 {
    imageWidth = 0x0100,
    imageHeight = 0x0101,
    orientation = 0x0112,
    thumbnailPosition = 0x0201,
    thumbnailSize = 0x0202,
    relatedWidth = 0x1001,
    relatedHeight = 0x1002,
    exifDirectory = 0x8769,
    pixelWidth = 0xa002,
    pixelHeight = 0xa003,
    interoperabilityDirectory = 0xa005,
};

void setNumber(TiffBytes *tiff, quint32 directory, quint16 tag, int value)
{
    const std::optional<quint32> entry = tiff->findEntry(directory, tag);
    if (entry && tiff->number(*entry)) {
        tiff->setNumber(*entry, quint32(value));
    }
}

std::optional<quint32> numberOf(const TiffBytes &tiff, quint32 directory, quint16 tag)
{
    const std::optional<quint32> entry = tiff.findEntry(directory, tag);
    return entry ? tiff.number(*entry) : std::nullopt;
}

// The pixels of the thumbnail, which may show what is no longer to be seen.
// Mostly they come last.
void eraseThumbnail(QByteArray *block, quint32 position, quint32 size)
{
    if (quint64(position) + size > quint64(block->size()) ||
        block->mid(int(position), 2) != "\xff\xd8") {
        return;
    }
    if (position + size == quint32(block->size())) {
        block->truncate(int(position));
    } else {
        block->replace(int(position), int(size), QByteArray(int(size), '\0'));
    }
}

void dropThumbnail(QByteArray *block, quint32 directory)
{
    TiffBytes tiff(*block);
    const std::optional<quint32> second = tiff.nextDirectory(directory);
    if (!second) {
        return;
    }
    const std::optional<quint32> position = numberOf(tiff, *second, thumbnailPosition);
    const std::optional<quint32> size = numberOf(tiff, *second, thumbnailSize);
    tiff.cutNextDirectory(directory);
    if (position && size) {
        eraseThumbnail(block, *position, *size);
    }
}

void setPixelSize(TiffBytes *tiff, quint32 directory, const QSize &size)
{
    setNumber(tiff, directory, imageWidth, size.width());
    setNumber(tiff, directory, imageHeight, size.height());
    const std::optional<quint32> details = tiff->findDirectory(directory, exifDirectory);
    if (!details) {
        return;
    }
    setNumber(tiff, *details, pixelWidth, size.width());
    setNumber(tiff, *details, pixelHeight, size.height());
    if (const auto related = tiff->findDirectory(*details, interoperabilityDirectory)) {
        setNumber(tiff, *related, relatedWidth, size.width());
        setNumber(tiff, *related, relatedHeight, size.height());
    }
}

} // namespace

QByteArray withoutExifPrefix(const QByteArray &exif)
{
    const QByteArray prefix = QByteArray::fromRawData("Exif\0\0", 6);
    return exif.startsWith(prefix) ? exif.mid(prefix.size()) : exif;
}

// A turn by a quarter comes after the mirroring.
QImageIOHandler::Transformations exifTransformation(const QByteArray &exif)
{
    QByteArray block = exif;
    const TiffBytes tiff(block);
    const std::optional<quint32> directory = tiff.firstDirectory();
    switch (directory ? numberOf(tiff, *directory, orientation).value_or(1) : 1) {
    case 2:
        return QImageIOHandler::TransformationMirror;
    case 3:
        return QImageIOHandler::TransformationRotate180;
    case 4:
        return QImageIOHandler::TransformationFlip;
    case 5:
        return QImageIOHandler::TransformationFlipAndRotate90;
    case 6:
        return QImageIOHandler::TransformationRotate90;
    case 7:
        return QImageIOHandler::TransformationMirrorAndRotate90;
    case 8:
        return QImageIOHandler::TransformationRotate270;
    default:
        return QImageIOHandler::TransformationNone;
    }
}

QByteArray exifForPicture(const QByteArray &exif, const QSize &size)
{
    QByteArray block = exif;
    TiffBytes tiff(block);
    const std::optional<quint32> directory = tiff.firstDirectory();
    if (directory) {
        setNumber(&tiff, *directory, orientation, 1);
        setPixelSize(&tiff, *directory, size);
        dropThumbnail(&block, *directory);
    }
    return block;
}

} // namespace ko::exporter
