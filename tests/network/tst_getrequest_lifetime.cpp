#include "tests/network/Download.h"
#include "tests/network/HttpServer.h"
#include "tests/network/Sinks.h"

#include <QtCore/QBuffer>
#include <QtCore/QTemporaryFile>

#include <memory>
#include <vector>

namespace
{

const QString path = QStringLiteral("/picture");
const QByteArray body = QByteArrayLiteral("body");

// Calls fail() where it is told to, or has no reply.
class BrokenRequest : public ko::Request
{
    Q_OBJECT

public:
    enum Place { Prepare, PrepareAndRefuse, Perform, Twice, NoReply };

    explicit BrokenRequest(Place place) : m_place(place) {}

protected:
    bool prepare() override
    {
        const Place place = m_place; // fail() may delete this
        if (place == Prepare || place == PrepareAndRefuse) {
            fail(QNetworkReply::ContentConflictError, QStringLiteral("broken"));
        }
        return place != PrepareAndRefuse;
    }
    QNetworkReply *perform() override
    {
        const QPointer<BrokenRequest> self(this);
        const Place place = m_place;
        if (place == Perform || place == Twice) {
            fail(QNetworkReply::ContentConflictError, QStringLiteral("broken"));
        }
        if (self && place == Twice) {
            fail(QNetworkReply::ContentGoneError, QStringLiteral("again"));
        }
        return nullptr;
    }
    bool receive(const QByteArray &) override { return true; }

private:
    const Place m_place;
};

// Fails at the end, but says that all is well.
class LyingDownload : public Download
{
    Q_OBJECT

public:
    using Download::Download;

protected:
    bool complete() override
    {
        fail(QNetworkReply::ContentConflictError, QStringLiteral("broken"));
        return true;
    }
};

} // namespace

class GetRequestLifetimeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_server = std::make_unique<HttpServer>();
        m_manager = std::make_unique<QNetworkAccessManager>();
    }

    void nothingHappensBeforeTheEventLoopTurns()
    {
        m_server->serve(path, HttpAnswer::page(body));
        Download download(m_server->url(path), m_manager.get());
        Download withoutManager(m_server->url(path), nullptr);
        QTest::qSleep(50);
        QCOMPARE(download.finishedCount() + withoutManager.finishedCount(), 0);
        QCOMPARE(m_server->requestCount(path), 0);
        QVERIFY(m_manager->findChildren<QNetworkReply *>().isEmpty());
        QCOMPARE(download.run(), QNetworkReply::NoError);
    }

    void withoutAManagerItFails()
    {
        Download download(m_server->url(path), nullptr);
        QCOMPARE(download.run(), QNetworkReply::OperationCanceledError);
        QVERIFY(!download.errorString().isEmpty());
    }

    void finishedRequestLeavesNothing()
    {
        m_server->serve(path, HttpAnswer::page(body));
        Download download(m_server->url(path), m_manager.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QTRY_VERIFY(m_manager->findChildren<QNetworkReply *>().isEmpty());
        QTest::qWait(100);
        QCOMPARE(download.finishedCount(), 1);
        QCOMPARE(m_server->requestCount(path), 1);
    }

    void deletionAtAnyStageIsSilent_data()
    {
        QTest::addColumn<int>("ending");
        QTest::addColumn<int>("endAfter");
        QTest::addColumn<int>("requests");
        QTest::addColumn<int>("wait"); // ms, before the second attempt
        QTest::newRow("before the start") << int(HttpAnswer::Complete) << -1 << 0 << 1;
        QTest::newRow("before the header") << int(HttpAnswer::Stall) << -1 << 1 << 1;
        QTest::newRow("in the body") << int(HttpAnswer::Stall) << 3 << 1 << 1;
        QTest::newRow("while it waits") << int(HttpAnswer::Close) << 3 << 1 << 800;
    }

    void deletionAtAnyStageIsSilent()
    {
        QFETCH(const int, ending);
        QFETCH(const int, endAfter);
        QFETCH(const int, requests);
        QFETCH(const int, wait);
        m_server->serve(path, HttpAnswer::broken(body, HttpAnswer::Ending(ending), endAfter));
        QBuffer sink;
        QVERIFY(sink.open(QIODevice::WriteOnly));
        auto request = std::make_unique<Download>(m_server->url(path), m_manager.get(), &sink);
        request->waits = {wait};
        int finished = 0;
        connect(request.get(), &Download::finished, this, [&finished] { ++finished; });
        if (requests > 0) {
            QTRY_COMPARE(m_server->requestCount(path), requests);
            QTRY_COMPARE(sink.data(), body.left(qMax(endAfter, 0)));
            QTest::qWait(60);
        }
        QCOMPARE(finished, 0);
        request.reset();
        QTRY_VERIFY(m_manager->findChildren<QNetworkReply *>().isEmpty());
        QTRY_COMPARE(m_server->openConnections(), 0);
        QTest::qWait(wait + 100);
        QCOMPARE(finished, 0);
        QCOMPARE(m_server->requestCount(path), requests);
    }

    void parentDeletesIt()
    {
        m_server->serve(path, HttpAnswer::broken(body, HttpAnswer::Stall, 1));
        auto parent = std::make_unique<QObject>();
        auto *request =
            new ko::GetRequest(QNetworkRequest(m_server->url(path)), m_manager.get(), parent.get());
        QSignalSpy finished(request, &ko::Request::finished);
        QTRY_COMPARE(m_server->requestCount(path), 1);
        parent.reset();
        QTRY_COMPARE(m_server->openConnections(), 0);
        QCOMPARE(finished.count(), 0);
    }

    void finishedMayDeleteTheRequest_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("ending");
        QTest::addColumn<bool>("writable");
        QTest::addColumn<bool>("managed");
        const int complete = HttpAnswer::Complete;
        QTest::newRow("success") << 200 << complete << true << true;
        QTest::newRow("final error") << 404 << complete << true << true;
        QTest::newRow("status 304") << 304 << complete << true << true;
        QTest::newRow("last attempt") << 503 << complete << true << true;
        QTest::newRow("timeout") << 200 << int(HttpAnswer::Stall) << true << true;
        QTest::newRow("sink") << 200 << complete << false << true;
        QTest::newRow("no manager") << 200 << complete << true << false;
    }

    void finishedMayDeleteTheRequest()
    {
        QFETCH(const int, status);
        QFETCH(const int, ending);
        QFETCH(const bool, writable);
        QFETCH(const bool, managed);
        HttpAnswer answer = HttpAnswer::page(status == 304 ? QByteArray() : body, status);
        answer.ending = HttpAnswer::Ending(ending);
        answer.endAfter = 2;
        m_server->serve(path, answer);
        SmallSink sink(writable ? 100 : 1);
        auto *request =
            new Download(m_server->url(path), managed ? m_manager.get() : nullptr, &sink);
        request->attempts = 2;
        request->timeouts = {ending == HttpAnswer::Stall ? 200 : 20000};
        int finished = 0;
        connect(request, &Download::finished, this, [&finished, request] {
            ++finished;
            delete request;
        });
        QTRY_COMPARE(finished, 1);
        QTRY_VERIFY(m_manager->findChildren<QNetworkReply *>().isEmpty());
        QTest::qWait(20);
        QCOMPARE(finished, 1);
    }

    void sinkMayDeleteTheRequest()
    {
        m_server->serve(path, HttpAnswer::page(generatedBytes(0, 900000)));
        std::unique_ptr<Download> request;
        HookedSink sink([&request] { request.reset(); });
        request = std::make_unique<Download>(m_server->url(path), m_manager.get(), &sink);
        QSignalSpy finished(request.get(), &Download::finished);
        QTRY_VERIFY(!request);
        QTRY_VERIFY(m_manager->findChildren<QNetworkReply *>().isEmpty());
        QTRY_COMPARE(m_server->openConnections(), 0);
        QCOMPARE(finished.count(), 0);
    }

    void managerMayDieAtAnyStage_data()
    {
        QTest::addColumn<int>("ending");
        QTest::addColumn<int>("endAfter");
        QTest::addColumn<bool>("started");
        QTest::newRow("before the start") << int(HttpAnswer::Stall) << -1 << false;
        QTest::newRow("before the header") << int(HttpAnswer::Stall) << -1 << true;
        QTest::newRow("in the body") << int(HttpAnswer::Stall) << 3 << true;
        QTest::newRow("while it waits") << int(HttpAnswer::Close) << 3 << true;
    }

    void managerMayDieAtAnyStage()
    {
        QFETCH(const int, ending);
        QFETCH(const int, endAfter);
        QFETCH(const bool, started);
        m_server->serve(path, HttpAnswer::broken(body, HttpAnswer::Ending(ending), endAfter));
        Download request(m_server->url(path), m_manager.get());
        request.waits = {300};
        if (started) {
            QTRY_COMPARE(m_server->requestCount(path), 1);
            QTest::qWait(60);
        }
        m_manager.reset();
        QCOMPARE(request.run(), QNetworkReply::OperationCanceledError);
        QVERIFY(!request.errorString().isEmpty());
        QCOMPARE(m_server->requestCount(path), started ? 1 : 0);
        QTest::qWait(350);
        QCOMPARE(request.finishedCount(), 1);
    }

    void sinkMayDeleteTheManager()
    {
        m_server->serve(path, HttpAnswer::page(generatedBytes(0, 900000)));
        HookedSink sink([this] { m_manager.reset(); });
        Download request(m_server->url(path), m_manager.get(), &sink);
        QCOMPARE(request.run(), QNetworkReply::OperationCanceledError);
    }

    void subclassMayFailAnywhere_data()
    {
        QTest::addColumn<int>("place");
        QTest::addColumn<int>("error");
        const int broken = QNetworkReply::ContentConflictError;
        QTest::newRow("prepare") << int(BrokenRequest::Prepare) << broken;
        QTest::newRow("prepare, which says so") << int(BrokenRequest::PrepareAndRefuse) << broken;
        QTest::newRow("perform") << int(BrokenRequest::Perform) << broken;
        QTest::newRow("twice") << int(BrokenRequest::Twice) << broken;
        QTest::newRow("no reply") << int(BrokenRequest::NoReply)
                                  << int(QNetworkReply::OperationCanceledError);
    }

    void subclassMayFailAnywhere()
    {
        QFETCH(const int, place);
        QFETCH(const int, error);
        BrokenRequest request{BrokenRequest::Place(place)};
        QSignalSpy finished(&request, &ko::Request::finished);
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(int(request.error()), error);

        auto *deleted = new BrokenRequest(BrokenRequest::Place(place));
        const QPointer<BrokenRequest> alive(deleted);
        connect(deleted, &ko::Request::finished, this, [deleted] { delete deleted; });
        QTRY_VERIFY(!alive);
        QTest::qWait(10);
        QCOMPARE(finished.count(), 1);
    }

    void requestThatFailedDoesNotSucceedAsWell()
    {
        m_server->serve(path, HttpAnswer::page(body));
        LyingDownload request(m_server->url(path), m_manager.get());
        QCOMPARE(request.run(), QNetworkReply::ContentConflictError);
        QCOMPARE(request.finishedCount(), 1);
    }

    void manyRequestsShareAManager()
    {
        constexpr int count = 20;
        std::vector<std::unique_ptr<QBuffer>> sinks;
        std::vector<std::unique_ptr<Download>> requests;
        for (int i = 0; i < count; ++i) {
            const QString name = QStringLiteral("/%1").arg(i);
            m_server->serve(
                name, {HttpAnswer::page("", 503), HttpAnswer::page(generatedBytes(i, 100000 + i))});
            sinks.push_back(std::make_unique<QBuffer>());
            QVERIFY(sinks.back()->open(QIODevice::WriteOnly));
            requests.push_back(std::make_unique<Download>(m_server->url(name), m_manager.get(),
                                                          sinks.back().get()));
        }
        for (int i = 0; i < count; ++i) {
            QCOMPARE(requests[size_t(i)]->run(), QNetworkReply::NoError);
            QVERIFY(sinks[size_t(i)]->data() == generatedBytes(i, 100000 + i));
        }
    }

    // Other timers get their turns, however fast the bytes come.
    void eventLoopKeepsTurning_data()
    {
        QTest::addColumn<bool>("local");
        QTest::newRow("from a server") << false;
        QTest::newRow("from a file") << true;
    }

    void eventLoopKeepsTurning()
    {
        QFETCH(const bool, local);
        constexpr qint64 size = 64000000;
        m_server->serve(path, HttpAnswer::generate(size));
        QTemporaryFile file;
        QVERIFY(file.open());
        QVERIFY(file.resize(size));
        qint64 received = 0;
        qint64 most = 0; // bytes within a turn
        PipeSink sink;
        int turns = 0;
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            ++turns;
            most = qMax(most, sink.content().size() - received);
            received = sink.content().size();
        });
        Download download(local ? QUrl::fromLocalFile(file.fileName()) : m_server->url(path),
                          m_manager.get(), &sink);
        timer.start(0);
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QCOMPARE(qint64(sink.content().size()), size);
        QVERIFY2(turns > 50, qPrintable(QString::number(turns)));
        QVERIFY2(most <= 4000000, qPrintable(QString::number(most)));
    }

private:
    std::unique_ptr<HttpServer> m_server;
    std::unique_ptr<QNetworkAccessManager> m_manager;
};

QTEST_GUILESS_MAIN(GetRequestLifetimeTest)

#include "tst_getrequest_lifetime.moc"
