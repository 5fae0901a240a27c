#pragma once

#include "tests/network/HttpServer.h"

#include <QtCore/QHash>
#include <QtCore/QMutex>
#include <QtCore/QTimer>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

// Accepts connections, knows the answers and keeps the list of requests.
class HttpListener : public QTcpServer
{
    Q_OBJECT

public:
    explicit HttpListener(const QSslConfiguration &tls) : m_tls(tls) {}

    // From any thread.
    void serve(const QString &path, const QVector<HttpAnswer> &answers);
    HttpAnswer answer(const HttpRequest &request);
    QVector<HttpRequest> requests() const;
    int openConnections() const { return m_openConnections.loadRelaxed(); }

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    const QSslConfiguration m_tls;
    QAtomicInt m_openConnections;
    mutable QMutex m_mutex; // of what follows
    QHash<QString, QVector<HttpAnswer>> m_answers;
    QVector<HttpRequest> m_requests;
};

// Reads requests from one socket, one after the other, and answers them.
class HttpConnection : public QObject
{
    Q_OBJECT

public:
    // The socket's child.
    HttpConnection(QTcpSocket *socket, HttpListener *listener);

private:
    void read();
    void sendHeader();
    void sendBody();
    void sendPiece(const QByteArray &piece);
    void end();
    qint64 length() const;

    QTcpSocket *const m_socket;
    HttpListener *const m_listener;
    QByteArray m_input;
    QTimer m_pause;
    bool m_busy = false;
    bool m_headerSent = false;
    HttpAnswer m_answer;
    qint64 m_sent = 0; // bytes of the body
};
