#pragma once

#include "core/Request.h"

#include <QtCore/QIODevice>
#include <QtCore/QPointer>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkRequest>

#include <memory>

namespace ko
{

class Unpacker;

// A download. It follows at most 10 redirects, none from https to http, writes the body into a
// device as it arrives, in little memory whatever the length, and fails when that device cannot be
// written, when the server answers with an error, or when less arrives than was announced. It
// accepts gzip as the encoding of the body and unpacks it, unless the request says what it accepts
// itself.
class KORVELCORE_EXPORT GetRequest : public Request
{
    Q_OBJECT

public:
    // Does not own `manager`, which lives on the same thread; a null or destroyed one fails.
    GetRequest(const QNetworkRequest &request, QNetworkAccessManager *manager,
               QObject *parent = nullptr);
    ~GetRequest() override;

    // Where the body goes: an open, writable device, not owned. It is emptied before another
    // attempt; one that cannot be, a pipe that was written to, say, gets no further attempt. After
    // a failure it may hold a part of the body. Null, the default, drops the body. To be called
    // before the event loop turns. A device that dies before the end, or cannot be written, fails
    // the request with OperationCanceledError.
    void setDataSink(QIODevice *sink);

protected:
    bool prepare() override;
    QNetworkReply *perform() override;
    bool receive(const QByteArray &data) override;
    bool complete() override;

private:
    bool isPacked() const;
    bool store(const QByteArray &data);
    bool sinkIsOpen() const;
    bool emptySink();
    bool sinkFailed();

    QNetworkRequest m_request;
    const QPointer<QNetworkAccessManager> m_manager;
    const bool m_unpacks;
    QPointer<QNetworkReply> m_reply;
    std::unique_ptr<Unpacker> m_unpacker; // of this attempt, where its body is packed
    QPointer<QIODevice> m_sink;
    bool m_hasSink = false;
    bool m_written = false;
};

} // namespace ko
