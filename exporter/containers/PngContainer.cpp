#include "exporter/containers/PngContainer.h"

#include "exporter/containers/Deflate.h"
#include "exporter/containers/Exif.h"
#include "exporter/containers/PhotoshopBlock.h"

#include <QtCore/QtEndian>

namespace ko::exporter
{

namespace
{

constexpr int signatureSize = 8;
constexpr int chunkOverhead = 12; // length, type, checksum
constexpr int headerChunkSize = chunkOverhead + 13;
const QByteArray xmpKeyword = QByteArrayLiteral("XML:com.adobe.xmp");
// Readers pass over a chunk that they do not know.
const QByteArray hiddenType = QByteArrayLiteral("koHi");
constexpr int mostCompressedTexts = 8;
// What tools wrote, and still write, where PNG has no chunk of its own for it:
// hexadecimal text.
const QByteArray rawPrefix = QByteArrayLiteral("Raw profile type ");

QByteArray bigEndian(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
}

QByteArray chunk(const char *type, const QByteArray &content)
{
    const QByteArray body = type + content;
    return bigEndian(quint32(content.size())) + body + bigEndian(crc32Of(body));
}

// The texts in front of a chunk's content, each ended by a zero.
QByteArray takeText(QByteArray *content)
{
    const int end = content->indexOf('\0');
    QByteArray text = content->left(end < 0 ? content->size() : end);
    content->remove(0, end < 0 ? content->size() : end + 1);
    return text;
}

// Uncompresses what stands in the chunks of one file. A file may have any
// number of chunks, each of which expands a thousandfold, so there is an end to
// it.
class Expander
{
public:
    QByteArray expand(const QByteArray &stream)
    {
        return ++m_count <= mostStreams ? inflated(stream) : QByteArray();
    }

private:
    static constexpr int mostStreams = 8;
    int m_count = 0;
};

bool isKnown(const QByteArray &keyword)
{
    return keyword == xmpKeyword || keyword.startsWith(rawPrefix);
}

// A line break, the name, a line break, the size, a line break, then
// hexadecimal digits.
QByteArray rawProfile(const QByteArray &text)
{
    const int sizeAt = text.indexOf('\n', 1) + 1;
    const int digitsAt = text.indexOf('\n', sizeAt) + 1;
    if (sizeAt == 0 || digitsAt == 0) {
        return {};
    }
    const QByteArray bytes = QByteArray::fromHex(text.mid(digitsAt));
    return bytes.left(text.mid(sizeAt, digitsAt - 1 - sizeAt).trimmed().toInt());
}

void takeText(const QByteArray &keyword, const QByteArray &text, EmbeddedData *data)
{
    if (keyword == xmpKeyword && data->xmp.isEmpty()) {
        data->xmp = text;
    }
    if (!keyword.startsWith(rawPrefix)) {
        return;
    }
    const QByteArray name = keyword.mid(rawPrefix.size());
    const QByteArray profile = rawProfile(text);
    if ((name == "exif" || name == "APP1") && data->exif.isEmpty()) {
        data->exif = withoutExifPrefix(profile);
    } else if (name == "xmp" && data->xmp.isEmpty()) {
        data->xmp = profile;
    } else if ((name == "iptc" || name == "8bim") && data->photoshop.isEmpty()) {
        data->photoshop = photoshopWithIptc(profile);
    }
}

// Keyword, whether it is compressed, the method, a language, the keyword in it,
// the text.
void takeInternationalText(QByteArray content, Expander *expander, EmbeddedData *data)
{
    const QByteArray keyword = takeText(&content);
    const bool compressed = content.startsWith('\1');
    content.remove(0, 2);
    takeText(&content);
    takeText(&content);
    if (isKnown(keyword)) {
        takeText(keyword, compressed ? expander->expand(content) : content, data);
    }
}

// A zlib stream follows the compression method, which is always 0.
void takeChunk(const QByteArray &type, QByteArray content, Expander *expander, EmbeddedData *data)
{
    if (type == "iCCP" && data->iccProfile.isEmpty()) {
        takeText(&content);
        data->iccProfile = expander->expand(content.mid(1));
    } else if (type == "eXIf") {
        data->exif = withoutExifPrefix(content);
    } else if (type == "tEXt") {
        const QByteArray keyword = takeText(&content);
        takeText(keyword, content, data);
    } else if (type == "zTXt") {
        const QByteArray keyword = takeText(&content);
        if (isKnown(keyword)) {
            takeText(keyword, expander->expand(content.mid(1)), data);
        }
    } else if (type == "iTXt") {
        takeInternationalText(content, expander, data);
    }
}

QByteArray rawProfileChunk(const QByteArray &name, const QByteArray &bytes)
{
    constexpr int digitsInLine = 72;
    const QByteArray digits = bytes.toHex();
    QByteArray text = '\n' + name + '\n' + QByteArray::number(bytes.size()).rightJustified(8);
    for (int i = 0; i < digits.size(); i += digitsInLine) {
        text += '\n' + digits.mid(i, digitsInLine);
    }
    return chunk("zTXt", rawPrefix + name + QByteArray(2, '\0') + deflated(text + '\n'));
}

} // namespace

EmbeddedData takePngContainer(QByteArray *file)
{
    EmbeddedData data;
    Expander expander;
    int compressedTexts = 0;
    int position = signatureSize;
    while (position <= file->size() - chunkOverhead) {
        const auto length = qFromBigEndian<quint32>(file->constData() + position);
        if (length > quint32(file->size() - position - chunkOverhead)) {
            break;
        }
        const QByteArray type = file->mid(position + 4, 4);
        if (type != "IDAT") { // the others may also stand behind the pixels
            const QByteArray content = file->mid(position + 8, int(length));
            takeChunk(type, content, &expander, &data);
            const bool compressed = type == "zTXt" || type == "iTXt";
            compressedTexts += compressed ? 1 : 0;
            if (type == "iCCP" || (compressed && (compressedTexts > mostCompressedTexts ||
                                                  isKnown(content.left(content.indexOf('\0')))))) {
                file->replace(position + 4, hiddenType.size(), hiddenType);
            }
        }
        position += chunkOverhead + int(length);
    }
    return data;
}

QByteArray pngWithData(const QByteArray &file, const EmbeddedData &data)
{
    QByteArray chunks;
    if (!data.iccProfile.isEmpty()) {
        const QByteArray name("ICC profile\0\0", 13); // with the compression method
        chunks += chunk("iCCP", name + deflated(data.iccProfile));
    }
    if (!data.exif.isEmpty()) {
        chunks += chunk("eXIf", data.exif);
    }
    if (!data.xmp.isEmpty()) {
        chunks += chunk("iTXt", xmpKeyword + QByteArray(5, '\0') + data.xmp);
    }
    if (!data.photoshop.isEmpty()) {
        chunks += rawProfileChunk("iptc", data.photoshop);
    }
    const int position = signatureSize + headerChunkSize;
    return file.left(position) + chunks + file.mid(position);
}

} // namespace ko::exporter
