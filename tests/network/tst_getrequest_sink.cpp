#include "tests/network/Download.h"
#include "tests/network/HttpServer.h"
#include "tests/network/Sinks.h"

#include <QtCore/QBuffer>
#include <QtCore/QSaveFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTemporaryFile>

#include <sys/mount.h>

#include <memory>

namespace
{

const QString path = QStringLiteral("/picture");

// The request ends at once with a message that says so.
#define VERIFY_SINK_FAILURE(download, message)                                                     \
    do {                                                                                           \
        QCOMPARE((download).run(), QNetworkReply::OperationCanceledError);                         \
        QVERIFY2((download).errorString().contains(QLatin1String(message)),                        \
                 qPrintable((download).errorString()));                                            \
    } while (false)

// A file system with room for 64 KiB; without the right to mount one, none.
class SmallDisk
{
public:
    SmallDisk()
        : m_mounted(m_folder.isValid() && mount("tmpfs", qPrintable(m_folder.path()), "tmpfs",
                                                MS_NODEV | MS_NOSUID, "size=65536") == 0)
    {
    }
    ~SmallDisk()
    {
        if (m_mounted) {
            umount2(qPrintable(m_folder.path()), MNT_DETACH);
        }
    }
    bool isMounted() const { return m_mounted; }
    QString filePath() const { return m_folder.filePath(QStringLiteral("download")); }

private:
    QTemporaryDir m_folder;
    const bool m_mounted;
};

} // namespace

class GetRequestSinkTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_server = std::make_unique<HttpServer>();
        m_manager = std::make_unique<QNetworkAccessManager>();
        m_longer = HttpAnswer::broken(generatedBytes(1, 700000), HttpAnswer::Close, 690000);
        m_body = generatedBytes(0, 300000);
    }

    void bufferHoldsTheLastAttemptAlone()
    {
        m_server->serve(path, {m_longer, HttpAnswer::page(m_body)});
        QBuffer sink;
        QVERIFY(sink.open(QIODevice::WriteOnly));
        Download download(m_server->url(path), m_manager.get(), &sink);
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QVERIFY(sink.data() == m_body);
        QCOMPARE(sink.pos(), qint64(m_body.size()));
    }

    void temporaryFileHoldsTheLastAttemptAlone()
    {
        m_server->serve(path, {m_longer, HttpAnswer::page(m_body)});
        QTemporaryFile sink;
        QVERIFY(sink.open());
        Download download(m_server->url(path), m_manager.get(), &sink);
        QCOMPARE(download.run(), QNetworkReply::NoError);
        // Another reader sees it all, although the file is still open.
        QFile reader(sink.fileName());
        QVERIFY(reader.open(QIODevice::ReadOnly));
        QVERIFY(reader.readAll() == m_body);
    }

    void savedFileHoldsTheLastAttemptAlone()
    {
        m_server->serve(path, {m_longer, HttpAnswer::page(m_body)});
        const QTemporaryDir folder;
        QSaveFile sink(folder.filePath(QStringLiteral("saved")));
        QVERIFY(sink.open(QIODevice::WriteOnly));
        Download download(m_server->url(path), m_manager.get(), &sink);
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QVERIFY(sink.commit());
        QFile reader(sink.fileName());
        QVERIFY(reader.open(QIODevice::ReadOnly));
        QVERIFY(reader.readAll() == m_body);
    }

    void emptyBodyAfterAFailureLeavesNothing()
    {
        m_server->serve(path, {m_longer, HttpAnswer::page("")});
        QTemporaryFile sink;
        QVERIFY(sink.open());
        Download download(m_server->url(path), m_manager.get(), &sink);
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QCOMPARE(sink.size(), qint64(0));
    }

    void errorPageAfterAFailureLeavesNothing()
    {
        m_server->serve(path, {m_longer, HttpAnswer::page("a page", 404)});
        QTemporaryFile sink;
        QVERIFY(sink.open());
        Download download(m_server->url(path), m_manager.get(), &sink);
        QCOMPARE(download.run(), QNetworkReply::ContentNotFoundError);
        QCOMPARE(sink.size(), qint64(0));
    }

    void withoutASinkTheBodyIsDropped()
    {
        m_server->serve(path, {m_longer, HttpAnswer::page(m_body)});
        Download download(m_server->url(path), m_manager.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QCOMPARE(m_server->requestCount(path), 2);
    }

    void bodyArrivesPieceByPiece()
    {
        HttpAnswer answer = HttpAnswer::broken(m_body, HttpAnswer::Stall, 1000);
        m_server->serve(path, answer);
        QBuffer sink;
        QVERIFY(sink.open(QIODevice::WriteOnly));
        Download download(m_server->url(path), m_manager.get(), &sink);
        QTRY_COMPARE(sink.data(), m_body.left(1000));
        QCOMPARE(download.finishedCount(), 0);
    }

    void fullDeviceIsAClearError_data()
    {
        QTest::addColumn<int>("size");
        QTest::newRow("one byte") << 1; // fits into the file's buffer
        QTest::newRow("a buffer") << 16384;
        QTest::newRow("more than a buffer") << 300000;
    }

    void fullDeviceIsAClearError()
    {
        QFETCH(const int, size);
        m_server->serve(path, HttpAnswer::page(generatedBytes(0, size)));
        QFile sink(QStringLiteral("/dev/full"));
        QVERIFY(sink.open(QIODevice::WriteOnly));
        Download download(m_server->url(path), m_manager.get(), &sink);
        VERIFY_SINK_FAILURE(download, "No space left");
        QCOMPARE(m_server->requestCount(path), 1);
    }

    void fullDiskIsAClearError_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<bool>("fits");
        QTest::newRow("exactly full") << qint64(65536) << true;
        QTest::newRow("one byte too many") << qint64(65537) << false;
        QTest::newRow("much too much") << qint64(30000000) << false;
    }

    void fullDiskIsAClearError()
    {
        QFETCH(const qint64, size);
        QFETCH(const bool, fits);
        const SmallDisk disk;
        if (!disk.isMounted()) {
            QSKIP("A small disk needs the right to mount one.");
        }
        m_server->serve(path, HttpAnswer::generate(size));
        QFile sink(disk.filePath());
        QVERIFY(sink.open(QIODevice::WriteOnly));
        Download download(m_server->url(path), m_manager.get(), &sink);
        if (fits) {
            QCOMPARE(download.run(), QNetworkReply::NoError);
            QCOMPARE(sink.size(), size);
        } else {
            VERIFY_SINK_FAILURE(download, "No space left");
        }
        QCOMPARE(m_server->requestCount(path), 1);
        QTRY_VERIFY(m_manager->findChildren<QNetworkReply *>().isEmpty());
    }

    void shortWriteIsAnError()
    {
        m_server->serve(path, HttpAnswer::page(m_body));
        SmallSink sink(m_body.size() - 1);
        Download download(m_server->url(path), m_manager.get(), &sink);
        VERIFY_SINK_FAILURE(download, "could not be stored");
        QCOMPARE(m_server->requestCount(path), 1);
    }

    void sinkThatCannotBeWrittenCostsNoRequest_data()
    {
        QTest::addColumn<int>("mode");
        QTest::newRow("closed") << int(QIODevice::NotOpen);
        QTest::newRow("read-only") << int(QIODevice::ReadOnly);
    }

    void sinkThatCannotBeWrittenCostsNoRequest()
    {
        QFETCH(const int, mode);
        m_server->serve(path, HttpAnswer::page(m_body));
        QBuffer sink;
        if (mode != QIODevice::NotOpen) {
            QVERIFY(sink.open(QIODevice::OpenMode(mode)));
        }
        Download download(m_server->url(path), m_manager.get(), &sink);
        VERIFY_SINK_FAILURE(download, "not open for writing");
        QCOMPARE(m_server->requestCount(path), 0);
    }

    void sinkThatDiesBeforeTheStartCostsNoRequest()
    {
        m_server->serve(path, HttpAnswer::page(m_body));
        auto sink = std::make_unique<PipeSink>();
        Download download(m_server->url(path), m_manager.get(), sink.get());
        sink.reset();
        VERIFY_SINK_FAILURE(download, "has gone");
        QCOMPARE(m_server->requestCount(path), 0);
    }

    void sinkMayDieOrCloseInTheMiddle_data()
    {
        QTest::addColumn<bool>("dies");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("dies") << true << QByteArray("has gone");
        QTest::newRow("closes") << false << QByteArray("not open for writing");
    }

    void sinkMayDieOrCloseInTheMiddle()
    {
        QFETCH(const bool, dies);
        QFETCH(const QByteArray, message);
        HttpAnswer answer = HttpAnswer::page(m_body);
        answer.pieceSize = 100000;
        answer.pause = 100;
        m_server->serve(path, answer);
        auto sink = std::make_unique<QBuffer>();
        QVERIFY(sink->open(QIODevice::WriteOnly));
        Download download(m_server->url(path), m_manager.get(), sink.get());
        QTRY_VERIFY(!sink->data().isEmpty());
        if (dies) {
            sink.reset();
        } else {
            sink->close();
        }
        VERIFY_SINK_FAILURE(download, message.constData());
        QCOMPARE(m_server->requestCount(path), 1);
    }

    void sinkMayDieAfterTheLastByte()
    {
        HttpAnswer answer = HttpAnswer::page("body");
        answer.framing = HttpAnswer::Chunked;
        answer.pause = 200;
        m_server->serve(path, answer);
        auto sink = std::make_unique<PipeSink>();
        Download download(m_server->url(path), m_manager.get(), sink.get());
        QTRY_COMPARE(sink->content(), QByteArray("body"));
        QCOMPARE(download.finishedCount(), 0);
        sink.reset();
        VERIFY_SINK_FAILURE(download, "has gone");
    }

    void sinkMayDieWhileItWaits()
    {
        m_server->serve(path, m_longer);
        auto sink = std::make_unique<QTemporaryFile>();
        QVERIFY(sink->open());
        Download download(m_server->url(path), m_manager.get(), sink.get());
        download.waits = {800};
        QTRY_COMPARE(m_server->requestCount(path), 1);
        QTest::qWait(100);
        sink.reset();
        VERIFY_SINK_FAILURE(download, "has gone");
        QCOMPARE(m_server->requestCount(path), 1);
    }

    void pipeThatWasWrittenToGetsNoFurtherAttempt_data()
    {
        QTest::addColumn<bool>("sequential");
        QTest::newRow("pipe") << true;
        QTest::newRow("device of another kind") << false;
    }

    void pipeThatWasWrittenToGetsNoFurtherAttempt()
    {
        QFETCH(const bool, sequential);
        m_server->serve(path, {m_longer, HttpAnswer::page(m_body)});
        PipeSink pipe;
        SmallSink other(1000000);
        SmallSink &sink = sequential ? pipe : other;
        Download download(m_server->url(path), m_manager.get(), &sink);
        QCOMPARE(download.run(), QNetworkReply::RemoteHostClosedError);
        QVERIFY(!download.errorString().isEmpty());
        QVERIFY(m_longer.body.startsWith(sink.content()));
        QCOMPARE(m_server->requestCount(path), 1);
    }

    void pipeThatWasNotWrittenToGetsAnother()
    {
        m_server->serve(path, {HttpAnswer::page("a page", 503), HttpAnswer::page(m_body)});
        PipeSink sink;
        Download download(m_server->url(path), m_manager.get(), &sink);
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QVERIFY(sink.content() == m_body);
    }

private:
    std::unique_ptr<HttpServer> m_server;
    std::unique_ptr<QNetworkAccessManager> m_manager;
    HttpAnswer m_longer;
    QByteArray m_body;
};

QTEST_GUILESS_MAIN(GetRequestSinkTest)

#include "tst_getrequest_sink.moc"
