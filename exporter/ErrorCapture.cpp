#include "exporter/ErrorCapture.h"

#include <QtCore/QByteArray>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <mutex>
#include <unistd.h>

namespace ko::exporter
{

namespace
{

std::mutex mutex;
int captures = 0;
// The real standard error while it is captured, else -1.
int savedError = -1;

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
    const std::lock_guard<std::mutex> lock(mutex);
    writeAll(savedError >= 0 ? savedError : STDERR_FILENO, line.toLocal8Bit() + '\n');
}

ErrorCapture::ErrorCapture()
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (captures++ > 0) {
        return;
    }
    std::fflush(stderr);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    savedError = nowhere < 0 ? -1 : fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
    if (savedError >= 0) {
        dup2(nowhere, STDERR_FILENO);
    }
    if (nowhere >= 0) {
        close(nowhere);
    }
}

ErrorCapture::~ErrorCapture()
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (--captures > 0 || savedError < 0) {
        return;
    }
    std::fflush(stderr);
    dup2(savedError, STDERR_FILENO);
    close(savedError);
    savedError = -1;
}

} // namespace ko::exporter
