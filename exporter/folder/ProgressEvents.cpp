#include "exporter/folder/ProgressEvents.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <poll.h>
#include <unistd.h>

namespace ko::exporter
{

namespace
{

double inMilliseconds(double seconds)
{
    return std::round(seconds * 1000.0) / 1000.0;
}

// Also returns when it has gone, which the next attempt to write then tells.
void awaitReader()
{
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    poll(&output, 1, -1);
}

} // namespace

bool ProgressEvents::started(const Tally &tally)
{
    return write("start", {{QStringLiteral("total"), tally.total}});
}

bool ProgressEvents::done(const QString &source, const QString &target, double seconds,
                          const QStringList &warnings)
{
    return write("done", {{QStringLiteral("source"), source},
                          {QStringLiteral("target"), target},
                          {QStringLiteral("seconds"), inMilliseconds(seconds)},
                          {QStringLiteral("warnings"), QJsonArray::fromStringList(warnings)}});
}

bool ProgressEvents::failed(const QString &source, const QString &target, const Failure &failure)
{
    return write("failed", {{QStringLiteral("source"), source},
                            {QStringLiteral("target"), target},
                            {QStringLiteral("code"), int(failure.code)},
                            {QStringLiteral("reason"), failure.message}});
}

bool ProgressEvents::skipped(const QString &source, const QString &target)
{
    return write("skipped",
                 {{QStringLiteral("source"), source}, {QStringLiteral("target"), target}});
}

bool ProgressEvents::ended(const Tally &tally, double seconds, bool interrupted)
{
    return write("end", {{QStringLiteral("total"), tally.total},
                         {QStringLiteral("done"), tally.done},
                         {QStringLiteral("failed"), tally.failed},
                         {QStringLiteral("skipped"), tally.skipped},
                         {QStringLiteral("left"), tally.total - tally.over()},
                         {QStringLiteral("seconds"), inMilliseconds(seconds)},
                         {QStringLiteral("interrupted"), interrupted}});
}

bool ProgressEvents::write(const char *event, QJsonObject properties)
{
    properties.insert(QStringLiteral("event"), QLatin1String(event));
    const QByteArray line = QJsonDocument(properties).toJson(QJsonDocument::Compact) + '\n';
    int sent = 0;
    while (m_error == 0 && sent < line.size()) {
        const ssize_t count =
            ::write(STDOUT_FILENO, line.constData() + sent, size_t(line.size() - sent));
        if (count < 0 && errno == EAGAIN) {
            awaitReader();
        } else if (count < 0 && errno != EINTR) {
            m_error = errno;
        }
        sent += int(std::max<ssize_t>(count, 0));
    }
    return m_error == 0;
}

} // namespace ko::exporter
