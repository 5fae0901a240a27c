#pragma once

#include <QtCore/QByteArray>

// A gzip file with the content, in pure Qt: zlib's stream between gzip's header and checksum.
inline QByteArray gzip(const QByteArray &content)
{
    quint32 crc = ~0u;
    for (const char byte : content) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1) ^ (0xedb88320u & (0u - (crc & 1u)));
        }
    }
    QByteArray packed("\x1f\x8b\x08\x00\x00\x00\x00\x00\x00\x03", 10);
    const QByteArray zlib = qCompress(content); // 4 bytes length, 2 header, the stream, 4 checksum
    packed += zlib.mid(6, zlib.size() - 10);
    for (const quint32 number : {~crc, quint32(content.size())}) {
        for (int shift = 0; shift < 32; shift += 8) {
            packed += char(number >> shift);
        }
    }
    return packed;
}
