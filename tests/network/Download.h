#pragma once

#include "core/GetRequest.h"

#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

// A download whose patience a test can set. The defaults let nothing fail on a busy machine and
// wait hardly at all between attempts.
class Download : public ko::GetRequest
{
    Q_OBJECT

public:
    Download(const QNetworkRequest &request, QNetworkAccessManager *manager,
             QIODevice *sink = nullptr)
        : GetRequest(request, manager), m_finished(this, &Request::finished)
    {
        setDataSink(sink);
    }

    Download(const QUrl &url, QNetworkAccessManager *manager, QIODevice *sink = nullptr)
        : Download(QNetworkRequest(url), manager, sink)
    {
    }

    int attempts = 3;
    QVector<int> timeouts{20000}; // ms, for attempt 1, 2 ...; the last one for all that follow
    QVector<int> waits{1};        // ms, before attempt 2, 3 ...; likewise

    int finishedCount() const { return m_finished.count(); }
    // Whether finished() came, and no second one shortly after it.
    bool finish()
    {
        if (m_finished.isEmpty() && !m_finished.wait(25000)) {
            return false;
        }
        QTest::qWait(5);
        return m_finished.count() == 1;
    }
    // Runs to the end and gives error(); -1, which no error is, unless it finished just once.
    QNetworkReply::NetworkError run()
    {
        return finish() ? error() : QNetworkReply::NetworkError(-1);
    }

    int defaultAttempts() const { return GetRequest::maximumAttempts(); }
    int defaultTimeout(int attempt) const { return GetRequest::timeoutForAttempt(attempt); }
    int defaultWait(int attempt) const { return GetRequest::waitBeforeAttempt(attempt); }

protected:
    int maximumAttempts() const override { return attempts; }
    int timeoutForAttempt(int attempt) const override
    {
        return timeouts.value(attempt - 1, timeouts.last());
    }
    int waitBeforeAttempt(int attempt) const override
    {
        return waits.value(attempt - 2, waits.last());
    }

private:
    QSignalSpy m_finished;
};
