#include "exporter/containers/PhotoshopBlock.h"

#include <QtCore/QtEndian>

namespace ko::exporter
{

namespace
{

constexpr quint16 iptcResource = 0x0404;
constexpr quint16 oldThumbnail = 0x0409;
constexpr quint16 thumbnail = 0x040c;
const QByteArray signature = QByteArrayLiteral("8BIM");

// Padded to an even size, like everything in a resource.
qint64 even(qint64 size)
{
    return size + size % 2;
}

// Calls visit(id, start, start of the data, size of the data, end) for each
// resource: a signature, an id, a name behind its length, the size of the data
// and the data. Returns where they end.
template <class Visit>
int forEachResource(const QByteArray &bytes, Visit visit)
{
    int position = 0;
    while (position + 12 <= bytes.size() && bytes.mid(position, 4) == signature) {
        const char *start = bytes.constData() + position;
        const qint64 sizeAt = position + 6 + even(1 + uchar(start[6]));
        if (sizeAt + 4 > bytes.size()) {
            break;
        }
        const auto size = qFromBigEndian<quint32>(bytes.constData() + sizeAt);
        if (sizeAt + 4 + size > bytes.size()) {
            break;
        }
        // The last one may lack its padding.
        const int end =
            int(qMin(even(sizeAt + 4 + size - position) + position, qint64(bytes.size())));
        visit(qFromBigEndian<quint16>(start + 4), position, int(sizeAt + 4), int(size), end);
        position = end;
    }
    return position;
}

} // namespace

QByteArray iptcIn(const QByteArray &photoshop)
{
    QByteArray iptc;
    forEachResource(photoshop, [&](quint16 id, int, int data, int size, int) {
        if (id == iptcResource) {
            iptc += photoshop.mid(data, size);
        }
    });
    return iptc;
}

QByteArray photoshopWithIptc(const QByteArray &iptc)
{
    if (iptc.isEmpty() || iptc.startsWith(signature)) {
        return iptc;
    }
    QByteArray header(8, '\0');
    qToBigEndian(iptcResource, header.data());
    qToBigEndian(quint32(iptc.size()), header.data() + 4);
    return signature + header + iptc + QByteArray(iptc.size() % 2, '\0');
}

QByteArray photoshopWithoutThumbnail(const QByteArray &photoshop)
{
    QByteArray kept;
    const int last = forEachResource(photoshop, [&](quint16 id, int start, int, int, int end) {
        if (id != thumbnail && id != oldThumbnail) {
            kept += photoshop.mid(start, end - start);
        }
    });
    return kept + photoshop.mid(last);
}

} // namespace ko::exporter
