#pragma once

#include <QtCore/QByteArray>

#include <optional>

namespace ko::exporter
{

// The bytes of a TIFF structure, such as a TIFF file or an EXIF block, read and
// changed where they are. Every access is checked against the size, and no
// function follows more than one link, so that any bytes are safe and quick.
// Directories and entries are given by their positions.
class TiffBytes
{
public:
    // `bytes` must outlive this object.
    explicit TiffBytes(QByteArray &bytes) : m_bytes(bytes) {}

    // Nothing when the bytes do not begin as a TIFF file with at least one
    // directory.
    std::optional<quint32> firstDirectory() const;
    // Nothing where there is no next one, or where the directory is damaged.
    std::optional<quint32> nextDirectory(quint32 directory) const;
    void cutNextDirectory(quint32 directory);

    std::optional<quint32> findEntry(quint32 directory, quint16 tag) const;
    // The directory that an entry points to.
    std::optional<quint32> findDirectory(quint32 directory, quint16 tag) const;
    // The bytes of an entry's values.
    QByteArray content(quint32 entry) const;
    // The value of an entry with a single number of 16 or 32 bits.
    std::optional<quint32> number(quint32 entry) const;
    // Only for an entry that number() can read.
    void setNumber(quint32 entry, quint32 value);
    // Gives an entry another tag; does nothing where there is none.
    void renameEntry(quint32 directory, quint16 oldTag, quint16 newTag);

private:
    bool holds(quint64 position, quint64 size) const;
    quint16 read16(quint32 position) const;
    quint32 read32(quint32 position) const;
    template <class Number>
    void write(quint32 position, Number value);
    std::optional<quint32> entryCount(quint32 directory) const;

    QByteArray &m_bytes;
};

} // namespace ko::exporter
