#include "FolderWorkshop.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>
#include <QtCore/QRandomGenerator>
#include <QtTest/QtTest>

#include <csignal>

namespace
{

constexpr int pictures = 24;
constexpr int timeLimit = 60000;

// A run that is under way.
class Running
{
public:
    explicit Running(const QStringList &arguments) : Running(toolPath(), arguments) {}
    Running(const QString &program, const QStringList &arguments)
    {
        m_process.start(program, arguments);
        if (!m_process.waitForStarted(timeLimit)) {
            qFatal("%s does not start", qPrintable(program));
        }
    }

    void send(int signal) { kill(pid_t(m_process.processId()), signal); }
    // Until so many events of this kind came; false when the run ended before.
    bool waitFor(const char *event, int count = 1)
    {
        const QByteArray mark = QByteArray("\"event\":\"") + event + '"';
        while (m_output.count(mark) < count && m_process.waitForReadyRead(timeLimit)) {
            m_output += m_process.readAllStandardOutput();
        }
        return m_output.count(mark) >= count;
    }
    ToolRun finish()
    {
        ToolRun run;
        if (m_process.waitForFinished(timeLimit) &&
            m_process.exitStatus() == QProcess::NormalExit) {
            run.exitCode = m_process.exitCode();
        }
        run.output = m_output + m_process.readAllStandardOutput();
        run.errors = m_process.readAllStandardError();
        return run;
    }

private:
    QProcess m_process;
    QByteArray m_output;
};

QStringList folderArguments(const QStringList &more = {})
{
    return FolderWorkshop::arguments(QStringList{QStringLiteral("--progress=json")} + more +
                                     QStringList{QStringLiteral("photos/")});
}

} // namespace

class tst_exporter_interrupt : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_workshop = std::make_unique<FolderWorkshop>(); }
    void cleanup() { m_workshop.reset(); }

    void aSignalLeavesOnlyCompleteTargets_data();
    void aSignalLeavesOnlyCompleteTargets();
    void aSignalEndsTheRunWithinOnePicture();
    void aSignalLetsThePicturesAtHandBeFinished();
    void aSecondSignalEndsAtOnce();
    void anIgnoredSignalStaysIgnored();

private:
    void makePictures(const QSize &size) const;
    void writeSlowStack(int effects) const;

    std::unique_ptr<FolderWorkshop> m_workshop;
};

void tst_exporter_interrupt::makePictures(const QSize &size) const
{
    for (int i = 0; i < pictures; ++i) {
        m_workshop->picture(QStringLiteral("photos/%1/%2.jpg").arg(i % 3).arg(i), size);
    }
}

void tst_exporter_interrupt::writeSlowStack(int effects) const
{
    QJsonArray stack;
    for (int i = 0; i < effects; ++i) {
        stack.append(effect(QStringLiteral("Blur"), {{QStringLiteral("radius"), 60}}));
    }
    m_workshop->write(QStringLiteral("look.json"), QJsonDocument(stack).toJson());
}

void tst_exporter_interrupt::aSignalLeavesOnlyCompleteTargets_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<int>("code");
    QTest::newRow("Ctrl-C") << SIGINT << 130;
    QTest::newRow("termination") << SIGTERM << 143;
    QTest::newRow("hang-up") << SIGHUP << 129;
}

