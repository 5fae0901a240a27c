#include "tests/network/Gzip.h"
#include "tests/network/HttpServer.h"

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

namespace
{

const QString path = QStringLiteral("/picture");
constexpr int mostMemory = 40 * 1024; // KiB

} // namespace

class GetRequestMemoryTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        QSKIP("A sanitizer's own memory counts, too.");
#endif
    }

    void memoryStaysFlat_data()
    {
        QTest::addColumn<int>("framing");
        QTest::addColumn<qint64>("size");
        QTest::newRow("known length") << int(HttpAnswer::ContentLength) << qint64(500000000);
        QTest::newRow("chunks") << int(HttpAnswer::Chunked) << qint64(100000000);
    }

    void memoryStaysFlat()
    {
        QFETCH(const int, framing);
        QFETCH(const qint64, size);
        HttpServer server;
        HttpAnswer answer = HttpAnswer::generate(size);
        answer.framing = HttpAnswer::Framing(framing);
        server.serve(path, answer);
        download(server);
        QFile file(m_file);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.size(), size);
        constexpr int block = 10 * 1000 * 1000;
        for (qint64 offset = 0; offset < size; offset += block) {
            QVERIFY(file.read(block) == generatedBytes(offset, block));
        }
    }

    void memoryStaysFlatThoughABodyUnpacksToMuch()
    {
        HttpServer server;
        HttpAnswer answer = HttpAnswer::page(gzip(QByteArray(100 * 1000 * 1000, '\0')));
        answer.headers = {{"Content-Encoding", "gzip"}};
        server.serve(path, answer);
        download(server);
        QCOMPARE(QFile(m_file).size(), qint64(100 * 1000 * 1000));
    }

private:
    // In a process of its own, where the server's memory does not count.
    void download(const HttpServer &server)
    {
        QProcess probe;
        probe.start(QStringLiteral(DOWNLOAD_PROBE), {server.url(path).toString(), m_file});
        QVERIFY(probe.waitForFinished(60000));
        QVERIFY2(probe.exitCode() == 0, probe.readAllStandardError().constData());
        bool isNumber = false;
        const int growth = probe.readAllStandardOutput().trimmed().toInt(&isNumber);
        QVERIFY(isNumber && growth > 0);
        QVERIFY2(growth < mostMemory, qPrintable(QStringLiteral("%1 KiB").arg(growth)));
        qInfo("The peak grew by %d KiB.", growth);
    }

    const QTemporaryDir m_folder;
    const QString m_file = m_folder.filePath(QStringLiteral("download"));
};

QTEST_GUILESS_MAIN(GetRequestMemoryTest)

#include "tst_getrequest_memory.moc"
