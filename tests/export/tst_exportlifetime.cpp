#include "imagefx/export/ExportJob.h"
#include "tests/export/ExportBench.h"
#include "tests/network/HttpServer.h"
#include "tests/support/TestMain.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtCore/QTimer>
#include <QtGui/QImage>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

// What the exporter gives its programs to end by themselves, with as much again for this machine.
constexpr int longestGoodbye = 4000; // ms
// Less than that: who listens need not be waited for.
constexpr int quickGoodbye = 1500; // ms

// As applications listen that tidy up before they end: the handler writes to a pipe, which a copy
// of this process would have, too.
class SigtermListener
{
public:
    SigtermListener()
    {
        if (pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) != 0) {
            qFatal("there is no pipe");
        }
        writeEnd = m_pipe[1];
        m_former = std::signal(SIGTERM, [](int) {
            const ssize_t written = write(writeEnd, "x", 1);
            Q_UNUSED(written)
        });
    }
    ~SigtermListener()
    {
        std::signal(SIGTERM, m_former);
        close(m_pipe[0]);
        close(m_pipe[1]);
    }

    bool wasCalled() const
    {
        char byte = 0;
        return read(m_pipe[0], &byte, 1) == 1;
    }

private:
    Q_DISABLE_COPY(SigtermListener)

    static int writeEnd;

    int m_pipe[2]{};
    void (*m_former)(int);
};

int SigtermListener::writeEnd = -1;

} // namespace

