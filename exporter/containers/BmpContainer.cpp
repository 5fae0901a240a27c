#include "exporter/containers/BmpContainer.h"

#include <QtCore/QtEndian>

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace ko::exporter
{

namespace
{

constexpr int fileHeader = 14;
constexpr quint32 coreHeader = 12;
constexpr int infoHeader = 40;
constexpr qint64 largestSide = std::numeric_limits<int>::max();
constexpr quint32 runLength8 = 1;
constexpr quint32 runLength4 = 2;

template <class Number>
Number numberAt(const QByteArray &file, int position)
{
    return qFromLittleEndian<Number>(file.constData() + position);
}

// Rows are padded to four bytes.
qint64 pixelBytes(qint64 width, qint64 height, qint64 depth)
{
    return (width * depth + 31) / 32 * 4 * std::llabs(height);
}

} // namespace

// Rows from the top down have a negative height.
QSize bmpSize(const QByteArray &file)
{
    if (file.size() < fileHeader + int(coreHeader)) {
        return {};
    }
    if (numberAt<quint32>(file, fileHeader) == coreHeader) {
        return {numberAt<quint16>(file, 18), numberAt<quint16>(file, 20)};
    }
    if (file.size() < fileHeader + infoHeader) {
        return {};
    }
    const qint64 height = std::llabs(numberAt<qint32>(file, 22));
    return {numberAt<qint32>(file, 18), int(std::min<qint64>(height, largestSide))};
}

bool isTruncatedBmp(const QByteArray &file)
{
    if (file.size() < fileHeader + int(coreHeader)) {
        return true;
    }
    const qint64 pixels = numberAt<quint32>(file, 10);
    if (numberAt<quint32>(file, fileHeader) == coreHeader) {
        return pixels + pixelBytes(numberAt<quint16>(file, 18), numberAt<quint16>(file, 20),
                                   numberAt<quint16>(file, 24)) >
               file.size();
    }
    if (file.size() < fileHeader + infoHeader) {
        return true;
    }
    const auto compression = numberAt<quint32>(file, 30);
    if (compression == runLength8 || compression == runLength4) {
        return pixels + numberAt<quint32>(file, 34) > file.size();
    }
    return pixels + pixelBytes(numberAt<qint32>(file, 18), numberAt<qint32>(file, 22),
                               numberAt<quint16>(file, 28)) >
           file.size();
}

} // namespace ko::exporter
