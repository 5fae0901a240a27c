#include "exporter/containers/WebPContainer.h"

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

QByteArray littleEndian(quint32 value, int size)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes.left(size);
}

QByteArray chunk(const char *type, const QByteArray &content)
{
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
            data.exif = file.mid(position, int(length));
        }
        position += int(length);
        position += int(length % 2);
    }
    return data;
}

// The extended header (flags, three zeros, width and height less one in 24 bits) comes first, the
// profile directly behind it.
QByteArray webPWithProfile(const QByteArray &file, const QByteArray &iccProfile, const QSize &size,
                           bool hasAlpha)
{
    QByteArray header;
    QByteArray rest = file.mid(riffHeader);
    if (rest.startsWith("VP8X")) {
        header = rest.mid(chunkHeader, extendedSize);
        rest = rest.mid(chunkHeader + extendedSize);
    } else {
        header = QByteArray(4, '\0') + littleEndian(quint32(size.width() - 1), 3) +
                 littleEndian(quint32(size.height() - 1), 3);
        header[0] = hasAlpha ? alphaFlag : char(0);
    }
    header[0] = char(header.at(0) | profileFlag);
    const QByteArray body = "WEBP" + chunk("VP8X", header) + chunk("ICCP", iccProfile) + rest;
    return "RIFF" + littleEndian(quint32(body.size()), 4) + body;
}

} // namespace ko::exporter
