#include "exporter/containers/XmpPacket.h"

namespace ko::exporter
{

namespace
{

const QByteArray blanks = QByteArrayLiteral(" \t\r\n");
constexpr int longestNumber = 32;

int skipBlanks(const QByteArray &text, int position)
{
    while (position < text.size() && blanks.contains(text.at(position))) {
        ++position;
    }
    return position;
}

// Where the value of the property starts whose name ends at `nameEnd`, written
// as name="value" or as <name>value</name>, and by what it is ended; 0 for no
// value.
char valueStart(const QByteArray &xmp, int nameEnd, int *start)
{
    int position = skipBlanks(xmp, nameEnd);
    if (position >= xmp.size()) {
        return 0;
    }
    if (xmp.at(position) == '>') {
        *start = position + 1;
        return '<';
    }
    if (xmp.at(position) != '=') {
        return 0;
    }
    position = skipBlanks(xmp, position + 1);
    if (position >= xmp.size() || (xmp.at(position) != '"' && xmp.at(position) != '\'')) {
        return 0;
    }
    *start = position + 1;
    return xmp.at(position);
}

bool isNumber(const QByteArray &text)
{
    bool ok = false;
    text.trimmed().toUInt(&ok);
    return ok;
}

// The result is put together piece by piece, since a packet may name a property
// any number of times.
QByteArray withNumber(const QByteArray &xmp, const QByteArray &name, int value)
{
    QByteArray result;
    int kept = 0;
    int position = 0;
    while ((position = xmp.indexOf(name, position)) >= 0) {
        position += name.size();
        int start = 0;
        const char end = valueStart(xmp, position, &start);
        if (end == 0) {
            continue;
        }
        const int length = int(xmp.mid(start, longestNumber + 1).indexOf(end));
        if (length > 0 && isNumber(xmp.mid(start, length))) {
            result += xmp.mid(kept, start - kept) + QByteArray::number(value);
            kept = position = start + length;
        }
    }
    return result + xmp.mid(kept);
}

QByteArray withoutElement(const QByteArray &xmp, const QByteArray &name)
{
    const QByteArray opening = '<' + name + '>';
    const QByteArray closing = "</" + name + '>';
    QByteArray result;
    int kept = 0;
    int start = 0;
    while ((start = xmp.indexOf(opening, kept)) >= 0) {
        const int end = xmp.indexOf(closing, start);
        if (end < 0) {
            break;
        }
        result += xmp.mid(kept, start - kept);
        kept = end + closing.size();
    }
    return result + xmp.mid(kept);
}

} // namespace

QByteArray xmpForPicture(const QByteArray &xmp, const QSize &size)
{
    QByteArray packet = withoutElement(xmp, "xmp:Thumbnails");
    packet = withoutElement(packet, "xap:Thumbnails");
    packet = withNumber(packet, "tiff:Orientation", 1);
    packet = withNumber(packet, "tiff:ImageWidth", size.width());
    packet = withNumber(packet, "tiff:ImageLength", size.height());
    packet = withNumber(packet, "exif:PixelXDimension", size.width());
    packet = withNumber(packet, "exif:PixelYDimension", size.height());
    return packet;
}

} // namespace ko::exporter
