#pragma once

#include <QtCore/QByteArray>

#include <zlib.h>

namespace ko
{

// Unpacks a gzip or zlib stream that arrives in parts, in little memory whatever its length.
class Unpacker
{
public:
    Unpacker();
    ~Unpacker();
    Q_DISABLE_COPY(Unpacker)

    void append(const QByteArray &packed);
    // The next part of the content; empty when more input is needed or the stream is damaged.
    QByteArray next();
    bool isDamaged() const { return m_damaged; }
    // Whether the stream ended with what was appended.
    bool isComplete() const { return m_complete && m_input.isEmpty(); }

private:
    z_stream m_stream{};
    QByteArray m_input;
    bool m_complete = false;
    bool m_damaged = false;
};

} // namespace ko
