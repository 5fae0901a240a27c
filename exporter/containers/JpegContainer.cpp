#include "exporter/containers/JpegContainer.h"

#include "exporter/containers/Exif.h"

#include <QtCore/QMap>
#include <QtCore/QtEndian>

#include <algorithm>

namespace ko::exporter
{

namespace
{

enum Marker : uchar {
    temporary = 0x01,
    firstRestart = 0xd0,
    endOfImage = 0xd9,
    startOfScan = 0xda,
    app0 = 0xe0,
    app1 = 0xe1,
    app2 = 0xe2,
    app13 = 0xed,
    comment = 0xfe,
};

const QByteArray iccName = QByteArray::fromRawData("ICC_PROFILE\0", 12);
const QByteArray exifName = QByteArray::fromRawData("Exif\0\0", 6);
const QByteArray xmpName = QByteArray::fromRawData("http://ns.adobe.com/xap/1.0/\0", 29);
const QByteArray extendedXmpName =
    QByteArray::fromRawData("http://ns.adobe.com/xmp/extension/\0", 35);
const QByteArray photoshopName = QByteArray::fromRawData("Photoshop 3.0\0", 14);
constexpr int chunkHeader = 14; // name, number, count
constexpr int largestPayload = 0xffff - 2;
constexpr int largestChunk = largestPayload - chunkHeader;
constexpr int mostChunks = 255;

// Calls visit(marker, payload, end of the segment) for the segments in front of
// the pixels.
template <class Visit>
void forEachSegment(const QByteArray &file, Visit visit)
{
    const auto *bytes = reinterpret_cast<const uchar *>(file.constData());
    int position = 2; // behind the start-of-image marker
    while (position + 4 <= file.size() && bytes[position] == 0xff) {
        const uchar marker = bytes[position + 1];
        if (marker == 0xff) { // a fill byte
            ++position;
            continue;
        }
        if (marker == temporary || (marker >= firstRestart && marker < endOfImage)) {
            position += 2;
            continue;
        }
        const int length = qFromBigEndian<quint16>(bytes + position + 2);
        const int end = position + 2 + length;
        if (marker == startOfScan || marker == endOfImage || length < 2 || end > file.size()) {
            return;
        }
        visit(marker, file.mid(position + 4, length - 2), end);
        position = end;
    }
}

// The chunks stand in any order, each with its number from 1 and the count of
// them all.
QByteArray joined(const QMap<int, QByteArray> &chunks, int count)
{
    if (chunks.size() != count || chunks.isEmpty() || chunks.firstKey() != 1 ||
        chunks.lastKey() != count) {
        return {};
    }
    QByteArray profile;
    for (const QByteArray &chunk : chunks) {
        profile += chunk;
    }
    return profile;
}

void takeApp1(const QByteArray &payload, EmbeddedData *data)
{
    if (data->exif.isEmpty() && payload.startsWith(exifName)) {
        data->exif = withoutExifPrefix(payload);
    } else if (data->xmp.isEmpty() && payload.startsWith(xmpName)) {
        data->xmp = payload.mid(xmpName.size());
    } else if (payload.startsWith(extendedXmpName)) {
        data->extendedXmp.append(payload);
    }
}

QByteArray segment(uchar marker, const QByteArray &payload)
{
    char head[4] = {char(0xff), char(marker)};
    qToBigEndian(quint16(2 + payload.size()), head + 2);
    return QByteArray(head, sizeof(head)) + payload;
}

// Empty where there is nothing to hold or no room for it.
QByteArray app1Segment(const QByteArray &name, const QByteArray &content, const char *kind,
                       QStringList *leftOut)
{
    if (content.isEmpty()) {
        return {};
    }
    if (name.size() + content.size() > largestPayload) {
        leftOut->append(QLatin1String(kind));
        return {};
    }
    return segment(app1, name + content);
}

QByteArray profileSegments(const QByteArray &iccProfile, QStringList *leftOut)
{
    const int count = (iccProfile.size() + largestChunk - 1) / largestChunk;
    if (count > mostChunks) {
        leftOut->append(QStringLiteral("ICC profile"));
        return {};
    }
    QByteArray segments;
    for (int i = 0; i < count; ++i) {
        segments += segment(app2, iccName + char(i + 1) + char(count) +
                                      iccProfile.mid(i * largestChunk, largestChunk));
    }
    return segments;
}

QByteArray photoshopSegments(const QByteArray &photoshop)
{
    const int largest = largestPayload - photoshopName.size();
    QByteArray segments;
    for (int start = 0; start < photoshop.size(); start += largest) {
        segments += segment(app13, photoshopName + photoshop.mid(start, largest));
    }
    return segments;
}

} // namespace

EmbeddedData readJpegContainer(const QByteArray &file)
{
    EmbeddedData data;
    QMap<int, QByteArray> chunks;
    int count = 0;
    forEachSegment(file, [&](uchar marker, const QByteArray &payload, int) {
        if (marker == app1) {
            takeApp1(payload, &data);
        } else if (marker == app2 && payload.size() > chunkHeader && payload.startsWith(iccName)) {
            count = uchar(payload.at(13));
            chunks.insert(uchar(payload.at(12)), payload.mid(chunkHeader));
        } else if (marker == app13 && payload.startsWith(photoshopName)) {
            data.photoshop += payload.mid(photoshopName.size());
        } else if (marker == comment) {
            data.comments.append(payload);
        }
    });
    data.iccProfile = joined(chunks, count);
    return data;
}

QByteArray jpegWithData(QByteArray file, const EmbeddedData &data, QStringList *leftOut)
{
    int position = 2;
    forEachSegment(file, [&position](uchar marker, const QByteArray &, int end) {
        if (marker == app0) {
            position = end;
        }
    });
    QByteArray segments = app1Segment(exifName, data.exif, "EXIF data", leftOut);
    const QByteArray xmp = app1Segment(xmpName, data.xmp, "XMP data", leftOut);
    segments += xmp;
    for (const QByteArray &part : data.extendedXmp) {
        segments += xmp.isEmpty() ? QByteArray() : segment(app1, part);
    }
    segments += profileSegments(data.iccProfile, leftOut) + photoshopSegments(data.photoshop);
    for (const QByteArray &text : data.comments) {
        segments += segment(comment, text);
    }
    file.insert(position, segments);
    return file;
}

} // namespace ko::exporter
