#include "exporter/containers/JpegContainer.h"

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
};

const QByteArray iccName = QByteArray::fromRawData("ICC_PROFILE\0", 12);
const QByteArray exifName = QByteArray::fromRawData("Exif\0\0", 6);
constexpr int chunkHeader = 14; // name, number, count
constexpr int largestSegment = 0xffff;
constexpr int largestChunk = largestSegment - 2 - chunkHeader;
constexpr int mostChunks = 255;

// Calls visit(marker, payload, end of the segment) for the segments in front of the pixels.
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

// The chunks stand in any order, each with its number from 1 and the count of them all.
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

} // namespace

EmbeddedData readJpegContainer(const QByteArray &file)
{
    EmbeddedData data;
    QMap<int, QByteArray> chunks;
    int count = 0;
    forEachSegment(file, [&](uchar marker, const QByteArray &payload, int) {
        if (marker == app1 && data.exif.isEmpty() && payload.startsWith(exifName)) {
            data.exif = payload;
        } else if (marker == app2 && payload.size() > chunkHeader && payload.startsWith(iccName)) {
            count = uchar(payload.at(13));
            chunks.insert(uchar(payload.at(12)), payload.mid(chunkHeader));
        }
    });
    data.iccProfile = joined(chunks, count);
    return data;
}

QByteArray jpegWithProfile(const QByteArray &file, const QByteArray &iccProfile)
{
    const int count = (iccProfile.size() + largestChunk - 1) / largestChunk;
    if (count > mostChunks) {
        return {};
    }
    int position = 2;
    forEachSegment(file, [&position](uchar marker, const QByteArray &, int end) {
        if (marker == app0) {
            position = end;
        }
    });
    QByteArray segments;
    for (int i = 0; i < count; ++i) {
        const QByteArray chunk = iccProfile.mid(i * largestChunk, largestChunk);
        uchar length[2];
        qToBigEndian(quint16(2 + chunkHeader + chunk.size()), length);
        segments.append(char(0xff)).append(char(app2));
        segments.append(reinterpret_cast<const char *>(length), sizeof(length));
        segments.append(iccName).append(char(i + 1)).append(char(count)).append(chunk);
    }
    return file.left(position) + segments + file.mid(position);
}

} // namespace ko::exporter