void tst_exporter_interrupt::aSignalLeavesOnlyCompleteTargets()
{
    QFETCH(int, signal);
    QFETCH(int, code);
    constexpr int rounds = 7;
    QRandomGenerator random{quint32(signal)};
    makePictures(QSize(320, 240));
    writeSlowStack(8);
    QElapsedTimer time;
    time.start();
    QCOMPARE(runTool({QStringLiteral("--effects=look.json"), QStringLiteral("--target-dir=whole"),
                      QStringLiteral("photos/")})
                 .exitCode,
             0);
    const QStringList all = FolderWorkshop::filesBelow(QStringLiteral("whole"));
    QCOMPARE(all.size(), pictures);
    const auto onePicture = int(time.elapsed() / pictures) + 1;
    int interrupted = 0;
    for (int round = 0; round < rounds; ++round) {
        QProcess::execute(QStringLiteral("rm"), {QStringLiteral("-rf"), QStringLiteral("out")});
        Running running(folderArguments());
        QVERIFY(running.waitFor("start"));
        running.waitFor("done", random.bounded(pictures));
        QTest::qSleep(1 + random.bounded(onePicture));
        running.send(signal);
        const ToolRun run = running.finish();
        const QStringList targets = FolderWorkshop::targets();
        for (const QString &target : targets) {
            QVERIFY2(all.contains(target), qPrintable(target));
            QCOMPARE(m_workshop->read(QStringLiteral("out/") + target),
                     m_workshop->read(QStringLiteral("whole/") + target));
        }
        // It may have been done by then.
        if (run.exitCode == 0) {
            QCOMPARE(targets.size(), pictures);
            continue;
        }
        ++interrupted;
        QCOMPARE(run.exitCode, code);
        QCOMPARE(lastLine(run.errors),
                 QStringLiteral("korvel-image-exporter: interrupted: %1 of %2 pictures exported; "
                                "--skip-existing continues")
                     .arg(targets.size())
                     .arg(pictures)
                     .toUtf8());
        QCOMPARE(events(run.output, "done").size(), targets.size());
        const QJsonObject end = events(run.output, "end").value(0);
        QCOMPARE(end.value(QLatin1String("interrupted")).toBool(), true);
        QCOMPARE(end.value(QLatin1String("left")).toInt(), pictures - targets.size());
        const ToolRun rest = runTool(folderArguments({QStringLiteral("--skip-existing")}));
        QCOMPARE(rest.exitCode, 0);
        QCOMPARE(events(rest.output, "skipped").size(), targets.size());
        QCOMPARE(FolderWorkshop::targets(), all);
    }
    QVERIFY(interrupted > 0);
}

// While GL draws the second picture, which takes long, others wait that are loaded already.
void tst_exporter_interrupt::aSignalEndsTheRunWithinOnePicture()
{
    makePictures(QSize(800, 600));
    writeSlowStack(12);
    Running running(
        folderArguments({QStringLiteral("--threads=3"), QStringLiteral("--engine=gl")}));
    QVERIFY(running.waitFor("done"));
    running.send(SIGINT);
    const ToolRun run = running.finish();
    QCOMPARE(run.exitCode, 130);
    QCOMPARE(events(run.output, "done").size(), 2);
    QCOMPARE(FolderWorkshop::targets().size(), 2);
}

// The processor has a picture on each core.
void tst_exporter_interrupt::aSignalLetsThePicturesAtHandBeFinished()
{
    constexpr int threads = 2;
    makePictures(QSize(800, 600));
    writeSlowStack(60);
    Running running(
        folderArguments({QStringLiteral("--threads=2"), QStringLiteral("--engine=cpu")}));
    QVERIFY(running.waitFor("done"));
    running.send(SIGINT);
    const ToolRun run = running.finish();
    QCOMPARE(run.exitCode, 130);
    const int done = events(run.output, "done").size();
    QVERIFY2(done >= threads && done <= 2 * threads, run.output.constData());
    QCOMPARE(FolderWorkshop::targets().size(), done);
}

void tst_exporter_interrupt::aSecondSignalEndsAtOnce()
{
    m_workshop->picture(QStringLiteral("photos/large.jpg"), QSize(3000, 2000));
    writeSlowStack(60);
    Running running(folderArguments());
    QVERIFY(running.waitFor("start"));
    // Until it draws.
    QTest::qSleep(1000);
    running.send(SIGINT);
    QTest::qSleep(300);
    running.send(SIGINT);
    const ToolRun run = running.finish();
    QCOMPARE(run.exitCode, 130);
    // One signal would have had the picture finished, and told so.
    QCOMPARE(events(run.output, "end").size(), 0);
    QCOMPARE(FolderWorkshop::targets(), QStringList());
}

void tst_exporter_interrupt::anIgnoredSignalStaysIgnored()
{
    makePictures(QSize(60, 40));
    QStringList shell{QStringLiteral("-c"), QStringLiteral("trap '' INT; exec \"$0\" \"$@\""),
                      toolPath()};
    Running running(QStringLiteral("bash"), shell + folderArguments());
    QVERIFY(running.waitFor("start"));
    running.send(SIGINT);
    running.send(SIGINT);
    QCOMPARE(running.finish().exitCode, 0);
    QCOMPARE(FolderWorkshop::targets().size(), pictures);
}

QTEST_GUILESS_MAIN(tst_exporter_interrupt)

#include "tst_exporter_interrupt.moc"
