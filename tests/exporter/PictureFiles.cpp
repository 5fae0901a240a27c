#include "PictureFiles.h"

#include <QtCore/QBuffer>
#include <QtCore/QtEndian>
#include <QtGui/QColorSpace>
#include <QtGui/QImageWriter>

namespace
{

template <class Number>
QByteArray bigEndian(Number value)
{
    QByteArray bytes(sizeof(Number), '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
}

template <class Number>
QByteArray littleEndian(Number value)
{
    QByteArray bytes(sizeof(Number), '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray encode(const QImage &image, const char *format)
{
    QImage plain = image;
    plain.setColorSpace(QColorSpace());
    QByteArray file;
    QBuffer buffer(&file);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    if (qstrcmp(format, "png") != 0) {
        writer.setQuality(100);
    }
    if (!writer.write(plain)) {
        qFatal("%s cannot be written", format);
    }
    return file;
}

bool hasExif(const PictureFile &embedded)
{
    return embedded.orientation != 0 || !embedded.exif.isEmpty();
}

QByteArray exifBlock(const PictureFile &embedded)
{
    if (!embedded.exif.isEmpty()) {
        return embedded.exif;
    }
    const auto orientation = quint16(embedded.orientation);
    if (embedded.bigEndianExif) {
        return "MM" + bigEndian<quint16>(42) + bigEndian<quint32>(8) + bigEndian<quint16>(1) +
               bigEndian<quint16>(0x0112) + bigEndian<quint16>(3) + bigEndian<quint32>(1) +
               bigEndian<quint16>(orientation) + QByteArray(6, '\0');
    }
    return "II" + littleEndian<quint16>(42) + littleEndian<quint32>(8) + littleEndian<quint16>(1) +
           littleEndian<quint16>(0x0112) + littleEndian<quint16>(3) + littleEndian<quint32>(1) +
           littleEndian<quint16>(orientation) + QByteArray(6, '\0');
}

QByteArray jpegSegment(uchar marker, const QByteArray &content)
{
    return QByteArray(1, char(0xff)) + char(marker) + bigEndian(quint16(content.size() + 2)) +
           content;
}

QByteArray encodeJpeg(const QImage &image, const PictureFile &embedded)
{
    constexpr int chunkSize = 60000;
    QByteArray segments;
    if (hasExif(embedded)) {
        segments += jpegSegment(0xe1, QByteArray("Exif\0\0", 6) + exifBlock(embedded));
    }
    const int count = (embedded.iccProfile.size() + chunkSize - 1) / chunkSize;
    // The last chunk first: readers go by their numbers.
    for (int i = count; i > 0; --i) {
        segments += jpegSegment(0xe2, QByteArray("ICC_PROFILE\0", 12) + char(i) + char(count) +
                                          embedded.iccProfile.mid((i - 1) * chunkSize, chunkSize));
    }
    if (!embedded.xmp.isEmpty()) {
        segments +=
            jpegSegment(0xe1, QByteArray("http://ns.adobe.com/xap/1.0/\0", 29) + embedded.xmp);
    }
    if (!embedded.photoshop.isEmpty()) {
        segments += jpegSegment(0xed, QByteArray("Photoshop 3.0\0", 14) + embedded.photoshop);
    }
    const QByteArray file = encode(image, "jpeg");
    return file.left(2) + segments + file.mid(2);
}

quint32 crc32(const QByteArray &bytes)
{
    quint32 crc = ~0U;
    for (const char byte : bytes) {
        crc ^= uchar(byte);
        for (int i = 0; i < 8; ++i) {
            crc = (crc >> 1) ^ (0xedb88320U & (0U - (crc & 1)));
        }
    }
    return ~crc;
}

QByteArray pngChunk(const QByteArray &type, const QByteArray &content)
{
    return bigEndian(quint32(content.size())) + type + content + bigEndian(crc32(type + content));
}

QByteArray encodePng(const QImage &image, const PictureFile &embedded)
{
    constexpr int headerEnd = 8 + 25;
    QByteArray chunks;
    if (!embedded.iccProfile.isEmpty()) {
        chunks += pngChunk("iCCP", QByteArray("a\0\0", 3) + qCompress(embedded.iccProfile).mid(4));
    }
    if (hasExif(embedded)) {
        chunks += pngChunk("eXIf", exifBlock(embedded));
    }
    if (!embedded.xmp.isEmpty()) {
        chunks += pngChunk("iTXt", QByteArray("XML:com.adobe.xmp\0\0\0\0\0", 22) + embedded.xmp);
    }
    if (!embedded.photoshop.isEmpty()) {
        const QByteArray text = "\niptc\n" + QByteArray::number(embedded.photoshop.size()) + '\n' +
                                embedded.photoshop.toHex();
        chunks +=
            pngChunk("zTXt", QByteArray("Raw profile type iptc\0\0", 23) + qCompress(text).mid(4));
    }
    const QByteArray file = encode(image, "png");
    return file.left(headerEnd) + chunks + file.mid(headerEnd);
}

QByteArray riffChunk(const QByteArray &type, const QByteArray &content)
{
    return type + littleEndian(quint32(content.size())) + content +
           QByteArray(content.size() % 2, '\0');
}

QByteArray encodeWebP(const QImage &image, const PictureFile &embedded)
{
    QByteArray header(4, '\0');
    QByteArray profile;
    QByteArray exif;
    if (!embedded.iccProfile.isEmpty()) {
        header[0] = char(header.at(0) | 0x20);
        profile = riffChunk("ICCP", embedded.iccProfile);
    }
    if (hasExif(embedded)) {
        header[0] = char(header.at(0) | 0x08);
        exif = riffChunk("EXIF", exifBlock(embedded));
    }
    if (!embedded.xmp.isEmpty()) {
        header[0] = char(header.at(0) | 0x04);
        exif += riffChunk("XMP ", embedded.xmp);
    }
    header += littleEndian(quint32(image.width() - 1)).left(3);
    header += littleEndian(quint32(image.height() - 1)).left(3);
    const QByteArray pixels = encode(image, "webp").mid(12);
    if (pixels.startsWith("VP8X")) {
        qFatal("an opaque picture was expected in the simple layout");
    }
    const QByteArray body = "WEBP" + riffChunk("VP8X", header) + profile + pixels + exif;
    return "RIFF" + littleEndian(quint32(body.size())) + body;
}

QByteArray tiffEntry(quint16 tag, quint16 type, int count, int value)
{
    return littleEndian(tag) + littleEndian(type) + littleEndian(quint32(count)) +
           littleEndian(quint32(value));
}

// Only as the tool writes it: the chunks in the order of their numbers.
QByteArray profileInJpeg(const QByteArray &file)
{
    QByteArray profile;
    int number = 0;
    int count = 0;
    int position = 2;
    while (position + 4 <= file.size() && uchar(file.at(position + 1)) != 0xda) {
        const int length = qFromBigEndian<quint16>(file.constData() + position + 2);
        const QByteArray content = file.mid(position + 4, length - 2);
        if (uchar(file.at(position + 1)) == 0xe2 && content.startsWith("ICC_PROFILE")) {
            count = uchar(content.at(13));
            if (uchar(content.at(12)) != ++number) {
                return {};
            }
            profile += content.mid(14);
        }
        position += 2 + length;
    }
    return number == count ? profile : QByteArray();
}

QByteArray profileInPng(const QByteArray &file)
{
    int position = 8;
    while (position + 12 <= file.size()) {
        const int length = int(qFromBigEndian<quint32>(file.constData() + position));
        const QByteArray type = file.mid(position + 4, 4);
        const QByteArray content = file.mid(position + 8, length);
        const auto checksum = qFromBigEndian<quint32>(file.constData() + position + 8 + length);
        if (type == "iCCP" && checksum == crc32(type + content)) {
            const int nameEnd = content.indexOf('\0');
            return qUncompress(bigEndian(quint32(1000000)) + content.mid(nameEnd + 2));
        }
        position += 12 + length;
    }
    return {};
}

QByteArray profileInWebP(const QByteArray &file)
{
    const bool flagged = file.mid(12, 4) == "VP8X" && (file.at(20) & 0x20) != 0;
    const bool directlyBehindHeader = file.mid(30, 4) == "ICCP";
    const auto riffSize = qFromLittleEndian<quint32>(file.constData() + 4);
    if (!flagged || !directlyBehindHeader || riffSize + 8 != quint32(file.size())) {
        return {};
    }
    return file.mid(38, int(qFromLittleEndian<quint32>(file.constData() + 34)));
}

QByteArray profileInTiff(const QByteArray &file)
{
    if (!file.startsWith("II")) {
        return {};
    }
    const auto directory = int(qFromLittleEndian<quint32>(file.constData() + 4));
    const int count = qFromLittleEndian<quint16>(file.constData() + directory);
    for (int i = 0; i < count; ++i) {
        const char *entry = file.constData() + directory + 2 + 12LL * i;
        if (qFromLittleEndian<quint16>(entry) == 34675) {
            return file.mid(int(qFromLittleEndian<quint32>(entry + 8)),
                            int(qFromLittleEndian<quint32>(entry + 4)));
        }
    }
    return {};
}

QByteArray rgbBytes(const QImage &image)
{
    QByteArray pixels;
    const QImage rgb = image.convertToFormat(QImage::Format_RGB888);
    for (int y = 0; y < rgb.height(); ++y) {
        pixels.append(reinterpret_cast<const char *>(rgb.constScanLine(y)), 3 * rgb.width());
    }
    return pixels;
}

} // namespace

// Values of up to eight bytes stand in their entries, and the entries in the order of their tags.
QByteArray encodeBigTiff(const QImage &image, bool isBigEndian,
                         const QMap<quint16, QByteArray> &blocks)
{
    const auto number = [isBigEndian](auto value) {
        return isBigEndian ? bigEndian(value) : littleEndian(value);
    };
    struct Entry {
        quint16 type;
        quint64 count;
        QByteArray value;
    };
    constexpr quint16 byteType = 1;
    constexpr quint16 shortType = 3;
    constexpr quint16 longType = 16; // of eight bytes
    const QByteArray pixels = rgbBytes(image);
    const quint16 shorts[][2] = {{259, 1}, {262, 2}, {277, 3}}; // plain, RGB, samples a pixel
    const quint64 longs[][2] = {{256, quint64(image.width())},
                                {257, quint64(image.height())},
                                {273, 16}, // the pixels come first
                                {278, quint64(image.height())},
                                {279, quint64(pixels.size())}};
    QMap<quint16, Entry> entries;
    entries[258] = {shortType, 3, number(quint16(8)) + number(quint16(8)) + number(quint16(8))};
    for (const auto &value : shorts) {
        entries[value[0]] = {shortType, 1, number(value[1])};
    }
    for (const auto &value : longs) {
        entries[quint16(value[0])] = {longType, 1, number(value[1])};
    }
    QByteArray file(16, '\0');
    file += pixels;
    for (auto block = blocks.begin(); block != blocks.end(); ++block) {
        const bool isShort = block->size() <= 8;
        entries[block.key()] = {byteType, quint64(block->size()),
                                isShort ? *block : number(quint64(file.size()))};
        file += isShort ? QByteArray() : *block;
    }
    const QByteArray start = isBigEndian ? "MM" : "II";
    file.replace(0, 16,
                 start + number(quint16(43)) + number(quint16(8)) + number(quint16(0)) +
                     number(quint64(file.size())));
    file += number(quint64(entries.size()));
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        file += number(entry.key()) + number(entry->type) + number(entry->count) +
                entry->value.leftJustified(8, '\0');
    }
    return file + number(quint64(0));
}

QByteArray encodeTiff(const QImage &image, const PictureFile &embedded)
{
    constexpr quint16 byteType = 1;
    constexpr quint16 shortType = 3;
    constexpr quint16 longType = 4;
    constexpr quint16 undefinedType = 7;
    const struct {
        quint16 tag;
        quint16 type;
        QByteArray bytes;
    } blocks[] = {{700, byteType, embedded.xmp},
                  {34377, byteType, embedded.photoshop},
                  {34675, undefinedType, embedded.iccProfile}};
    int entries = 9 + (embedded.orientation != 0 ? 1 : 0);
    int blockBytes = 0;
    for (const auto &block : blocks) {
        entries += block.bytes.isEmpty() ? 0 : 1;
        blockBytes += block.bytes.size();
    }
    const int depthAt = 8 + 2 + 12 * entries + 4;
    const int pixelsAt = (depthAt + 6 + blockBytes + 1) / 2 * 2;

    const QByteArray pixels = rgbBytes(image);
    QByteArray file = "II" + littleEndian<quint16>(42) + littleEndian<quint32>(8) +
                      littleEndian(quint16(entries)) + tiffEntry(256, longType, 1, image.width()) +
                      tiffEntry(257, longType, 1, image.height()) +
                      tiffEntry(258, shortType, 3, depthAt) + // bits a sample
                      tiffEntry(259, shortType, 1, 1) +       // no compression
                      tiffEntry(262, shortType, 1, 2) +       // RGB
                      tiffEntry(273, longType, 1, pixelsAt);  // strip
    if (embedded.orientation != 0) {
        file += tiffEntry(274, shortType, 1, embedded.orientation);
    }
    file += tiffEntry(277, shortType, 1, 3) + // samples a pixel
            tiffEntry(278, longType, 1, image.height()) +
            tiffEntry(279, longType, 1, pixels.size());
    int blockAt = depthAt + 6;
    for (const auto &block : blocks) {
        if (!block.bytes.isEmpty()) {
            file += tiffEntry(block.tag, block.type, block.bytes.size(), blockAt);
            blockAt += block.bytes.size();
        }
    }
    file += littleEndian<quint32>(0);
    for (int i = 0; i < 3; ++i) {
        file += littleEndian<quint16>(8);
    }
    for (const auto &block : blocks) {
        file += block.bytes;
    }
    file += QByteArray(pixelsAt - file.size(), '\0');
    return file + pixels;
}

QByteArray encodePicture(const QString &format, const QImage &image, const PictureFile &embedded)
{
    if (format == QLatin1String("jpg")) {
        return encodeJpeg(image, embedded);
    }
    if (format == QLatin1String("png")) {
        return encodePng(image, embedded);
    }
    return format == QLatin1String("webp") ? encodeWebP(image, embedded)
                                           : encodeTiff(image, embedded);
}

QByteArray profileIn(const QString &format, const QByteArray &file)
{
    if (format == QLatin1String("jpg")) {
        return profileInJpeg(file);
    }
    if (format == QLatin1String("png")) {
        return profileInPng(file);
    }
    return format == QLatin1String("webp") ? profileInWebP(file) : profileInTiff(file);
}
