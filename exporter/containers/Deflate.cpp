#include "exporter/containers/Deflate.h"

#include <zlib.h>

namespace ko::exporter
{

namespace
{

constexpr int largestResult = 32 << 20;
constexpr int step = 1 << 16;

const Bytef *bytesOf(const QByteArray &array)
{
    return reinterpret_cast<const Bytef *>(array.constData());
}

} // namespace

QByteArray deflated(const QByteArray &bytes)
{
    uLongf size = compressBound(uLong(bytes.size()));
    QByteArray stream(int(size), '\0');
    compress(reinterpret_cast<Bytef *>(stream.data()), &size, bytesOf(bytes), uLong(bytes.size()));
    stream.truncate(int(size));
    return stream;
}

QByteArray inflated(const QByteArray &stream)
{
    z_stream state{};
    state.next_in = const_cast<Bytef *>(bytesOf(stream));
    state.avail_in = uInt(stream.size());
    if (inflateInit(&state) != Z_OK) {
        return {};
    }
    QByteArray result;
    QByteArray part(step, '\0');
    int outcome = Z_OK;
    while (outcome == Z_OK && result.size() <= largestResult) {
        state.next_out = reinterpret_cast<Bytef *>(part.data());
        state.avail_out = step;
        outcome = inflate(&state, Z_NO_FLUSH);
        result.append(part.constData(), step - int(state.avail_out));
    }
    inflateEnd(&state);
    return outcome == Z_STREAM_END && result.size() <= largestResult ? result : QByteArray();
}

quint32 crc32Of(const QByteArray &bytes)
{
    return quint32(crc32(0, bytesOf(bytes), uInt(bytes.size())));
}

} // namespace ko::exporter
