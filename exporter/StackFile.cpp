#include "exporter/StackFile.h"

#include "exporter/JsonText.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace ko::exporter
{

namespace
{

constexpr int blockSize = 65536;
// How long a pipe may stay without anyone who writes to it.
constexpr int pipePatience = 3000;
constexpr int pipeStep = 50;

class Descriptor
{
public:
    // Does not wait for the other end of a pipe.
    explicit Descriptor(const QString &path)
        : m_number(open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
    {
    }
    ~Descriptor()
    {
        if (m_number >= 0) {
            close(m_number);
        }
    }

    operator int() const { return m_number; }

private:
    Q_DISABLE_COPY(Descriptor)

    const int m_number;
};

// One read that waits: for a pipe's writer to come as long as patience lasts, for its next bytes
// without end. 0 at the end, -1 with errno on an error.
ssize_t readBlock(int descriptor, char *block, bool awaitWriter)
{
    for (int waited = 0;;) {
        const ssize_t count = read(descriptor, block, blockSize);
        const bool noWriterYet = count == 0 && awaitWriter && waited < pipePatience;
        const bool nothingYet = count < 0 && (errno == EAGAIN || errno == EINTR);
        if (!noWriterYet && !nothingYet) {
            return count;
        }
        pollfd wait{descriptor, POLLIN, 0};
        poll(&wait, 1, pipeStep);
        waited += noWriterYet ? pipeStep : 0;
    }
}

int countEffects(const QJsonArray &stack)
{
    int count = stack.size();
    for (const QJsonValue &effect : stack) {
        count += countEffects(effect.toObject().value(QLatin1String("imageEffects")).toArray());
    }
    return count;
}

} // namespace

StackFile::StackFile(const QString &path) : m_path(path) {}

Outcome StackFile::read()
{
    if (Outcome failure = readText()) {
        return failure;
    }
    if (Outcome failure = checkShape()) {
        return failure;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(m_text, &error);
    if (error.error != QJsonParseError::NoError) {
        m_mistakeOffset = error.offset;
        return Failure{ExitCode::EffectsInvalid,
                       QStringLiteral("the effects file %1 is not valid JSON: %2 at byte %3")
                           .arg(m_path, error.errorString(), QString::number(error.offset))};
    }
    if (!document.isArray()) {
        return Failure{
            ExitCode::EffectsInvalid,
            QStringLiteral("the effects file %1 is not a JSON array of effects").arg(m_path)};
    }
    const int effects = countEffects(document.array());
    if (effects > mostEffects) {
        return tooLarge(
            QStringLiteral("holds %1 effects; at most %2 are read").arg(effects).arg(mostEffects));
    }
    m_array = document.array();
    return {};
}

Outcome StackFile::readText()
{
    const Descriptor file(m_path);
    struct stat status = {};
    if (file < 0 || fstat(file, &status) != 0) {
        return unreadable(qt_error_string(errno));
    }
    if (S_ISDIR(status.st_mode)) {
        return Failure{ExitCode::EffectsUnreadable,
                       QStringLiteral("the effects file %1 is a folder").arg(m_path)};
    }
    const Failure beyondLimit =
        tooLarge(QStringLiteral("is larger than %1 MiB").arg(largestFile / (1024 * 1024)));
    if (S_ISREG(status.st_mode) && status.st_size > largestFile) {
        return beyondLimit;
    }
    std::vector<char> block(blockSize);
    while (true) {
        const ssize_t count =
            readBlock(file, block.data(), S_ISFIFO(status.st_mode) && m_text.isEmpty());
        if (count < 0) {
            return unreadable(qt_error_string(errno));
        }
        if (count == 0) {
            return {};
        }
        m_text.append(block.data(), int(count));
        if (m_text.size() > largestFile) {
            m_text.clear();
            return beyondLimit;
        }
    }
}

Outcome StackFile::checkShape() const
{
    const JsonShape shape = shapeOf(m_text);
    if (shape.depth > deepestNesting) {
        return tooLarge(QStringLiteral("is nested %1 levels deep; at most %2 are read")
                            .arg(shape.depth)
                            .arg(deepestNesting));
    }
    if (shape.values > mostValues) {
        return tooLarge(QStringLiteral("holds %1 values; at most %2 are read")
                            .arg(shape.values)
                            .arg(mostValues));
    }
    return {};
}

Failure StackFile::unreadable(const QString &reason) const
{
    return {ExitCode::EffectsUnreadable,
            QStringLiteral("the effects file %1 cannot be read: %2").arg(m_path, reason)};
}

Failure StackFile::tooLarge(const QString &reason) const
{
    return {ExitCode::EffectsTooLarge,
            QStringLiteral("the effects file %1 %2").arg(m_path, reason)};
}

} // namespace ko::exporter
