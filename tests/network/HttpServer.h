#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QThread>
#include <QtCore/QUrl>
#include <QtCore/QVector>
#include <QtNetwork/QSslConfiguration>

#include <memory>

class HttpListener;

struct HttpHeader {
    QByteArray name;
    QByteArray value;
};

// What the server sends to one request. By default a whole answer with status 200 and no body.
struct HttpAnswer {
    // How the client learns where the body ends.
    enum Framing { ContentLength, Chunked, UntilClose };
    enum Ending { Complete, Stall, Close, Reset };

    static HttpAnswer page(const QByteArray &body, int status = 200);
    // Qt may ask for what redirects twice and drops the second answer.
    static HttpAnswer redirect(const QByteArray &location, int status = 302);
    // A body of generatedBytes(), made while it is sent.
    static HttpAnswer generate(qint64 length);
    // A page of 200 that ends in another way after so many bytes of its body; -1: before its
    // header.
    static HttpAnswer broken(const QByteArray &body, Ending ending, qint64 endAfter);

    int status = 200;
    QVector<HttpHeader> headers;
    QByteArray body;
    qint64 generated = -1; // length of the body that generatedBytes() gives, in place of `body`
    qint64 announced = -1; // Content-Length, where it is not the body's
    Framing framing = ContentLength;
    Ending ending = Complete;
    qint64 endAfter = -1;
    int pieceSize = 64 * 1024;
    int pause = 0; // ms before the header and after each piece
};

struct HttpRequest {
    QString path;
    QVector<HttpHeader> headers; // names in lower case
    qint64 time = 0;             // ms on a clock that only runs forward

    QByteArray header(const QByteArray &name) const;
};

// Bytes of an endless sequence without a short period.
QByteArray generatedBytes(qint64 offset, int size);

// A web server on 127.0.0.1 and a free port, which runs on a thread of its own; its functions may
// be called from any. Paths that serve() was not given are answered with 404.
class HttpServer
{
public:
    explicit HttpServer(quint16 port = 0);
    // Speaks TLS with the certificate and key of the configuration.
    explicit HttpServer(const QSslConfiguration &tls);
    ~HttpServer();

    quint16 port() const;
    QUrl url(const QString &path) const;
    // The first request gets the first answer and so on, the last one all that follow.
    void serve(const QString &path, const QVector<HttpAnswer> &answers);
    void serve(const QString &path, const HttpAnswer &answer);

    QVector<HttpRequest> requests() const;
    int requestCount(const QString &path) const;
    int openConnections() const;

private:
    void start(quint16 port);

    const bool m_secure;
    QThread m_thread;
    std::unique_ptr<HttpListener> m_listener;
    quint16 m_port = 0;
};
