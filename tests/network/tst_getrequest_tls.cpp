#include "tests/network/Certificate.h"
#include "tests/network/Download.h"
#include "tests/network/HttpServer.h"

#include <QtCore/QBuffer>

#include <memory>

namespace
{

const QString path = QStringLiteral("/picture");

} // namespace

class GetRequestTlsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QSslSocket::supportsSsl());
        m_tls = selfSignedServer();
        QVERIFY2(!m_tls.privateKey().isNull() && !m_tls.localCertificate().isNull(),
                 "The program openssl, from the package of this name, made no certificate.");
    }

    void init()
    {
        m_secure = std::make_unique<HttpServer>(m_tls);
        m_plain = std::make_unique<HttpServer>();
        m_manager = std::make_unique<QNetworkAccessManager>();
        m_sink = std::make_unique<QBuffer>();
        QVERIFY(m_sink->open(QIODevice::WriteOnly));
    }

    void bodyArrivesExactly()
    {
        const QByteArray body = generatedBytes(0, 2000000);
        m_secure->serve(path, HttpAnswer::page(body));
        Download download(trusting(m_secure->url(path)), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QVERIFY(m_sink->data() == body);
    }

    void cutBodyIsTriedAgain()
    {
        const QByteArray body = generatedBytes(0, 400000);
        m_secure->serve(path, {HttpAnswer::broken(body, HttpAnswer::Close, 100000),
                               HttpAnswer::broken(body, HttpAnswer::Reset, 200000),
                               HttpAnswer::page(body)});
        Download download(trusting(m_secure->url(path)), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QVERIFY(m_sink->data() == body);
        QCOMPARE(m_secure->requestCount(path), 3);
    }

    void untrustedServerIsFinal()
    {
        m_secure->serve(path, HttpAnswer::page("body"));
        Download download(m_secure->url(path), m_manager.get(), m_sink.get());
        download.waits = {600000};
        QCOMPARE(download.run(), QNetworkReply::SslHandshakeFailedError);
        QVERIFY(!download.errorString().isEmpty());
        QCOMPARE(m_secure->requestCount(path), 0);
        QCOMPARE(m_sink->data(), QByteArray());
    }

    void redirectToHttpsIsFollowed()
    {
        m_plain->serve(path, HttpAnswer::redirect(m_secure->url(path).toEncoded()));
        m_secure->serve(path, HttpAnswer::page("body"));
        Download download(trusting(m_plain->url(path)), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), QByteArray("body"));
    }

    void redirectWithinHttpsIsFollowed()
    {
        m_secure->serve(QStringLiteral("/from"), HttpAnswer::redirect(path.toLatin1()));
        m_secure->serve(path, HttpAnswer::page("body"));
        Download download(trusting(m_secure->url(QStringLiteral("/from"))), m_manager.get(),
                          m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), QByteArray("body"));
    }

    void redirectToHttpFails_data()
    {
        QTest::addColumn<bool>("overHttp");
        QTest::newRow("from https") << false;
        QTest::newRow("from http over https") << true;
    }

    void redirectToHttpFails()
    {
        QFETCH(const bool, overHttp);
        m_plain->serve(path, HttpAnswer::redirect(m_secure->url(path).toEncoded()));
        const QString target = QStringLiteral("/target");
        m_plain->serve(target, HttpAnswer::page("body"));
        m_secure->serve(path, HttpAnswer::redirect(m_plain->url(target).toEncoded()));
        QNetworkRequest request = trusting((overHttp ? m_plain : m_secure)->url(path));
        // What the caller wants does not count.
        request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                             QNetworkRequest::UserVerifiedRedirectPolicy);
        Download download(request, m_manager.get(), m_sink.get());
        download.waits = {600000};
        QCOMPARE(download.run(), QNetworkReply::InsecureRedirectError);
        QVERIFY(!download.errorString().isEmpty());
        QCOMPARE(m_sink->data(), QByteArray());
        QCOMPARE(m_plain->requestCount(target), 0);
    }

private:
    QNetworkRequest trusting(const QUrl &url) const
    {
        QSslConfiguration client = QSslConfiguration::defaultConfiguration();
        client.setCaCertificates({m_tls.localCertificate()});
        QNetworkRequest request(url);
        request.setSslConfiguration(client);
        return request;
    }

    QSslConfiguration m_tls;
    std::unique_ptr<HttpServer> m_secure;
    std::unique_ptr<HttpServer> m_plain;
    std::unique_ptr<QNetworkAccessManager> m_manager;
    std::unique_ptr<QBuffer> m_sink;
};

QTEST_GUILESS_MAIN(GetRequestTlsTest)

#include "tst_getrequest_tls.moc"
