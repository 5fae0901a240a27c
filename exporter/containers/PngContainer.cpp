#include "exporter/containers/PngContainer.h"

#include <QtCore/QtEndian>

namespace ko::exporter
{

namespace
{

constexpr int signatureSize = 8;
constexpr int chunkOverhead = 12; // length, type, checksum
constexpr int headerChunkSize = chunkOverhead + 13;
constexpr int lengthPrefix = 4;

QByteArray bigEndian(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
}

// PNG, annex D: CRC-32 with the reversed polynomial 0xedb88320.
quint32 checksum(const QByteArray &bytes)
{
    quint32 crc = 0xffffffff;
    for (const char byte : bytes) {
        crc ^= uchar(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xedb88320 : crc >> 1;
        }
    }
    return ~crc;
}

QByteArray chunk(const char *type, const QByteArray &content)
{
    const QByteArray body = type + content;
    return bigEndian(quint32(content.size())) + body + bigEndian(checksum(body));
}

// A name, a zero, the compression method 0, then a zlib stream. qUncompress() expects the length of
// the result in front, and takes it as a first guess.
QByteArray uncompressedProfile(const QByteArray &content)
{
    const int nameEnd = content.indexOf('\0');
    if (nameEnd < 0 || content.size() < nameEnd + 3 || content.at(nameEnd + 1) != 0) {
        return {};
    }
    const QByteArray stream = content.mid(nameEnd + 2);
    return qUncompress(bigEndian(quint32(stream.size())) + stream);
}

} // namespace

EmbeddedData readPngContainer(const QByteArray &file)
{
    EmbeddedData data;
    int position = signatureSize;
    while (position <= file.size() - chunkOverhead) {
        const auto length = qFromBigEndian<quint32>(file.constData() + position);
        if (length > quint32(file.size() - position - chunkOverhead)) {
            break;
        }
        const QByteArray type = file.mid(position + 4, 4);
        if (type == "iCCP") {
            data.iccProfile = uncompressedProfile(file.mid(position + 8, int(length)));
        } else if (type == "eXIf") { // may also stand behind the pixels
            data.exif = file.mid(position + 8, int(length));
        }
        position += chunkOverhead + int(length);
    }
    return data;
}

QByteArray pngWithProfile(const QByteArray &file, const QByteArray &iccProfile)
{
    const QByteArray name("ICC profile\0\0", 13); // with the compression method
    const int position = signatureSize + headerChunkSize;
    return file.left(position) + chunk("iCCP", name + qCompress(iccProfile).mid(lengthPrefix)) +
           file.mid(position);
}

} // namespace ko::exporter
