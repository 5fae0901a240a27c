#include "exporter/containers/BigTiff.h"

#include <QtCore/QtEndian>

namespace ko::exporter
{

namespace
{

constexpr quint64 headerSize = 16;
constexpr quint64 entrySize = 20; // tag, type, count, value or its position

template <class Number>
Number numberAt(const QByteArray &file, quint64 position)
{
    const char *at = file.constData() + position;
    return file.startsWith('M') ? qFromBigEndian<Number>(at) : qFromLittleEndian<Number>(at);
}

} // namespace

std::vector<quint16> bigTiffTags(const QByteArray &file)
{
    const auto size = quint64(file.size());
    const bool isBigTiff =
        file.startsWith(QByteArray("II+\0", 4)) || file.startsWith(QByteArray("MM\0+", 4));
    if (!isBigTiff || size < headerSize) {
        return {};
    }
    const auto directory = numberAt<quint64>(file, 8);
    if (directory < headerSize || directory > size || size - directory < sizeof(quint64)) {
        return {};
    }
    const auto count = numberAt<quint64>(file, directory);
    const quint64 first = directory + sizeof(quint64);
    if (count > (size - first) / entrySize) {
        return {};
    }
    std::vector<quint16> tags;
    tags.reserve(count);
    for (quint64 i = 0; i < count; ++i) {
        tags.push_back(numberAt<quint16>(file, first + entrySize * i));
    }
    return tags;
}

} // namespace ko::exporter
