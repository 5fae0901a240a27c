#include "exporter/containers/TiffDirectory.h"

#include <QtCore/QtEndian>

namespace ko::exporter
{

namespace
{

constexpr quint16 shortType = 3;
constexpr quint16 longType = 4;
constexpr quint32 entrySize = 12; // tag, type, count, value or its position

quint32 sizeOfType(quint16 type)
{
    constexpr quint32 sizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
    return type < std::size(sizes) ? sizes[type] : 0;
}

} // namespace

bool TiffBytes::holds(quint64 position, quint64 size) const
{
    return position + size <= quint64(m_bytes.size());
}

quint16 TiffBytes::read16(quint32 position) const
{
    const char *at = m_bytes.constData() + position;
    return m_bytes.at(0) == 'M' ? qFromBigEndian<quint16>(at) : qFromLittleEndian<quint16>(at);
}

quint32 TiffBytes::read32(quint32 position) const
{
    const char *at = m_bytes.constData() + position;
    return m_bytes.at(0) == 'M' ? qFromBigEndian<quint32>(at) : qFromLittleEndian<quint32>(at);
}

template <class Number>
void TiffBytes::write(quint32 position, Number value)
{
    char *at = m_bytes.data() + position;
    if (m_bytes.at(0) == 'M') {
        qToBigEndian(value, at);
    } else {
        qToLittleEndian(value, at);
    }
}

std::optional<quint32> TiffBytes::firstDirectory() const
{
    if (!m_bytes.startsWith(QByteArray("II*\0", 4)) &&
        !m_bytes.startsWith(QByteArray("MM\0*", 4))) {
        return {};
    }
    if (!holds(4, 4) || !entryCount(read32(4))) {
        return {};
    }
    return read32(4);
}

std::optional<quint32> TiffBytes::entryCount(quint32 directory) const
{
    if (directory < 8 || !holds(directory, 2)) {
        return {};
    }
    const quint32 count = read16(directory);
    return holds(directory, 2 + quint64(entrySize) * count) ? std::optional<quint32>(count)
                                                            : std::nullopt;
}

std::optional<quint32> TiffBytes::nextDirectory(quint32 directory) const
{
    const std::optional<quint32> count = entryCount(directory);
    if (!count || !holds(directory + 2 + quint64(entrySize) * *count, 4)) {
        return {};
    }
    const quint32 next = read32(directory + 2 + entrySize * *count);
    return entryCount(next) ? std::optional<quint32>(next) : std::nullopt;
}

void TiffBytes::cutNextDirectory(quint32 directory)
{
    const std::optional<quint32> count = entryCount(directory);
    if (count && holds(directory + 2 + quint64(entrySize) * *count, 4)) {
        write(directory + 2 + entrySize * *count, quint32(0));
    }
}

std::optional<quint32> TiffBytes::findEntry(quint32 directory, quint16 tag) const
{
    const quint32 count = entryCount(directory).value_or(0);
    for (quint32 i = 0; i < count; ++i) {
        const quint32 entry = directory + 2 + entrySize * i;
        if (read16(entry) == tag) {
            return entry;
        }
    }
    return {};
}

std::optional<quint32> TiffBytes::findDirectory(quint32 directory, quint16 tag) const
{
    const std::optional<quint32> entry = findEntry(directory, tag);
    if (!entry || !entryCount(read32(*entry + 8))) {
        return {};
    }
    return read32(*entry + 8);
}

QByteArray TiffBytes::content(quint32 entry) const
{
    const quint64 size = quint64(sizeOfType(read16(entry + 2))) * read32(entry + 4);
    const quint32 position = size <= 4 ? entry + 8 : read32(entry + 8);
    return holds(position, size) ? m_bytes.mid(int(position), int(size)) : QByteArray();
}

std::optional<quint32> TiffBytes::number(quint32 entry) const
{
    const quint16 type = read16(entry + 2);
    if (read32(entry + 4) != 1 || (type != shortType && type != longType)) {
        return {};
    }
    return type == shortType ? read16(entry + 8) : read32(entry + 8);
}

// A small type is widened where it must be: the room is always that of 32 bits.
void TiffBytes::setNumber(quint32 entry, quint32 value)
{
    if (value > 0xffff) {
        write(entry + 2, longType);
    }
    if (read16(entry + 2) == shortType) {
        write(entry + 8, quint16(value));
    } else {
        write(entry + 8, value);
    }
}

void TiffBytes::renameEntry(quint32 directory, quint16 oldTag, quint16 newTag)
{
    if (const std::optional<quint32> entry = findEntry(directory, oldTag)) {
        write(*entry, newTag);
    }
}

} // namespace ko::exporter
