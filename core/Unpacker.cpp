#include "core/Unpacker.h"

namespace ko
{

namespace
{

constexpr int partSize = 64 * 1024;
constexpr int anyHeader = 15 + 32; // zlib's number for the largest window, and gzip or zlib

} // namespace

Unpacker::Unpacker()
{
    m_damaged = inflateInit2(&m_stream, anyHeader) != Z_OK;
}

Unpacker::~Unpacker()
{
    inflateEnd(&m_stream);
}

void Unpacker::append(const QByteArray &packed)
{
    m_input += packed;
}

QByteArray Unpacker::next()
{
    QByteArray part(partSize, Qt::Uninitialized);
    int size = 0;
    // Input may give nothing yet, a header, say; and output may still come when all input is read.
    while (size == 0 && !m_damaged) {
        // Streams may follow one another and count as one.
        if (m_complete && !m_input.isEmpty()) {
            m_damaged = inflateReset(&m_stream) != Z_OK;
            m_complete = false;
        }
        m_stream.next_in = reinterpret_cast<Bytef *>(m_input.data());
        m_stream.avail_in = uInt(m_input.size());
        m_stream.next_out = reinterpret_cast<Bytef *>(part.data());
        m_stream.avail_out = partSize;
        const int result = m_complete ? Z_BUF_ERROR : inflate(&m_stream, Z_NO_FLUSH);
        m_input = m_input.right(int(m_stream.avail_in));
        size = partSize - int(m_stream.avail_out);
        m_complete = m_complete || result == Z_STREAM_END;
        m_damaged =
            m_damaged || (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR);
        if (result == Z_BUF_ERROR) {
            break;
        }
    }
    part.truncate(size);
    return part;
}

} // namespace ko
