#include "exporter/containers/WebPContainer.h"

#include "exporter/containers/Exif.h"

#include <QtCore/QtEndian>

namespace ko::exporter
{

namespace
{

constexpr int riffHeader = 12; // "RIFF", size, "WEBP"
constexpr int chunkHeader = 8; // type, size
constexpr int extendedSize = 10;
constexpr char profileFlag = 0x20;
constexpr char alphaFlag = 0x10;
constexpr char exifFlag = 0x08;
constexpr char xmpFlag = 0x04;

QByteArray littleEndian(quint32 value, int size)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes.left(size);
}

// Nothing for no content. A chunk's flag tells that it is there.
QByteArray chunk(const char *type, const QByteArray &content, char flag, char *flags)
{
    if (content.isEmpty()) {
        return {};
    }
    *flags = char(*flags | flag);
    const QByteArray padding(content.size() % 2, '\0');
    return type + littleEndian(quint32(content.size()), 4) + content + padding;
}

} // namespace

EmbeddedData readWebPContainer(const QByteArray &file)
{
    EmbeddedData data;
    int position = riffHeader;
    while (position <= file.size() - chunkHeader) {
        const QByteArray type = file.mid(position, 4);
        const auto length = qFromLittleEndian<quint32>(file.constData() + position + 4);
        position += chunkHeader;
        if (length > quint32(file.size() - position)) {
            break;
        }
        if (type == "ICCP") {
            data.iccProfile = file.mid(position, int(length));
        } else if (type == "EXIF") {
            data.exif = withoutExifPrefix(file.mid(position, int(length)));
        } else if (type == "XMP ") {
            data.xmp = file.mid(position, int(length));
        }
        position += int(length);
        position += int(length % 2);
    }
    return data;
}

// The extended header (flags, three zeros, width and height less one in 24
// bits) comes first, the profile directly behind it, the pixels, and then the
// rest.
QByteArray webPWithData(const QByteArray &file, const EmbeddedData &data, const QSize &size,
                        bool hasAlpha)
{
    QByteArray header;
    QByteArray pixels = file.mid(riffHeader);
    if (pixels.startsWith("VP8X")) {
        header = pixels.mid(chunkHeader, extendedSize);
        pixels = pixels.mid(chunkHeader + extendedSize);
    } else {
        header = QByteArray(4, '\0') + littleEndian(quint32(size.width() - 1), 3) +
                 littleEndian(quint32(size.height() - 1), 3);
        header[0] = hasAlpha ? alphaFlag : char(0);
    }
    char flags = header.at(0);
    const QByteArray profile = chunk("ICCP", data.iccProfile, profileFlag, &flags);
    const QByteArray exif = chunk("EXIF", data.exif, exifFlag, &flags);
    const QByteArray xmp = chunk("XMP ", data.xmp, xmpFlag, &flags);
    header[0] = flags;
    const QByteArray body =
        "WEBP" + chunk("VP8X", header, 0, &flags) + profile + pixels + exif + xmp;
    return "RIFF" + littleEndian(quint32(body.size()), 4) + body;
}

} // namespace ko::exporter
