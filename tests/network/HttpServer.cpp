#include "tests/network/HttpServer.h"

#include "tests/network/HttpListener.h"

#include <QtCore/QRandomGenerator>

HttpAnswer HttpAnswer::page(const QByteArray &body, int status)
{
    HttpAnswer answer;
    answer.status = status;
    answer.body = body;
    return answer;
}

HttpAnswer HttpAnswer::redirect(const QByteArray &location, int status)
{
    HttpAnswer answer = page("", status);
    answer.headers = {{"Location", location}};
    return answer;
}

HttpAnswer HttpAnswer::generate(qint64 length)
{
    HttpAnswer answer;
    answer.generated = length;
    return answer;
}

HttpAnswer HttpAnswer::broken(const QByteArray &body, Ending ending, qint64 endAfter)
{
    HttpAnswer answer = page(body);
    answer.ending = ending;
    answer.endAfter = endAfter;
    return answer;
}

QByteArray HttpRequest::header(const QByteArray &name) const
{
    for (const HttpHeader &entry : headers) {
        if (entry.name == name) {
            return entry.value;
        }
    }
    return {};
}

QByteArray generatedBytes(qint64 offset, int size)
{
    static const QByteArray period = [] {
        QByteArray bytes(1000003,
                         Qt::Uninitialized); // a prime, so that no buffer's size divides it
        QRandomGenerator random(1);
        for (char &byte : bytes) {
            byte = char(random.bounded(256));
        }
        return bytes;
    }();
    QByteArray bytes;
    bytes.reserve(size);
    while (bytes.size() < size) {
        const int start = int((offset + bytes.size()) % period.size());
        bytes += period.mid(start, size - bytes.size());
    }
    return bytes;
}

HttpServer::HttpServer(quint16 port)
    : m_secure(false), m_listener(new HttpListener(QSslConfiguration()))
{
    start(port);
}

HttpServer::HttpServer(const QSslConfiguration &tls)
    : m_secure(true), m_listener(new HttpListener(tls))
{
    start(0);
}

HttpServer::~HttpServer()
{
    // Sockets die on the thread that they live on.
    QObject::connect(&m_thread, &QThread::finished, m_listener.release(), &QObject::deleteLater);
    m_thread.quit();
    m_thread.wait();
}

void HttpServer::start(quint16 port)
{
    m_listener->moveToThread(&m_thread);
    m_thread.start();
    HttpListener *listener = m_listener.get();
    QMetaObject::invokeMethod(
        listener,
        [this, listener, port] {
            if (!listener->listen(QHostAddress::LocalHost, port)) {
                qFatal("The web server cannot listen: %s", qPrintable(listener->errorString()));
            }
            m_port = listener->serverPort();
        },
        Qt::BlockingQueuedConnection);
}

quint16 HttpServer::port() const
{
    return m_port;
}

QUrl HttpServer::url(const QString &path) const
{
    const QString scheme = m_secure ? QStringLiteral("https") : QStringLiteral("http");
    return QUrl(QStringLiteral("%1://127.0.0.1:%2%3").arg(scheme).arg(m_port).arg(path));
}

void HttpServer::serve(const QString &path, const QVector<HttpAnswer> &answers)
{
    m_listener->serve(path, answers);
}

void HttpServer::serve(const QString &path, const HttpAnswer &answer)
{
    m_listener->serve(path, {answer});
}

QVector<HttpRequest> HttpServer::requests() const
{
    return m_listener->requests();
}

int HttpServer::requestCount(const QString &path) const
{
    int count = 0;
    const QVector<HttpRequest> all = requests();
    for (const HttpRequest &request : all) {
        count += request.path == path ? 1 : 0;
    }
    return count;
}

int HttpServer::openConnections() const
{
    return m_listener->openConnections();
}
