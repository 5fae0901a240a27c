#include "core/Request.h"

#include <QtCore/QRandomGenerator>

namespace ko
{

namespace
{

// What a reply holds at most before it is read, so that a fast server does not fill the memory, and
// what is read in one turn of the event loop, so that a large local file does not stop it.
constexpr qint64 blockSize = qint64(256) * 1024;
constexpr int firstWait = 500; // ms

int httpStatus(const QNetworkReply &reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

// Replies to other schemes than HTTP have no status.
bool isSuccess(const QNetworkReply &reply)
{
    const int status = httpStatus(reply);
    return status == 0 || (status >= 200 && status < 300);
}

// An answer counts for more than the way in which its page ended.
bool mayHeal(QNetworkReply::NetworkError error, int status)
{
    if (status >= 400) {
        return status >= 502 && status <= 504;
    }
    switch (error) {
    case QNetworkReply::ConnectionRefusedError:
    case QNetworkReply::RemoteHostClosedError:
    case QNetworkReply::TimeoutError:
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::ProxyConnectionRefusedError:
    case QNetworkReply::ProxyConnectionClosedError:
    case QNetworkReply::ProxyTimeoutError:
        return true;
    default:
        return false;
    }
}

// -1 if the server did not say. Qt hides the length of a body that it unpacks itself.
qint64 announcedLength(const QNetworkReply &reply)
{
    const QVariant length = reply.header(QNetworkRequest::ContentLengthHeader);
    return length.isValid() ? length.toLongLong() : -1;
}

} // namespace

Request::Request(QObject *parent) : QObject(parent)
{
    for (QTimer *timer : {&m_timeout, &m_nextBlock, &m_wait}) {
        timer->setSingleShot(true);
    }
    connect(&m_timeout, &QTimer::timeout, this, &Request::timedOut);
    connect(&m_nextBlock, &QTimer::timeout, this, &Request::readBlock);
    connect(&m_wait, &QTimer::timeout, this, &Request::startAttempt);
    m_wait.start(0);
}

Request::~Request()
{
    dropReply();
}

QNetworkReply::NetworkError Request::error() const
{
    return m_finished ? m_error : QNetworkReply::NoError;
}

QString Request::errorString() const
{
    return m_finished ? m_errorString : QString();
}

int Request::maximumAttempts() const
{
    return 3;
}

int Request::timeoutForAttempt(int attempt) const
{
    Q_UNUSED(attempt)
    return 30 * 1000;
}

int Request::waitBeforeAttempt(int attempt) const
{
    const int wait = firstWait << qBound(0, attempt - 2, 10);
    return wait + QRandomGenerator::global()->bounded(wait);
}

bool Request::prepare()
{
    return true;
}

bool Request::complete()
{
    return true;
}

void Request::fail(QNetworkReply::NetworkError error, const QString &reason)
{
    if (m_finished) {
        return;
    }
    m_error = error;
    m_errorString = reason;
    finish();
}

void Request::startAttempt()
{
    ++m_attempt;
    m_received = 0;
    m_allArrived = false;
    const QPointer<Request> self(this);
    const bool prepared = prepare();
    if (!self || m_finished) {
        return;
    }
    if (!prepared) {
        finish();
        return;
    }
    m_error = QNetworkReply::NoError;
    m_errorString.clear();
    QNetworkReply *reply = perform();
    if (self && !m_finished) {
        adopt(reply);
    }
}

void Request::adopt(QNetworkReply *reply)
{
    if (reply == nullptr) {
        fail(QNetworkReply::OperationCanceledError, tr("There is no network access."));
        return;
    }
    m_reply = reply;
    reply->setReadBufferSize(blockSize);
    connect(reply, &QNetworkReply::readyRead, this, &Request::readBlock);
    connect(reply, &QNetworkReply::finished, this, &Request::replyFinished);
    // The network access manager owns its replies and may go before the request does.
    connect(reply, &QObject::destroyed, this, [this] {
        fail(QNetworkReply::OperationCanceledError, tr("The network access has gone."));
    });
    // Headers come with each redirect, too.
    for (auto progress : {&QNetworkReply::metaDataChanged, &QNetworkReply::encrypted}) {
        connect(reply, progress, &m_timeout, qOverload<>(&QTimer::start));
    }
    m_timeout.start(timeoutForAttempt(m_attempt));
}

void Request::readBlock()
{
    // Whoever hears of a failure may delete the request at once.
    const QPointer<Request> self(this);
    const QByteArray data = m_reply->read(blockSize);
    m_received += data.size();
    // The page that comes with an error is not what was asked for.
    if (!data.isEmpty() && isSuccess(*m_reply) && !receive(data)) {
        return;
    }
    if (!self || !m_reply) {
        return;
    }
    m_timeout.start();
    if (!data.isEmpty() && m_reply->bytesAvailable() > 0) {
        m_nextBlock.start();
    } else if (m_allArrived) {
        bodyRead();
    }
}

void Request::replyFinished()
{
    m_allArrived = true;
    const QNetworkReply::NetworkError error = m_reply->error();
    if (error == QNetworkReply::NoError) {
        readBlock();
    } else {
        attemptFailed(error, m_reply->errorString(), mayHeal(error, httpStatus(*m_reply)));
    }
}

void Request::bodyRead()
{
    const qint64 announced = announcedLength(*m_reply);
    if (!isSuccess(*m_reply)) {
        const int status = httpStatus(*m_reply);
        attemptFailed(QNetworkReply::ProtocolFailure,
                      tr("The server answered with status %1.").arg(status), false);
    } else if (announced >= 0 && m_received < announced) {
        attemptFailed(
            QNetworkReply::RemoteHostClosedError,
            tr("The connection was closed after %1 of %2 bytes.").arg(m_received).arg(announced),
            true);
    } else if (complete()) {
        finish();
    }
}

void Request::timedOut()
{
    attemptFailed(QNetworkReply::TimeoutError,
                  tr("Nothing arrived for %1 seconds.").arg(m_timeout.interval() / 1000.0),
                  mayHeal(QNetworkReply::TimeoutError, httpStatus(*m_reply)));
}

void Request::attemptFailed(QNetworkReply::NetworkError error, const QString &reason, bool mayHeal)
{
    m_error = error;
    m_errorString = reason;
    dropReply();
    if (mayHeal && m_attempt < maximumAttempts()) {
        m_wait.start(waitBeforeAttempt(m_attempt + 1));
    } else {
        finish();
    }
}

void Request::dropReply()
{
    m_timeout.stop();
    m_nextBlock.stop();
    if (!m_reply) {
        return;
    }
    QNetworkReply *reply = m_reply;
    m_reply.clear();
    reply->disconnect(this);
    reply->disconnect(&m_timeout);
    // Deletion ends the transfer as abort() does, without signals that strangers listen to.
    reply->deleteLater();
}

void Request::finish()
{
    if (m_finished) {
        return;
    }
    m_finished = true;
    m_wait.stop();
    dropReply();
    Q_EMIT finished();
}

} // namespace ko
