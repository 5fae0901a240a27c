#include "exporter/ErrorCapture.h"

#include <algorithm>
#include <cstdio>
#include <sys/mman.h>
#include <unistd.h>

namespace ko::exporter
{

namespace
{

// The real standard error while a capture lives, else -1.
int savedError = -1;

constexpr off_t captureLimit = 65536;

void writeAll(int descriptor, const QByteArray &bytes)
{
    int done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            write(descriptor, bytes.constData() + done, size_t(bytes.size() - done));
        if (count <= 0) {
            return;
        }
        done += int(count);
    }
}

} // namespace

void reportLine(const QString &text)
{
    QString line = QStringLiteral("korvel-image-exporter: ") + text.trimmed();
    std::replace_if(
        line.begin(), line.end(), [](QChar c) { return c.category() == QChar::Other_Control; },
        QLatin1Char(' '));
    writeAll(savedError >= 0 ? savedError : STDERR_FILENO, line.toLocal8Bit() + '\n');
}

ErrorCapture::ErrorCapture() : m_sink(memfd_create("captured", MFD_CLOEXEC))
{
    if (m_sink < 0) {
        return;
    }
    std::fflush(stderr);
    savedError = dup(STDERR_FILENO);
    if (savedError < 0 || dup2(m_sink, STDERR_FILENO) < 0) {
        close(m_sink);
        m_sink = -1;
    }
}

ErrorCapture::~ErrorCapture()
{
    if (m_sink < 0) {
        return;
    }
    std::fflush(stderr);
    dup2(savedError, STDERR_FILENO);
    close(savedError);
    savedError = -1;
    close(m_sink);
}

QByteArray ErrorCapture::text() const
{
    if (m_sink < 0) {
        return {};
    }
    std::fflush(stderr);
    const off_t size = std::min(lseek(m_sink, 0, SEEK_END), captureLimit);
    QByteArray bytes(int(std::max<off_t>(size, 0)), '\0');
    const ssize_t count = pread(m_sink, bytes.data(), size_t(bytes.size()), 0);
    bytes.truncate(int(std::max<ssize_t>(count, 0)));
    return bytes;
}

} // namespace ko::exporter
