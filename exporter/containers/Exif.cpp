#include "exporter/containers/Exif.h"

#include <exiv2/exiv2.hpp>

namespace ko::exporter
{

namespace
{

constexpr char prefix[] = "Exif\0"; // with the array's own zero the six bytes of the prefix

int orientationTag(const QByteArray &block)
{
    try {
        Exiv2::ExifData data;
        Exiv2::ExifParser::decode(data, reinterpret_cast<const Exiv2::byte *>(block.constData()),
                                  uint32_t(block.size()));
        const auto tag = data.findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
        return tag != data.end() && tag->count() > 0 ? int(tag->toLong()) : 1;
    } catch (const std::exception &) {
        return 1;
    }
}

} // namespace

// A turn by a quarter comes after the mirroring.
QImageIOHandler::Transformations exifTransformation(const QByteArray &exif)
{
    const bool prefixed = exif.startsWith(QByteArray::fromRawData(prefix, sizeof(prefix)));
    switch (orientationTag(prefixed ? exif.mid(sizeof(prefix)) : exif)) {
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

} // namespace ko::exporter
