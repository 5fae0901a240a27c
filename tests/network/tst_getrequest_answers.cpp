#include "tests/network/Download.h"
#include "tests/network/Gzip.h"
#include "tests/network/HttpServer.h"
#include "tests/network/Sinks.h"

#include <QtCore/QBuffer>
#include <QtCore/QTemporaryFile>

#include <memory>

namespace
{

const QString path = QStringLiteral("/picture");

} // namespace

class GetRequestAnswersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_server = std::make_unique<HttpServer>();
        m_manager = std::make_unique<QNetworkAccessManager>();
        m_sink = std::make_unique<QBuffer>();
        QVERIFY(m_sink->open(QIODevice::ReadWrite));
    }

    void bodyArrivesExactly_data()
    {
        QTest::addColumn<int>("framing");
        QTest::addColumn<int>("size");
        for (const int size : {0, 1, 70000, 3000000}) {
            QTest::addRow("%d bytes of a known length", size)
                << int(HttpAnswer::ContentLength) << size;
            QTest::addRow("%d bytes in chunks", size) << int(HttpAnswer::Chunked) << size;
            QTest::addRow("%d bytes until the end", size) << int(HttpAnswer::UntilClose) << size;
        }
    }

    void bodyArrivesExactly()
    {
        QFETCH(const int, framing);
        QFETCH(const int, size);
        HttpAnswer answer = HttpAnswer::page(generatedBytes(0, size));
        answer.framing = HttpAnswer::Framing(framing);
        m_server->serve(path, answer);
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QVERIFY(m_sink->data() == answer.body);
        QCOMPARE(download.errorString(), QString());
        QCOMPARE(m_server->requestCount(path), 1);
    }

    void everySuccessCounts_data()
    {
        QTest::addColumn<int>("status");
        for (const int status : {200, 201, 203, 206, 299}) {
            QTest::addRow("%d", status) << status;
        }
    }

    void everySuccessCounts()
    {
        QFETCH(const int, status);
        m_server->serve(path, HttpAnswer::page("body", status));
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), QByteArray("body"));
    }

    void noContentIsAnEmptyBody()
    {
        m_server->serve(path, HttpAnswer::page("", 204));
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), QByteArray());
    }

    void packedBodyIsUnpacked_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("little") << QByteArray("a few bytes");
        QTest::newRow("noise") << generatedBytes(0, 900000);
        // A packet of these unpacks to more than one block.
        QTest::newRow("zeros") << QByteArray(20000000, '\0');
    }

    void packedBodyIsUnpacked()
    {
        QFETCH(const QByteArray, content);
        HttpAnswer answer = HttpAnswer::page(gzip(content));
        answer.headers = {{"Content-Encoding", "gzip"}};
        m_server->serve(path, answer);
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QVERIFY(m_sink->data() == content);
    }

    void packedBodyStaysPackedForThoseWhoAskForIt()
    {
        HttpAnswer answer = HttpAnswer::page(gzip("content"));
        answer.headers = {{"Content-Encoding", "gzip"}};
        m_server->serve(path, answer);
        QNetworkRequest request(m_server->url(path));
        request.setRawHeader("Accept-Encoding", "gzip");
        Download download(request, m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), answer.body);
    }

    void packedPartsFollowOneAnother()
    {
        HttpAnswer answer = HttpAnswer::page(gzip("one, ") + gzip("two"));
        answer.headers = {{"Content-Encoding", "gzip"}};
        answer.pieceSize = 3;
        answer.pause = 1;
        m_server->serve(path, answer);
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), QByteArray("one, two"));
    }

    void packedBodyWithoutItsEndIsAnError_data()
    {
        QTest::addColumn<int>("missing");
        for (const int missing : {1, 8, 100000}) {
            QTest::addRow("%d bytes", missing) << missing;
        }
    }

    void packedBodyWithoutItsEndIsAnError()
    {
        QFETCH(const int, missing);
        HttpAnswer answer = HttpAnswer::page(gzip(generatedBytes(0, 300000)));
        answer.body.chop(missing);
        answer.headers = {{"Content-Encoding", "gzip"}};
        m_server->serve(path, answer);
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::ProtocolFailure);
        QVERIFY(!download.errorString().isEmpty());
    }

    void packedBodyThatIsDamagedIsAnError()
    {
        HttpAnswer answer = HttpAnswer::page(gzip(generatedBytes(0, 300000)));
        answer.body[answer.body.size() - 6] = char(~answer.body.at(answer.body.size() - 6));
        answer.headers = {{"Content-Encoding", "gzip"}};
        m_server->serve(path, answer);
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::ProtocolFailure);
        QVERIFY(download.errorString().contains(QStringLiteral("packed in a way unknown")));
    }

    void whatOnlyClaimsToBePackedIsAnError()
    {
        HttpAnswer answer = HttpAnswer::page(QByteArray(2000, 'x'));
        answer.headers = {{"Content-Encoding", "gzip"}};
        m_server->serve(path, answer);
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::ProtocolFailure);
        QVERIFY(download.errorString().contains(QStringLiteral("packed in a way unknown")));
        QCOMPARE(m_server->requestCount(path), 1);
    }

    void errorIsFinalAndItsPageDropped_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("error");
        QTest::newRow("400") << 400 << int(QNetworkReply::ProtocolInvalidOperationError);
        QTest::newRow("401") << 401 << int(QNetworkReply::AuthenticationRequiredError);
        QTest::newRow("403") << 403 << int(QNetworkReply::ContentAccessDenied);
        QTest::newRow("404") << 404 << int(QNetworkReply::ContentNotFoundError);
        QTest::newRow("408") << 408 << int(QNetworkReply::UnknownContentError);
        QTest::newRow("410") << 410 << int(QNetworkReply::ContentGoneError);
        QTest::newRow("429") << 429 << int(QNetworkReply::UnknownContentError);
        QTest::newRow("500") << 500 << int(QNetworkReply::InternalServerError);
        QTest::newRow("501") << 501 << int(QNetworkReply::OperationNotImplementedError);
        QTest::newRow("505") << 505 << int(QNetworkReply::UnknownServerError);
    }

    void errorIsFinalAndItsPageDropped()
    {
        QFETCH(const int, status);
        QFETCH(const int, error);
        m_server->serve(path, HttpAnswer::page(generatedBytes(0, 600000), status));
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(int(download.run()), error);
        QVERIFY(!download.errorString().isEmpty());
        QCOMPARE(m_sink->data(), QByteArray());
        QCOMPARE(m_server->requestCount(path), 1);
    }

    void whatIsNeitherSuccessNorErrorIsAnError_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("error");
        QTest::newRow("choices") << 300 << int(QNetworkReply::ProtocolFailure);
        QTest::newRow("redirect to nowhere") << 302 << int(QNetworkReply::ProtocolUnknownError);
        QTest::newRow("not modified") << 304 << int(QNetworkReply::ProtocolFailure);
    }

    void whatIsNeitherSuccessNorErrorIsAnError()
    {
        QFETCH(const int, status);
        QFETCH(const int, error);
        m_server->serve(path, HttpAnswer::page(status == 304 ? "" : "a page", status));
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(int(download.run()), error);
        QVERIFY(!download.errorString().isEmpty());
        QCOMPARE(m_sink->data(), QByteArray());
        QCOMPARE(m_server->requestCount(path), 1);
    }

    void redirectIsFollowed_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("location");
        const QVector<QPair<const char *, QByteArray>> locations{
            {"absolute path", "/a/target?size=2"},
            {"relative path", "target?size=2"},
            {"path upwards", "../a/target?size=2"},
            {"whole URL", "%URL%/a/target?size=2"}};
        for (const int status : {301, 302, 303, 307, 308}) {
            for (const auto &location : locations) {
                QTest::addRow("%d, %s", status, location.first) << status << location.second;
            }
        }
    }

    void redirectIsFollowed()
    {
        QFETCH(const int, status);
        QFETCH(QByteArray, location);
        location.replace("%URL%", m_server->url(QString()).toEncoded());
        const QString from = QStringLiteral("/a/source");
        HttpAnswer redirect = HttpAnswer::redirect(location, status);
        redirect.body = "You are redirected.";
        m_server->serve(from, redirect);
        // Without a length: what the redirect announced for itself is not the target's.
        HttpAnswer answer = HttpAnswer::page("body");
        answer.framing = HttpAnswer::Chunked;
        m_server->serve(QStringLiteral("/a/target?size=2"), answer);
        Download download(m_server->url(from), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), QByteArray("body"));
    }

    void redirectLeadsToAnotherServer()
    {
        HttpServer other;
        other.serve(path, HttpAnswer::page("body"));
        m_server->serve(path, HttpAnswer::redirect(other.url(path).toEncoded()));
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), QByteArray("body"));
    }

    void tenRedirectsAreFollowedAndElevenAreNot_data()
    {
        QTest::addColumn<int>("redirects");
        QTest::addColumn<int>("error");
        QTest::newRow("ten") << 10 << int(QNetworkReply::NoError);
        QTest::newRow("eleven") << 11 << int(QNetworkReply::TooManyRedirectsError);
    }

    void tenRedirectsAreFollowedAndElevenAreNot()
    {
        QFETCH(const int, redirects);
        QFETCH(const int, error);
        for (int i = 0; i < redirects; ++i) {
            m_server->serve(QStringLiteral("/%1").arg(i),
                            HttpAnswer::redirect("/" + QByteArray::number(i + 1)));
        }
        m_server->serve(QStringLiteral("/%1").arg(redirects), HttpAnswer::page("body"));
        QNetworkRequest request(m_server->url(QStringLiteral("/0")));
        request.setMaximumRedirectsAllowed(50);
        Download download(request, m_manager.get(), m_sink.get());
        QCOMPARE(int(download.run()), error);
        QCOMPARE(m_sink->data(), redirects == 10 ? QByteArray("body") : QByteArray());
        QCOMPARE(m_server->requestCount(QStringLiteral("/10")), 1);
        QCOMPARE(m_server->requestCount(QStringLiteral("/11")), 0);
    }

    void circleOfRedirectsEnds()
    {
        m_server->serve(path, HttpAnswer::redirect(path.toLatin1()));
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::TooManyRedirectsError);
        QVERIFY(!download.errorString().isEmpty());
        QVERIFY(m_server->requestCount(path) >= 11);
    }

    void eachAttemptMayBeRedirectedTenTimes()
    {
        m_server->serve(path, HttpAnswer::redirect("/0"));
        for (int i = 0; i < 9; ++i) {
            m_server->serve(QStringLiteral("/%1").arg(i),
                            HttpAnswer::redirect("/" + QByteArray::number(i + 1)));
        }
        m_server->serve(QStringLiteral("/9"),
                        {HttpAnswer::page("", 503), HttpAnswer::page("body")});
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), QByteArray("body"));
        QCOMPARE(m_server->requestCount(QStringLiteral("/9")), 2);
    }

    void redirectDoesNotLeadOutOfTheWeb()
    {
        QTemporaryFile secret;
        QVERIFY(secret.open());
        secret.write("secret");
        secret.flush();
        m_server->serve(path,
                        HttpAnswer::redirect(QUrl::fromLocalFile(secret.fileName()).toEncoded()));
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::ProtocolUnknownError);
        QCOMPARE(m_sink->data(), QByteArray());
    }

    void redirectToAnErrorIsTheError()
    {
        m_server->serve(path, HttpAnswer::redirect("/nowhere"));
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::ContentNotFoundError);
        QCOMPARE(m_sink->data(), QByteArray());
    }

    void whatExceedsTheAnnouncedLengthIsDropped()
    {
        HttpAnswer answer = HttpAnswer::page("body and more");
        answer.announced = 4;
        m_server->serve(path, answer);
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), QByteArray("body"));
    }

    void lessThanTheAnnouncedLengthIsAnError_data()
    {
        QTest::addColumn<int>("size");
        for (const int size : {0, 1, 99999}) {
            QTest::addRow("%d of 100000", size) << size;
        }
    }

    void lessThanTheAnnouncedLengthIsAnError()
    {
        QFETCH(const int, size);
        HttpAnswer answer = HttpAnswer::page(generatedBytes(0, size));
        answer.announced = 100000;
        m_server->serve(path, answer);
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        download.attempts = 1;
        QCOMPARE(download.run(), QNetworkReply::RemoteHostClosedError);
        QVERIFY(!download.errorString().isEmpty());
    }

    void otherSchemesWorkAsWell_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<QByteArray>("content");
        QFile resource(QStringLiteral(":/Download.h"));
        QVERIFY(resource.open(QIODevice::ReadOnly));
        QTest::newRow("data:") << QUrl(QStringLiteral("data:text/plain;base64,Ym9keQ=="))
                               << QByteArray("body");
        QTest::newRow("empty data:") << QUrl(QStringLiteral("data:,")) << QByteArray();
        QTest::newRow("qrc:") << QUrl(QStringLiteral("qrc:/Download.h")) << resource.readAll();
        const QString name = QCoreApplication::applicationFilePath();
        QFile file(name);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QTest::newRow("file:") << QUrl::fromLocalFile(name) << file.readAll();
    }

    void otherSchemesWorkAsWell()
    {
        QFETCH(const QUrl, url);
        QFETCH(const QByteArray, content);
        Download download(url, m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QVERIFY(m_sink->data() == content);
    }

    void fileThatShrinksMeanwhileIsAnError()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        QVERIFY(file.resize(5000000));
        HookedSink sink([&file] { file.resize(1000000); });
        Download download(QUrl::fromLocalFile(file.fileName()), m_manager.get(), &sink);
        QCOMPARE(download.run(), QNetworkReply::RemoteHostClosedError);
        QVERIFY(!download.errorString().isEmpty());
    }

    void otherSchemesFailAtOnce_data()
    {
        QTest::addColumn<QUrl>("url");
        QTest::addColumn<int>("error");
        QTest::newRow("file that is missing") << QUrl(QStringLiteral("file:///no/such/file"))
                                              << int(QNetworkReply::ContentNotFoundError);
        QTest::newRow("folder") << QUrl(QStringLiteral("file:///"))
                                << int(QNetworkReply::ContentOperationNotPermittedError);
        QTest::newRow("resource that is missing")
            << QUrl(QStringLiteral("qrc:/none")) << int(QNetworkReply::ContentNotFoundError);
        QTest::newRow("no such scheme")
            << QUrl(QStringLiteral("gopher:///x")) << int(QNetworkReply::ProtocolUnknownError);
        QTest::newRow("no URL") << QUrl() << int(QNetworkReply::ProtocolUnknownError);
    }

    void otherSchemesFailAtOnce()
    {
        QFETCH(const QUrl, url);
        QFETCH(const int, error);
        Download download(url, m_manager.get(), m_sink.get());
        download.waits = {600000};
        QCOMPARE(int(download.run()), error);
        QVERIFY(!download.errorString().isEmpty());
        QCOMPARE(m_sink->data(), QByteArray());
    }

private:
    std::unique_ptr<HttpServer> m_server;
    std::unique_ptr<QNetworkAccessManager> m_manager;
    std::unique_ptr<QBuffer> m_sink;
};

QTEST_GUILESS_MAIN(GetRequestAnswersTest)

#include "tst_getrequest_answers.moc"
