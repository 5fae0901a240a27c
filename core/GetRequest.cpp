#include "core/GetRequest.h"

#include "core/Unpacker.h"

#include <QtCore/QBuffer>
#include <QtCore/QFileDevice>

namespace ko
{

namespace
{

constexpr int maximumRedirects = 10;
const char acceptEncoding[] = "Accept-Encoding";

} // namespace

GetRequest::GetRequest(const QNetworkRequest &request, QNetworkAccessManager *manager,
                       QObject *parent)
    : Request(parent),
      m_request(request),
      m_manager(manager),
      m_unpacks(!request.hasRawHeader(acceptEncoding))
{
    m_request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                           QNetworkRequest::NoLessSafeRedirectPolicy);
    m_request.setMaximumRedirectsAllowed(maximumRedirects);
    // Qt would unpack, too, but take a body that was cut off for a whole one.
    if (m_unpacks) {
        m_request.setRawHeader(acceptEncoding, "gzip");
        // Everybody else expects a cache to hold what Qt has unpacked.
        m_request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    }
}

GetRequest::~GetRequest() = default;

void GetRequest::setDataSink(QIODevice *sink)
{
    m_sink = sink;
    m_hasSink = sink != nullptr;
}

bool GetRequest::prepare()
{
    m_unpacker.reset();
    if (!sinkIsOpen()) {
        return sinkFailed();
    }
    return !m_written || emptySink();
}

QNetworkReply *GetRequest::perform()
{
    m_reply = m_manager ? m_manager->get(m_request) : nullptr;
    return m_reply;
}

bool GetRequest::isPacked() const
{
    const QByteArray encoding = m_reply->rawHeader("Content-Encoding");
    const bool cached = m_reply->attribute(QNetworkRequest::SourceIsFromCacheAttribute).toBool();
    return m_unpacks && !encoding.isEmpty() && encoding != "identity" && !cached;
}

bool GetRequest::receive(const QByteArray &data)
{
    if (!m_unpacker && isPacked()) {
        m_unpacker = std::make_unique<Unpacker>();
    }
    if (!m_unpacker) {
        return store(data);
    }
    const QPointer<GetRequest> self(this);
    m_unpacker->append(data);
    for (QByteArray part = m_unpacker->next(); !part.isEmpty(); part = m_unpacker->next()) {
        if (!store(part)) {
            return false;
        }
        if (!self) {
            return true;
        }
    }
    if (m_unpacker->isDamaged()) {
        fail(QNetworkReply::ProtocolFailure, tr("The download is packed in a way unknown."));
        return false;
    }
    return true;
}

bool GetRequest::store(const QByteArray &data)
{
    if (!m_hasSink) {
        return true;
    }
    m_written = true;
    if (!sinkIsOpen()) {
        return sinkFailed();
    }
    // A disk that is nearly full takes a part, and says why only when it refuses the rest.
    for (qint64 stored = 0; stored < data.size();) {
        const qint64 size =
            m_sink ? m_sink->write(data.constData() + stored, data.size() - stored) : -1;
        if (size <= 0) {
            return sinkFailed();
        }
        stored += size;
    }
    return true;
}

// A file keeps the last bytes back, and a full disk shows only when they are written, too.
bool GetRequest::complete()
{
    if (m_unpacker && !m_unpacker->isComplete()) {
        fail(QNetworkReply::ProtocolFailure, tr("The end of the packed download is missing."));
        return false;
    }
    auto *file = qobject_cast<QFileDevice *>(m_sink.data());
    return (sinkIsOpen() && (file == nullptr || file->flush())) || sinkFailed();
}

bool GetRequest::sinkIsOpen() const
{
    return !m_hasSink || (m_sink && m_sink->isWritable());
}

bool GetRequest::emptySink()
{
    if (auto *file = qobject_cast<QFileDevice *>(m_sink.data())) {
        m_written = !(file->resize(0) && file->seek(0));
    } else if (auto *buffer = qobject_cast<QBuffer *>(m_sink.data())) {
        buffer->buffer().clear();
        m_written = !buffer->seek(0);
    }
    return !m_written;
}

bool GetRequest::sinkFailed()
{
    QString reason;
    if (!m_sink) {
        reason = tr("The place for the download has gone.");
    } else if (!m_sink->isWritable()) {
        reason = tr("The place for the download is not open for writing.");
    } else {
        reason = tr("The download could not be stored: %1").arg(m_sink->errorString());
    }
    fail(QNetworkReply::OperationCanceledError, reason);
    return false;
}

} // namespace ko
