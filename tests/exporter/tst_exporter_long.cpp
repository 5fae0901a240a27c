#include "FolderWorkshop.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QRandomGenerator>
#include <QtTest/QtTest>

#include <chrono>
#include <thread>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

struct MeasuredRun {
    int exitCode = -1;
    long peakKibibytes = 0;
};

MeasuredRun measure(const QStringList &arguments)
{
    std::vector<QByteArray> texts{toolPath().toLocal8Bit()};
    for (const QString &argument : arguments) {
        texts.push_back(argument.toLocal8Bit());
    }
    std::vector<char *> argv;
    argv.reserve(texts.size() + 1);
    for (QByteArray &text : texts) {
        argv.push_back(text.data());
    }
    argv.push_back(nullptr);
    const pid_t process = fork();
    if (process == 0) {
        execv(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    rusage usage = {};
    wait4(process, &status, 0, &usage);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, usage.ru_maxrss};
}

} // namespace

// Runs of minutes, which ./test --long starts.
class tst_exporter_long : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_workshop = std::make_unique<FolderWorkshop>(); }
    void cleanup() { m_workshop.reset(); }

    void memoryIsFlatOverTenThousandFiles();
    void twoHundredKillsLeaveNoHalfWrittenTarget();

private:
    std::unique_ptr<FolderWorkshop> m_workshop;
};

void tst_exporter_long::memoryIsFlatOverTenThousandFiles()
{
    // The names of 10,000 pictures and targets, and what an allocator keeps for itself.
    constexpr long allowance = 12L * 1024;
    constexpr int many = 10000;
    constexpr int few = 500;
    m_workshop->picture(QStringLiteral("one.jpg"), QSize(64, 48));
    m_workshop->makeFolder(QStringLiteral("few"));
    for (int i = 0; i < many; ++i) {
        const QString folder = QStringLiteral("many/%1").arg(i % 10);
        m_workshop->makeFolder(folder);
        QVERIFY(
            QFile::copy(QStringLiteral("one.jpg"), QStringLiteral("%1/%2.jpg").arg(folder).arg(i)));
        if (i < few) {
            QVERIFY(QFile::copy(QStringLiteral("one.jpg"), QStringLiteral("few/%1.jpg").arg(i)));
        }
    }
    const MeasuredRun small = measure(FolderWorkshop::arguments({QStringLiteral("few/")}));
    QCOMPARE(small.exitCode, 0);
    QElapsedTimer clock;
    clock.start();
    const MeasuredRun large = measure(FolderWorkshop::arguments({QStringLiteral("many/")}));
    qInfo("peak of %d files: %ld KiB, of %d files: %ld KiB in %.1f s", few, small.peakKibibytes,
          many, large.peakKibibytes, double(clock.elapsed()) / 1000.0);
    QCOMPARE(large.exitCode, 0);
    QCOMPARE(FolderWorkshop::targets().size(), many + few);
    QVERIFY(large.peakKibibytes < small.peakKibibytes + allowance);
}

void tst_exporter_long::twoHundredKillsLeaveNoHalfWrittenTarget()
{
    constexpr int kills = 200;
    constexpr int pictures = 40;
    for (int i = 0; i < pictures; ++i) {
        m_workshop->picture(QStringLiteral("photos/%1.jpg").arg(i), QSize(200, 150));
    }
    const QStringList whole{QStringLiteral("--effects=look.json"),
                            QStringLiteral("--target-dir=whole"), QStringLiteral("photos/")};
    runTool(whole);
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(runTool(whole).exitCode, 0);
    const auto duration = int(clock.nsecsElapsed() / 1000);
    int killed = 0;
    int complete = 0;
    int leftovers = 0;
    int round = 0;
    for (; killed < kills; ++round) {
        QVERIFY(round < 4 * kills);
        // Half of the rounds replace targets that exist.
        if (round % 2 == 0) {
            QProcess::execute(QStringLiteral("rm"), {QStringLiteral("-rf"), QStringLiteral("out")});
        }
        QProcess process;
        process.start(toolPath(), FolderWorkshop::arguments({QStringLiteral("photos/")}));
        QVERIFY(process.waitForStarted());
        std::this_thread::sleep_for(
            std::chrono::microseconds(QRandomGenerator::global()->bounded(duration)));
        process.kill();
        QVERIFY(process.waitForFinished());
        killed += process.exitStatus() == QProcess::CrashExit ? 1 : 0;
        for (const QString &target : FolderWorkshop::targets()) {
            if (!target.endsWith(QLatin1String(".jpg"))) {
                ++leftovers;
                QVERIFY(QFile::remove(QStringLiteral("out/") + target));
                continue;
            }
            ++complete;
            QCOMPARE(m_workshop->read(QStringLiteral("out/") + target),
                     m_workshop->read(QStringLiteral("whole/") + target));
        }
    }
    qInfo("%d runs killed, %d were faster; %d targets, all complete; %d temporary files left",
          killed, round - killed, complete, leftovers);
    QVERIFY(complete > 0);
}

QTEST_GUILESS_MAIN(tst_exporter_long)

#include "tst_exporter_long.moc"
