#pragma once

#include "core/Export.h"

#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QString>
#include <QtCore/QTimer>
#include <QtNetwork/QNetworkReply>

namespace ko
{

// A network request that is repeated when it fails for a reason that may pass: nothing heard for
// too long, connection refused, lost or cut short, HTTP status 502, 503 or 504. Any other failure
// is final. It starts by itself on the next turn of the event loop and ends with exactly one
// finished(); deleting it before that stops it silently. Lives on one thread with an event loop.
class KORVELCORE_EXPORT Request : public QObject
{
    Q_OBJECT

public:
    explicit Request(QObject *parent = nullptr);
    ~Request() override;

    // NoError until finished(), and after it when the request succeeded.
    QNetworkReply::NetworkError error() const;
    // What went wrong, for a person to read; empty when nothing did.
    QString errorString() const;

Q_SIGNALS:
    void finished();

protected:
    // Default 3.
    virtual int maximumAttempts() const;
    // How long, in milliseconds, attempt 1, 2 ... waits for the next byte; default 30 s for each.
    virtual int timeoutForAttempt(int attempt) const;
    // Milliseconds between the failure of the attempt before and attempt 2, 3 ...; by default half
    // a second that doubles from attempt to attempt, plus up to as much again by chance, so that
    // clients which failed together do not come back together.
    virtual int waitBeforeAttempt(int attempt) const;

    // Before every attempt: puts back what the attempt before left behind. False: there is nothing
    // to go back to, and the request ends with the error of the attempt before, or with that of
    // fail().
    virtual bool prepare();
    // Sends the request. The reply, which must not have finished yet, is taken over; its body is
    // handed to receive(). Null: there is no network access.
    virtual QNetworkReply *perform() = 0;
    // A part of the body of a successful answer arrived; false after a call of fail().
    virtual bool receive(const QByteArray &data) = 0;
    // The body is complete; false after a call of fail().
    virtual bool complete();

    // Ends the request for good. Its owner may delete it meanwhile: return at once.
    void fail(QNetworkReply::NetworkError error, const QString &reason);

private:
    void startAttempt();
    void adopt(QNetworkReply *reply);
    void readBlock();
    void replyFinished();
    void bodyRead();
    void timedOut();
    void attemptFailed(QNetworkReply::NetworkError error, const QString &reason, bool mayHeal);
    void dropReply();
    void finish();

    int m_attempt = 0;
    qint64 m_received = 0; // bytes of the body, in this attempt
    bool m_allArrived = false;
    bool m_finished = false;
    QNetworkReply::NetworkError m_error = QNetworkReply::NoError;
    QString m_errorString;
    QPointer<QNetworkReply> m_reply;
    QTimer m_timeout;
    QTimer m_nextBlock;
    QTimer m_wait;
};

} // namespace ko
