#include "tests/network/Download.h"
#include "tests/network/Gzip.h"
#include "tests/network/HttpServer.h"

#include <QtCore/QBuffer>
#include <QtNetwork/QTcpSocket>

#include <algorithm>
#include <memory>

Q_DECLARE_METATYPE(HttpAnswer)

namespace
{

const QString path = QStringLiteral("/picture");
constexpr int brief = 300; // ms, for an attempt that shall time out

HttpAnswer chunked(HttpAnswer answer)
{
    answer.framing = HttpAnswer::Chunked;
    return answer;
}

HttpAnswer brokenError(int status, HttpAnswer::Ending ending)
{
    HttpAnswer answer = HttpAnswer::broken(generatedBytes(1, 500000), ending, 1000);
    answer.status = status;
    return answer;
}

// Keeps a port to itself without listening, so that connections to it are refused.
class ClosedPort
{
public:
    ClosedPort() { m_socket.bind(QHostAddress(QHostAddress::LocalHost)); }
    quint16 port() const { return m_socket.localPort(); }
    QUrl url() const { return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(port()).arg(path)); }
    void giveUp() { m_socket.close(); }

private:
    QTcpSocket m_socket;
};

} // namespace

class GetRequestAttemptsTest : public QObject
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

    void threeAttemptsOfHalfAMinuteAreTheDefault()
    {
        Download download(m_server->url(path), m_manager.get());
        QCOMPARE(download.defaultAttempts(), 3);
        for (const int attempt : {1, 2, 3, 10}) {
            QCOMPARE(download.defaultTimeout(attempt), 30000);
        }
    }

    void waitsDoubleAndVary()
    {
        Download download(m_server->url(path), m_manager.get());
        int shortest = 500;
        for (int attempt = 2; attempt < 8; ++attempt) {
            QVector<int> waits(500);
            std::generate(waits.begin(), waits.end(),
                          [&] { return download.defaultWait(attempt); });
            std::sort(waits.begin(), waits.end());
            QVERIFY2(waits.first() >= shortest, qPrintable(QString::number(waits.first())));
            QVERIFY2(waits.last() < 2 * shortest, qPrintable(QString::number(waits.last())));
            // All over the range: the odds of a miss are one in 10 to the power of 48.
            QVERIFY(waits.first() < shortest * 1.2);
            QVERIFY(waits.last() > shortest * 1.8);
            shortest *= 2;
        }
        QVERIFY(download.defaultWait(1000000) > 0);
    }

    void waitsAreKept()
    {
        m_server->serve(path, HttpAnswer::page("", 503));
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        download.attempts = 4;
        download.waits = {50, 300, 120};
        QCOMPARE(download.run(), QNetworkReply::ServiceUnavailableError);
        const QVector<HttpRequest> requests = m_server->requests();
        QCOMPARE(requests.size(), 4);
        for (int i = 0; i < 3; ++i) {
            const qint64 gap = requests.at(i + 1).time - requests.at(i).time;
            // Timers may be early by a twentieth.
            QVERIFY2(gap >= download.waits.at(i) * 0.95 - 1, qPrintable(QString::number(gap)));
        }
    }

    void defaultWaitIsKept()
    {
        m_server->serve(path, {HttpAnswer::page("", 503), HttpAnswer::page("body")});
        ko::GetRequest request(QNetworkRequest(m_server->url(path)), m_manager.get());
        QSignalSpy finished(&request, &ko::Request::finished);
        request.setDataSink(m_sink.get());
        QVERIFY(finished.wait(20000));
        QCOMPARE(request.error(), QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), QByteArray("body"));
        const QVector<HttpRequest> requests = m_server->requests();
        QCOMPARE(requests.size(), 2);
        QVERIFY(requests.at(1).time - requests.at(0).time >= 475);
    }

    void whatMayHealIsTriedAgain_data()
    {
        QTest::addColumn<HttpAnswer>("failure");
        QTest::addColumn<int>("error");
        const QByteArray other = generatedBytes(1, 500000);
        const int closed = QNetworkReply::RemoteHostClosedError;
        const int timeout = QNetworkReply::TimeoutError;
        const auto broken = [&other](HttpAnswer::Ending ending, qint64 endAfter) {
            return HttpAnswer::broken(other, ending, endAfter);
        };
        QTest::newRow("502") << HttpAnswer::page(other, 502)
                             << int(QNetworkReply::UnknownServerError);
        QTest::newRow("503") << HttpAnswer::page(other, 503)
                             << int(QNetworkReply::ServiceUnavailableError);
        QTest::newRow("504") << HttpAnswer::page(other, 504)
                             << int(QNetworkReply::UnknownServerError);
        QTest::newRow("stalls before the header") << broken(HttpAnswer::Stall, -1) << timeout;
        QTest::newRow("stalls after the header") << broken(HttpAnswer::Stall, 0) << timeout;
        QTest::newRow("stalls in the body") << broken(HttpAnswer::Stall, 300000) << timeout;
        QTest::newRow("stalls in a chunk") << chunked(broken(HttpAnswer::Stall, 300000)) << timeout;
        QTest::newRow("closed after the header") << broken(HttpAnswer::Close, 0) << closed;
        QTest::newRow("closed in the body") << broken(HttpAnswer::Close, 300000) << closed;
        QTest::newRow("closed before the last byte") << broken(HttpAnswer::Close, 499999) << closed;
        QTest::newRow("closed in a chunk") << chunked(broken(HttpAnswer::Close, 300000)) << closed;
        QTest::newRow("closed before the last chunk")
            << chunked(broken(HttpAnswer::Close, 500000)) << closed;
        QTest::newRow("reset after the header") << broken(HttpAnswer::Reset, 0) << closed;
        QTest::newRow("reset in the body") << broken(HttpAnswer::Reset, 300000) << closed;
        QTest::newRow("reset in a chunk") << chunked(broken(HttpAnswer::Reset, 300000)) << closed;
        HttpAnswer packed = HttpAnswer::broken(gzip(other), HttpAnswer::Close, 300000);
        packed.headers = {{"Content-Encoding", "gzip"}};
        QTest::newRow("closed in a packed body") << packed << closed;
    }

    void whatMayHealIsTriedAgain()
    {
        QFETCH(const HttpAnswer, failure);
        QFETCH(const int, error);
        const QByteArray body = generatedBytes(0, 200000);
        m_server->serve(path, {failure, failure, HttpAnswer::page(body)});
        Download healed(m_server->url(path), m_manager.get(), m_sink.get());
        // On a busy machine an attempt may time out before the server has seen it.
        const bool stalls = failure.ending == HttpAnswer::Stall;
        healed.attempts = stalls ? 10 : 3;
        healed.timeouts = {stalls ? brief : 20000};
        QCOMPARE(healed.run(), QNetworkReply::NoError);
        QCOMPARE(healed.errorString(), QString());
        QVERIFY(m_sink->data() == body);
        QVERIFY(m_server->requestCount(path) == 3 || stalls);

        const QString ill = QStringLiteral("/ill");
        m_server->serve(ill, failure);
        Download failed(m_server->url(ill), m_manager.get(), m_sink.get());
        failed.timeouts = {stalls ? brief : 20000};
        QCOMPARE(int(failed.run()), error);
        QVERIFY(!failed.errorString().isEmpty());
        QVERIFY(m_server->requestCount(ill) == 3 || (stalls && m_server->requestCount(ill) < 3));
    }

    // Qt itself sends a request again that got no answer at all, so that the server sees more.
    void droppedBeforeTheHeaderIsTriedAgain_data()
    {
        QTest::addColumn<int>("ending");
        QTest::newRow("closed") << int(HttpAnswer::Close);
        QTest::newRow("reset") << int(HttpAnswer::Reset);
    }

    void droppedBeforeTheHeaderIsTriedAgain()
    {
        QFETCH(const int, ending);
        m_server->serve(path, HttpAnswer::broken("", HttpAnswer::Ending(ending), -1));
        Download failed(m_server->url(path), m_manager.get(), m_sink.get());
        failed.attempts = 1;
        QCOMPARE(failed.run(), QNetworkReply::RemoteHostClosedError);
        QVERIFY(m_server->requestCount(path) >= 1);

        Download healed(m_server->url(path), m_manager.get(), m_sink.get());
        healed.attempts = 2;
        healed.waits = {900};
        QTest::qWait(300);
        m_server->serve(path, HttpAnswer::page("body"));
        QCOMPARE(healed.run(), QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), QByteArray("body"));
    }

    void numberOfAttemptsIsKept_data()
    {
        QTest::addColumn<int>("attempts");
        for (const int attempts : {1, 2, 7}) {
            QTest::addRow("%d", attempts) << attempts;
        }
    }

    void numberOfAttemptsIsKept()
    {
        QFETCH(const int, attempts);
        m_server->serve(path, HttpAnswer::page("", 503));
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        download.attempts = attempts;
        QCOMPARE(download.run(), QNetworkReply::ServiceUnavailableError);
        QCOMPARE(m_server->requestCount(path), attempts);
    }

    void lastErrorCounts()
    {
        m_server->serve(path, {HttpAnswer::page("", 503), HttpAnswer::page("page", 404)});
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::ContentNotFoundError);
        QCOMPARE(m_server->requestCount(path), 2);
    }

    void errorPageThatIsCutOffIsFinal_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("ending");
        for (const int status : {404, 500}) {
            QTest::addRow("%d that stalls", status) << status << int(HttpAnswer::Stall);
            QTest::addRow("%d that is closed", status) << status << int(HttpAnswer::Close);
            QTest::addRow("%d that is reset", status) << status << int(HttpAnswer::Reset);
        }
    }

    void errorPageThatIsCutOffIsFinal()
    {
        QFETCH(const int, status);
        QFETCH(const int, ending);
        m_server->serve(path, brokenError(status, HttpAnswer::Ending(ending)));
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        download.timeouts = {ending == HttpAnswer::Stall ? brief : 20000};
        QVERIFY(download.run() > QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), QByteArray());
        QCOMPARE(m_server->requestCount(path), 1);
    }

    void refusedConnectionIsTriedAgain()
    {
        ClosedPort closed;
        Download failed(closed.url(), m_manager.get(), m_sink.get());
        QCOMPARE(failed.run(), QNetworkReply::ConnectionRefusedError);

        Download healed(closed.url(), m_manager.get(), m_sink.get());
        healed.waits = {700, 600000};
        QTest::qWait(100);
        const quint16 port = closed.port();
        closed.giveUp();
        HttpServer late(port);
        late.serve(path, HttpAnswer::page("body"));
        QCOMPARE(healed.run(), QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), QByteArray("body"));
        QCOMPARE(late.requestCount(path), 1);
    }

    void slowButSteadyBodyIsNoTimeout()
    {
        HttpAnswer slow = HttpAnswer::page(generatedBytes(0, 10));
        slow.pieceSize = 1;
        slow.pause = 100;
        m_server->serve(path, slow);
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        download.timeouts = {800}; // less than the whole takes
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), slow.body);
        QCOMPARE(m_server->requestCount(path), 1);
    }

    void slowRedirectsAreNoTimeout()
    {
        for (int i = 0; i < 10; ++i) {
            HttpAnswer redirect = HttpAnswer::redirect("/" + QByteArray::number(i + 1));
            redirect.pause = 100;
            m_server->serve(QStringLiteral("/%1").arg(i), redirect);
        }
        m_server->serve(QStringLiteral("/10"), HttpAnswer::page("body"));
        Download download(m_server->url(QStringLiteral("/0")), m_manager.get(), m_sink.get());
        download.attempts = 1;
        download.timeouts = {800};
        QCOMPARE(download.run(), QNetworkReply::NoError);
    }

    void eachAttemptHasItsOwnTimeout()
    {
        m_server->serve(path, HttpAnswer::broken("", HttpAnswer::Stall, -1));
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        download.timeouts = {200, 800, 400};
        QCOMPARE(download.run(), QNetworkReply::TimeoutError);
        QVERIFY(download.errorString().contains(QStringLiteral("0.4")));
        const QVector<HttpRequest> requests = m_server->requests();
        QCOMPARE(requests.size(), 3);
        const qint64 first = requests.at(1).time - requests.at(0).time;
        const qint64 second = requests.at(2).time - requests.at(1).time;
        QVERIFY2(first >= 180 && first < 700, qPrintable(QString::number(first)));
        QVERIFY2(second >= 700, qPrintable(QString::number(second)));
    }

    void thereIsNoErrorUntilTheEnd()
    {
        m_server->serve(path, {HttpAnswer::page("", 503), HttpAnswer::page("body")});
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        download.waits = {700};
        QTRY_COMPARE(m_server->requestCount(path), 1);
        QTest::qWait(100);
        QCOMPARE(download.finishedCount(), 0);
        QCOMPARE(download.error(), QNetworkReply::NoError);
        QCOMPARE(download.errorString(), QString());
        QCOMPARE(download.run(), QNetworkReply::NoError);
    }

    void timedOutAttemptLeavesNoConnection()
    {
        m_server->serve(path, {HttpAnswer::broken("", HttpAnswer::Stall, -1),
                               HttpAnswer::broken("abc", HttpAnswer::Stall, 2)});
        Download download(m_server->url(path), m_manager.get(), m_sink.get());
        download.timeouts = {brief};
        QCOMPARE(download.run(), QNetworkReply::TimeoutError);
        QTRY_COMPARE(m_server->openConnections(), 0);
        QVERIFY(m_manager->findChildren<QNetworkReply *>().isEmpty());
    }

private:
    std::unique_ptr<HttpServer> m_server;
    std::unique_ptr<QNetworkAccessManager> m_manager;
    std::unique_ptr<QBuffer> m_sink;
};

QTEST_GUILESS_MAIN(GetRequestAttemptsTest)

#include "tst_getrequest_attempts.moc"