// An exporter, or its application, that goes in the middle of work.
class ExportLifetimeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anExporterThatIsDestroyedLeavesNothing_data()
    {
        QTest::addColumn<QByteArray>("instructions");
        QTest::addColumn<int>("longest");
        QTest::newRow("waiting") << QByteArray() << quickGoodbye;
        QTest::newRow("deaf to SIGTERM") << QByteArray("deaf\n") << longestGoodbye;
        QTest::newRow("talking") << QByteArray("say a word\nsay another\n") << quickGoodbye;
    }

    void anExporterThatIsDestroyedLeavesNothing()
    {
        QFETCH(const QByteArray, instructions);
        QFETCH(const int, longest);
        ExportBench bench;
        const MessageLog log(true);
        for (int i = 0; i < 10; ++i) {
            bench.start(QStringLiteral("%1.png").arg(i),
                        instructions + "ready\n" + bench.untilOpen("never"));
        }
        QVERIFY(bench.waitForNotes("ready", slotCount));
        QCOMPARE(bench.alive(), slotCount);
        QVERIFY(bench.temporaryFiles().size() > slotCount);

        QElapsedTimer clock;
        clock.start();
        bench.deleteExporter();
        QVERIFY2(clock.elapsed() < longest, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(bench.alive(), 0);
        QCOMPARE(bench.temporaryFiles(), QStringList());
        QCOMPARE(bench.targets(), QStringList());
        QTest::qWait(aWhile);
        QCOMPARE(bench.noted("start").size(), slotCount);
        QCOMPARE(bench.reports().size(), 0);
        QCOMPARE(log.count(), 0);
    }

    // A new process is a copy of the application at first, with its handlers of signals.
    void anApplicationThatListensToSigtermIsNotToldToEnd()
    {
        constexpr int manyTimes = 20;
        const SigtermListener listener;
        for (int i = 0; i < manyTimes; ++i) {
            ExportBench bench;
            for (int k = 0; k < slotCount; ++k) {
                bench.start("a.png", bench.untilOpen("never"));
            }
            QVERIFY(QMetaObject::invokeMethod(bench.exporter(), "processQueue"));
            bench.deleteExporter();
            QCOMPARE(bench.alive(), 0);
        }
        QVERIFY(!listener.wasCalled());
    }

    void anExporterThatIsDestroyedBeforeAnyTickLeavesNothing()
    {
        ExportBench bench;
        for (int i = 0; i < 10; ++i) {
            bench.start("a.png");
        }
        bench.deleteExporter();
        QTest::qWait(aWhile);
        QCOMPARE(bench.noted("start"), QStringList());
        QCOMPARE(bench.temporaryFiles(), QStringList());
    }

    // All have ended, none is reported yet.
    void anExporterThatIsDestroyedBeforeItReportsLeavesNothing()
    {
        ExportBench bench;
        for (int i = 0; i < slotCount; ++i) {
            bench.start("a.png", bench.untilOpen("gate"));
        }
        QVERIFY(bench.waitForNotes("start", slotCount));
        bench.timer()->stop();
        bench.open("gate");
        QVERIFY(QTest::qWaitFor([&] { return bench.running() == 0; }, patience));
        bench.deleteExporter();
        QCOMPARE(bench.reports().size(), 0);
        QCOMPARE(bench.temporaryFiles(), QStringList());
    }

    // The real tool at every stage of its work: a target is whole or not there, and nothing else
    // is.
    void theToolsTargetsAreWholeOrMissing()
    {
        QImage picture(400, 300, QImage::Format_RGB32);
        picture.fill(Qt::darkCyan);
        for (int delay = 105; delay <= 345; delay += 60) {
            ExportBench bench(ExportBench::Maker::Cpp, ExportBench::tool);
            QVERIFY(picture.save(bench.path("source.png")));
            bench.exporter()->setSource(bench.url("source.png"));
            for (int i = 0; i < slotCount; ++i) {
                bench.exporter()->exportToFile(bench.target(QStringLiteral("%1.png").arg(i)));
            }
            QTest::qWait(delay);
            bench.deleteExporter();
            QCOMPARE(bench.temporaryFiles(), QStringList());
            for (const QString &name : bench.targets()) {
                QVERIFY2(name.size() == 5 && name.endsWith(".png"), qPrintable(name));
                QCOMPARE(QImage(bench.target(name).toLocalFile()).size(), picture.size());
            }
        }
    }

    void anApplicationThatQuitsLeavesNothing_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<bool>("deaf");
        QTest::newRow("exporter first") << "exporter-first" << false;
        QTest::newRow("engine first") << "engine-first" << false;
        QTest::newRow("with the application") << "with-the-application" << false;
        QTest::newRow("after main") << "after-main" << false;
        QTest::newRow("after main, deaf to SIGTERM") << "after-main" << true;
        QTest::newRow("never") << "never" << false;
    }

    void anApplicationThatQuitsLeavesNothing()
    {
        QFETCH(const QString, mode);
        QFETCH(const bool, deaf);
        ExportBench bench;
        HttpServer server;
        server.serve("/stalled", HttpAnswer::broken("half of it", HttpAnswer::Stall, 4));
        const QUrl local =
            bench.write("local", (deaf ? "deaf\nready\n" : "ready\n") + bench.untilOpen("gate"));
        QProcess application;
        application.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        application.start(QCoreApplication::applicationDirPath() + "/korvel_export_and_quit",
                          {mode, bench.target("a.png").toLocalFile(), local.toLocalFile(),
                           server.url("/stalled").toString()});
        QVERIFY(bench.waitForNotes("ready", 3));
        QVERIFY(QTest::qWaitFor([&] { return server.requestCount("/stalled") == 1; }, patience));
        QElapsedTimer clock;
        clock.start();
        application.write("quit\n");
        QVERIFY(application.waitForFinished(patience));
        QVERIFY2(clock.elapsed() < longestGoodbye, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(application.exitStatus(), QProcess::NormalExit);
        QCOMPARE(application.exitCode(), 0);

        // Of an exporter that is never destroyed the programs are left, to end as they will.
        QCOMPARE(bench.alive(), mode == QLatin1String("never") ? 3 : 0);
        bench.open("gate");
        QVERIFY(QTest::qWaitFor([&] { return bench.alive() == 0; }, patience));
        bench.deleteExporter();
        if (mode != QLatin1String("never")) {
            QCOMPARE(bench.temporaryFiles(), QStringList());
        }
        QCOMPARE(bench.targets(), QStringList());
        QCOMPARE(server.requestCount("/stalled"), 1);
    }
};

KORVEL_TEST_MAIN(ExportLifetimeTest)

#include "tst_exportlifetime.moc"
