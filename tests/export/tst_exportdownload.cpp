#include "core/GetRequest.h"
#include "tests/export/ExportBench.h"
#include "tests/network/HttpServer.h"
#include "tests/support/TestMain.h"

#include <QtCore/QFileInfo>
#include <QtCore/QTimer>
#include <QtQml/QQmlEngine>

#include <csignal>
#include <sys/resource.h>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

const QString picturePath = QStringLiteral("/picture");

int downloads(const ExportBench &bench)
{
    return bench.exporter()->findChildren<ko::GetRequest *>().size();
}

} // namespace

// Sources that are no local files.
class ExportDownloadTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_bench = std::make_unique<ExportBench>(ExportBench::Maker::QmlEngine);
        QVERIFY(m_bench->exporter());
    }

    void cleanup() { m_bench.reset(); }

    void aDownloadIsExportedAsALocalCopy()
    {
        ExportBench &bench = *m_bench;
        HttpServer server;
        const QByteArray copy = QFile::encodeName(bench.path("effects"));
        server.serve(picturePath, HttpAnswer::page("effects " + copy + "\nwrite done"));
        const MessageLog log(true);
        bench.exporter()->setSource(server.url(picturePath));
        bench.exporter()->exportToFile(bench.target("a.png"));
        bool existed = false;
        connect(bench.exporter(), &ImageEffectExporter::exportFinished, this,
                [&](const QUrl &source) { existed = QFileInfo::exists(source.toLocalFile()); });
        QVERIFY(bench.waitForReports(1));

        const Report report = bench.reports().first();
        QVERIFY(report.finished);
        QVERIFY(report.source.isLocalFile());
        QCOMPARE(QFileInfo(report.source.toLocalFile()).absolutePath(), bench.path("tmp"));
        QVERIFY(existed);
        QCOMPARE(bench.notes("argument").first().text, "--source=" + report.source.toLocalFile());
        QCOMPARE(bench.read("targets/a.png"), QByteArray("done"));
        QCOMPARE(bench.read("effects"), QByteArray("[\n]\n"));
        QCOMPARE(log.count(), 0);
        QCOMPARE(server.requestCount(picturePath), 1);
        QTest::qWait(aWhile);
        QVERIFY(!QFileInfo::exists(report.source.toLocalFile()));
        QCOMPARE(bench.temporaryFiles().size(), 1);
        QCOMPARE(bench.exporter()->children().size(), 1);
    }

    // The tool reads every byte that came.
    void aLargeDownloadIsComplete()
    {
        ExportBench &bench = *m_bench;
        HttpServer server;
        const QByteArray body = QByteArray("sleep 0\n").repeated(50000) + "exit 9\n";
        server.serve(picturePath, HttpAnswer::page(body));
        const MessageLog log;
        bench.exporter()->setSource(server.url(picturePath));
        bench.exporter()->exportToFile(bench.target("a.png"));
        QVERIFY(bench.waitForReports(1));
        QCOMPARE(log.critical(), QStringList{"Image export failed with code 9"});
        // Of an export that failed after its download, too, the source is the local copy.
        QVERIFY(!bench.reports().first().finished);
        QVERIFY(bench.reports().first().source.isLocalFile());
    }

    void aFailedDownloadReportsItsUrl_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("code");
        QTest::newRow("not found") << 404 << int(QNetworkReply::ContentNotFoundError);
        QTest::newRow("forbidden") << 403 << int(QNetworkReply::ContentAccessDenied);
        QTest::newRow("server error") << 500 << int(QNetworkReply::InternalServerError);
    }

    void aFailedDownloadReportsItsUrl()
    {
        QFETCH(const int, status);
        QFETCH(const int, code);
        ExportBench &bench = *m_bench;
        HttpServer server;
        server.serve(picturePath, HttpAnswer::page("write page\n", status));
        const QUrl url = server.url(picturePath);
        const MessageLog log;
        bench.exporter()->setSource(url);
        bench.exporter()->exportToFile(bench.target("a.png"));
        QVERIFY(bench.waitForReports(1));
        QVERIFY(!bench.reports().first().finished);
        QCOMPARE(bench.reports().first().source, url);
        QCOMPARE(bench.reports().first().target, bench.target("a.png"));
        QCOMPARE(log.critical(), QStringList{QStringLiteral("Failed to download %1 with code %2")
                                                 .arg(url.toString())
                                                 .arg(code)});
        QCOMPARE(log.count(), 1);
        QCOMPARE(bench.noted("start"), QStringList());
        QTest::qWait(aWhile);
        QVERIFY(!bench.timer()->isActive());
        QCOMPARE(bench.temporaryFiles().size(), 1);
    }

    void anEmptySourceIsADownloadThatFails()
    {
        ExportBench &bench = *m_bench;
        const MessageLog log;
        bench.exporter()->exportToFile(bench.target("a.png"));
        QVERIFY(bench.waitForReports(1));
        QVERIFY(!bench.reports().first().finished);
        QCOMPARE(log.critical().size(), 1);
        QVERIFY2(log.critical().value(0).startsWith("Failed to download  with code "),
                 qPrintable(log.critical().value(0)));
    }

    // What the application's network access reads beside HTTP.
    void resourcesAndDataUrlsAreDownloaded_data()
    {
        QTest::addColumn<QUrl>("source");
        QTest::newRow("resource") << QUrl("qrc:/export/instructions");
        QTest::newRow("data") << QUrl("data:text/plain;base64,d3JpdGUgZG9uZQo=");
    }

    void resourcesAndDataUrlsAreDownloaded()
    {
        QFETCH(const QUrl, source);
        ExportBench &bench = *m_bench;
        bench.exporter()->setSource(source);
        bench.exporter()->exportToFile(bench.target("a.png"));
        QVERIFY(bench.waitForReports(1));
        QVERIFY(bench.reports().first().finished);
        QVERIFY(bench.reports().first().source.isLocalFile());
        QCOMPARE(bench.read("targets/a.png"), QByteArray("done"));
    }

    // They hold their places, and local exports behind them wait.
    void stalledDownloadsKeepTheirPlaces()
    {
        ExportBench &bench = *m_bench;
        HttpServer server;
        server.serve("/stalled", HttpAnswer::broken("half of it", HttpAnswer::Stall, 4));
        bench.exporter()->setSource(server.url("/stalled"));
        for (int i = 0; i < slotCount; ++i) {
            bench.exporter()->exportToFile(bench.target("stalled.png"));
        }
        bench.start("local.png");
        QVERIFY(QTest::qWaitFor([&] { return server.requestCount("/stalled") == slotCount; },
                                patience));
        QTest::qWait(aWhile);
        QCOMPARE(downloads(bench), slotCount);
        QCOMPARE(bench.reports().size(), 0);
        QCOMPARE(bench.noted("start"), QStringList());

        bench.deleteExporter();
        QCOMPARE(bench.temporaryFiles(), QStringList());
        QVERIFY(QTest::qWaitFor([&] { return server.openConnections() == 0; }, patience));
        QCOMPARE(bench.reports().size(), 0);
    }

    void withoutAnEngineRemoteExportsFailInSilence()
    {
        m_bench.reset();
        ExportBench bench;
        HttpServer server;
        server.serve(picturePath, HttpAnswer::page("write done\n"));
        const MessageLog log(true);
        for (const QUrl &url :
             {server.url(picturePath), QUrl("qrc:/export/instructions"), QUrl()}) {
            bench.exporter()->setSource(url);
            bench.exporter()->exportToFile(bench.target("remote.png"));
        }
        bench.start("local.png", "write done\n");
        QVERIFY(bench.waitForReports(4));
        for (int i = 0; i < 3; ++i) {
            QVERIFY(!bench.reports().at(i).finished);
        }
        QCOMPARE(bench.reports().first().source, server.url(picturePath));
        QVERIFY(bench.reports().last().finished);
        QCOMPARE(log.count(), 0);
        QCOMPARE(server.requests().size(), 0);
    }

    void theEngineGoesDuringADownload()
    {
        ExportBench &bench = *m_bench;
        HttpServer server;
        server.serve("/stalled", HttpAnswer::broken("half of it", HttpAnswer::Stall, 4));
        const MessageLog log;
        bench.exporter()->setSource(server.url("/stalled"));
        bench.exporter()->exportToFile(bench.target("a.png"));
        bench.exporter()->exportToFile(bench.target("b.png"));
        QVERIFY(QTest::qWaitFor([&] { return server.requestCount("/stalled") == 2; }, patience));
        bench.deleteEngine();
        bench.exporter()->exportToFile(bench.target("c.png"));
        QVERIFY(bench.waitForReports(3));
        for (const Report &report : bench.reports()) {
            QVERIFY(!report.finished);
            QCOMPARE(report.source, server.url("/stalled"));
        }
        QCOMPARE(log.critical().size(), 2);
    }

    void aFullDiskFailsTheDownload()
    {
        ExportBench &bench = *m_bench;
        HttpServer server;
        server.serve(picturePath, HttpAnswer::generate(4LL * 1024 * 1024));
        const MessageLog log(true);
        bench.exporter()->setSource(server.url(picturePath));
        bench.exporter()->exportToFile(bench.target("a.png"));
        {
            rlimit former{};
            getrlimit(RLIMIT_FSIZE, &former);
            const auto handler = std::signal(SIGXFSZ, SIG_IGN);
            const rlimit small{1024UL * 1024, former.rlim_max};
            setrlimit(RLIMIT_FSIZE, &small);
            const bool reported = bench.waitForReports(1);
            setrlimit(RLIMIT_FSIZE, &former);
            std::signal(SIGXFSZ, handler);
            QVERIFY(reported);
        }
        QVERIFY(!bench.reports().first().finished);
        QCOMPARE(bench.reports().first().source, server.url(picturePath));
        QCOMPARE(log.critical(), QStringList{QStringLiteral("Failed to download %1 with code %2")
                                                 .arg(server.url(picturePath).toString())
                                                 .arg(int(QNetworkReply::OperationCanceledError))});
        QCOMPARE(bench.noted("start"), QStringList());
    }

private:
    std::unique_ptr<ExportBench> m_bench;
};

KORVEL_TEST_MAIN(ExportDownloadTest)

#include "tst_exportdownload.moc"
