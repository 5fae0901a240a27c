#include "tests/network/HttpListener.h"

#include <QtCore/QDeadlineTimer>
#include <QtNetwork/QSslKey>
#include <QtNetwork/QSslSocket>

#include <sys/socket.h>

namespace
{

constexpr qint64 outputSize = qint64(256) * 1024; // bytes that wait for the client at most
// ms for the client, since Qt sends a request again that is answered before it is quite sent.
constexpr int timeToWrite = 2;
constexpr int timeToRead = 50; // ms for the client, since a reset takes back what it has not read

// Closing the socket resets the connection from here on.
void resetOnClose(const QTcpSocket &socket)
{
    const linger now{1, 0};
    setsockopt(int(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &now, sizeof(now));
}

qint64 now()
{
    return QDeadlineTimer::current().deadline();
}

} // namespace

void HttpListener::serve(const QString &path, const QVector<HttpAnswer> &answers)
{
    const QMutexLocker lock(&m_mutex);
    m_answers.insert(path, answers);
}

HttpAnswer HttpListener::answer(const HttpRequest &request)
{
    const QMutexLocker lock(&m_mutex);
    m_requests.append(request);
    m_requests.last().time = now();
    const auto found = m_answers.find(request.path);
    if (found == m_answers.end()) {
        return HttpAnswer::page("There is no such page.", 404);
    }
    return found->size() > 1 ? found->takeFirst() : found->first();
}

QVector<HttpRequest> HttpListener::requests() const
{
    const QMutexLocker lock(&m_mutex);
    return m_requests;
}

void HttpListener::incomingConnection(qintptr descriptor)
{
    const bool secure = !m_tls.privateKey().isNull();
    auto *socket = secure ? new QSslSocket(this) : new QTcpSocket(this);
    if (!socket->setSocketDescriptor(descriptor)) {
        delete socket;
        return;
    }
    m_openConnections.ref();
    connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
        m_openConnections.deref();
        socket->deleteLater();
    });
    new HttpConnection(socket, this);
    if (auto *tlsSocket = qobject_cast<QSslSocket *>(socket)) {
        tlsSocket->setSslConfiguration(m_tls);
        tlsSocket->startServerEncryption();
    }
}

HttpConnection::HttpConnection(QTcpSocket *socket, HttpListener *listener)
    : QObject(socket), m_socket(socket), m_listener(listener)
{
    m_pause.setSingleShot(true);
    connect(socket, &QTcpSocket::readyRead, this, &HttpConnection::read);
    connect(socket, &QTcpSocket::bytesWritten, this, [this] {
        if (m_headerSent && !m_pause.isActive()) {
            sendBody();
        }
    });
    connect(&m_pause, &QTimer::timeout, this, [this] {
        if (m_headerSent) {
            sendBody();
        } else {
            sendHeader();
        }
    });
}

void HttpConnection::read()
{
    m_input += m_socket->readAll();
    const int size = m_input.indexOf("\r\n\r\n");
    if (m_busy || size < 0) {
        return;
    }
    const QList<QByteArray> lines = m_input.left(size).split('\n');
    m_input.remove(0, size + 4);
    HttpRequest request;
    request.path = QString::fromLatin1(lines.first().split(' ').value(1));
    for (int i = 1; i < lines.size(); ++i) {
        const int colon = lines.at(i).indexOf(':');
        request.headers.append(
            {lines.at(i).left(colon).toLower(), lines.at(i).mid(colon + 1).trimmed()});
    }
    m_busy = true;
    m_headerSent = false;
    m_sent = 0;
    m_answer = m_listener->answer(request);
    m_pause.start(qMax(timeToWrite, m_answer.pause));
}

qint64 HttpConnection::length() const
{
    return m_answer.generated >= 0 ? m_answer.generated : m_answer.body.size();
}

void HttpConnection::sendHeader()
{
    if (m_answer.ending != HttpAnswer::Complete && m_answer.endAfter < 0) {
        end();
        return;
    }
    QByteArray header = "HTTP/1.1 " + QByteArray::number(m_answer.status) + " Because\r\n";
    for (const HttpHeader &entry : qAsConst(m_answer.headers)) {
        header += entry.name + ": " + entry.value + "\r\n";
    }
    if (m_answer.framing == HttpAnswer::Chunked) {
        header += "Transfer-Encoding: chunked\r\n";
    } else if (m_answer.framing == HttpAnswer::UntilClose) {
        header += "Connection: close\r\n";
    } else if (m_answer.status != 204) {
        const qint64 announced = m_answer.announced >= 0 ? m_answer.announced : length();
        header += "Content-Length: " + QByteArray::number(announced) + "\r\n";
    }
    m_headerSent = true;
    m_socket->write(header + "\r\n");
    sendBody();
}

void HttpConnection::sendBody()
{
    const bool whole = m_answer.ending == HttpAnswer::Complete;
    const qint64 last = whole ? length() : qMin(m_answer.endAfter, length());
    while (m_busy && m_sent < last && m_socket->bytesToWrite() < outputSize) {
        const int size = int(qMin<qint64>(m_answer.pieceSize, last - m_sent));
        sendPiece(m_answer.generated >= 0 ? generatedBytes(m_sent, size)
                                          : m_answer.body.mid(int(m_sent), size));
        m_sent += size;
        if (m_answer.pause > 0) {
            m_pause.start(qMax(timeToWrite, m_answer.pause));
            return;
        }
    }
    if (m_busy && m_sent == last && (whole || m_socket->bytesToWrite() == 0)) {
        end();
    }
}

void HttpConnection::sendPiece(const QByteArray &piece)
{
    if (m_answer.framing == HttpAnswer::Chunked) {
        m_socket->write(QByteArray::number(piece.size(), 16) + "\r\n" + piece + "\r\n");
    } else {
        m_socket->write(piece);
    }
}

void HttpConnection::end()
{
    switch (m_answer.ending) {
    case HttpAnswer::Complete:
        if (m_answer.framing == HttpAnswer::Chunked) {
            m_socket->write("0\r\n\r\n");
        }
        m_busy = false;
        // What was announced and does not come must not be waited for either.
        if (m_answer.framing == HttpAnswer::UntilClose || m_answer.announced >= 0) {
            m_socket->disconnectFromHost();
        } else {
            read();
        }
        break;
    case HttpAnswer::Stall:
        break;
    case HttpAnswer::Close:
        m_busy = false;
        m_socket->disconnectFromHost();
        break;
    case HttpAnswer::Reset:
        m_busy = false;
        QTimer::singleShot(timeToRead, this, [this] {
            resetOnClose(*m_socket);
            m_socket->abort();
        });
        break;
    }
}
