#include "imagefx/effects/HSVImageEffect.h"
#include "tests/export/ExportBench.h"
#include "tests/support/TestMain.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtCore/QTimer>
#include <QtQml/QQmlListReference>
#include <QtTest/QSignalSpy>

#include <algorithm>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr int tick = 100; // ms
// Qt lets such a timer come a twentieth too early.
constexpr int earliestTick = 95;
constexpr int manyExports = 200;

QString numbered(int number)
{
    return QStringLiteral("%1.png").arg(number, 3, 10, QLatin1Char('0'));
}

QStringList allNumbered(int count)
{
    QStringList names;
    for (int i = 0; i < count; ++i) {
        names.append(numbered(i));
    }
    return names;
}

bool wasStarted(const ExportBench &bench)
{
    return bench.exporter()->findChild<QProcess *>() != nullptr;
}

int openFiles()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System | QDir::Files).size();
}

// Every moment at which one more or one less program runs.
struct Change {
    qint64 time;
    int step;
};

int mostAtOnce(const ExportBench &bench)
{
    QVector<Change> changes;
    for (const StandinNote &note : bench.notes(QStringLiteral("start"))) {
        changes.append({note.time, 1});
    }
    for (const StandinNote &note : bench.notes(QStringLiteral("end"))) {
        changes.append({note.time, -1});
    }
    std::sort(changes.begin(), changes.end(),
              [](const Change &a, const Change &b) { return a.time < b.time; });
    int most = 0;
    int now = 0;
    for (const Change &change : qAsConst(changes)) {
        now += change.step;
        most = std::max(most, now);
    }
    return most;
}

// The greatest distance of an entry from its place in the sorted list.
int mostDisplaced(const QStringList &names)
{
    QStringList sorted = names;
    sorted.sort();
    int most = 0;
    for (int i = 0; i < names.size(); ++i) {
        most = std::max(most, std::abs(sorted.indexOf(names.at(i)) - i));
    }
    return most;
}

} // namespace

// What waits, what runs, and what is reported when.
class ExportQueueTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingStartsBeforeTheFirstTick()
    {
        ExportBench bench;
        QElapsedTimer clock;
        clock.start();
        bench.start(numbered(0));
        QVERIFY(!wasStarted(bench));
        QVERIFY(bench.timer()->isActive());
        QCOMPARE(bench.timer()->interval(), tick);
        QVERIFY(!bench.timer()->isSingleShot());
        QVERIFY(QTest::qWaitFor([&] { return wasStarted(bench); }, patience));
        QVERIFY2(clock.elapsed() >= earliestTick, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(bench.waitForReports(1));
    }

    // A second request does not put off the first.
    void theTimerRunsOnWhenMoreIsAsked()
    {
        ExportBench bench;
        bench.start(numbered(0));
        QTest::qWait(tick / 3);
        const int remaining = bench.timer()->remainingTime();
        bench.start(numbered(1));
        QVERIFY(bench.timer()->remainingTime() <= remaining);
        QVERIFY(bench.waitForReports(2));
    }

    void sixCallsStartFourAndTheFifthWhenAPlaceIsFree()
    {
        ExportBench bench;
        for (int i = 0; i < 6; ++i) {
            bench.start(numbered(i), bench.untilOpen(numbered(i)));
        }
        QVERIFY(bench.waitForNotes("start", slotCount));
        QTest::qWait(aWhile);
        QCOMPARE(bench.running(), slotCount);
        QStringList first = bench.noted("start");
        first.sort();
        QCOMPARE(first, allNumbered(slotCount));

        // The tick that reports the third is the one that starts the fifth.
        int runningAtReport = 0;
        int runningAfterTick = 0;
        QVector<int> runningAtTicks;
        connect(bench.timer(), &QTimer::timeout, this,
                [&] { runningAtTicks.append(bench.running()); });
        connect(bench.exporter(), &ImageEffectExporter::exportFinished, this, [&] {
            runningAtReport = bench.running();
            QTimer::singleShot(0, this, [&] { runningAfterTick = bench.running(); });
        });
        bench.open(numbered(2));
        QVERIFY(QTest::qWaitFor([&] { return runningAfterTick > 0; }, patience));
        QCOMPARE(bench.reported(), QStringList{numbered(2)});
        QCOMPARE(runningAtReport, slotCount - 1);
        QCOMPARE(runningAfterTick, slotCount);
        QVERIFY(bench.waitForNotes("start", 5));
        QCOMPARE(bench.noted("start").last(), numbered(4));

        QTest::qWait(aWhile);
        QCOMPARE(bench.noted("start").size(), 5);
        for (int i = 0; i < 6; ++i) {
            bench.open(numbered(i));
        }
        QVERIFY(bench.waitForReports(6));
        QCOMPARE(*std::max_element(runningAtTicks.begin(), runningAtTicks.end()), slotCount);
    }

    void whatWaitsComesInTheOrderOfTheCalls()
    {
        ExportBench bench;
        for (int i = 0; i < slotCount - 1; ++i) {
            bench.start(QStringLiteral("blocker%1.png").arg(i), bench.untilOpen("blockers"));
        }
        const int count = 8;
        for (int i = 0; i < count; ++i) {
            bench.start(numbered(i));
        }
        QVERIFY(bench.waitForReports(count));
        QCOMPARE(bench.noted("end"), allNumbered(count));
        QCOMPARE(bench.reported(), allNumbered(count));
        bench.open("blockers");
        QVERIFY(bench.waitForReports(count + slotCount - 1));
    }

    void placesAreReportedInTheirOrder()
    {
        ExportBench bench;
        for (int i = 0; i < slotCount; ++i) {
            bench.start(numbered(i), bench.untilOpen(numbered(i)));
        }
        QVERIFY(bench.waitForNotes("start", slotCount));
        // All end between two ticks, the last one first.
        bench.timer()->stop();
        for (int i = slotCount - 1; i >= 0; --i) {
            bench.open(numbered(i));
        }
        QVERIFY(QTest::qWaitFor([&] { return bench.running() == 0; }, patience));
        QCOMPARE(bench.reports().size(), 0);
        bench.timer()->start();
        QVERIFY(bench.waitForReports(slotCount));
        QCOMPARE(bench.reported(), allNumbered(slotCount));
    }

    void twoHundredExportsAreReportedOnceEach()
    {
        ExportBench bench;
        for (int i = 0; i < manyExports; ++i) {
            bench.start(numbered(i), i % 10 == 3 ? "sleep 10\nexit 1\n" : "sleep 20\n");
        }
        QVERIFY(bench.waitForReports(manyExports));
        QTest::qWait(aWhile);

        QStringList reported = bench.reported();
        QVERIFY(mostDisplaced(reported) < slotCount);
        reported.sort();
        QCOMPARE(reported, allNumbered(manyExports));
        for (const Report &report : bench.reports()) {
            const int number = report.name().leftRef(3).toInt();
            QCOMPARE(report.finished, number % 10 != 3);
        }
        const QStringList started = bench.noted("start");
        QCOMPARE(started.size(), manyExports);
        QVERIFY(mostDisplaced(started) < slotCount);
        QCOMPARE(mostAtOnce(bench), slotCount);

        QVERIFY(!bench.timer()->isActive());
        QCOMPARE(bench.alive(), 0);
        QCOMPARE(bench.temporaryFiles().size(), 1);
        QCOMPARE(bench.exporter()->children().size(), 1);
        bench.deleteExporter();
        QCOMPARE(bench.temporaryFiles(), QStringList());
    }

    // Or else a long queue would leave the application none.
    void whatWaitsKeepsNoFileOpen()
    {
        ExportBench bench;
        const int before = openFiles();
        for (int i = 0; i < manyExports; ++i) {
            bench.start(numbered(i));
        }
        QCOMPARE(openFiles(), before);
        QCOMPARE(bench.temporaryFiles().size(), 1 + manyExports);
        bench.deleteExporter();
        QCOMPARE(bench.temporaryFiles(), QStringList());
    }

    void theTimerRestsWhenNothingIsLeftAndStartsAgain()
    {
        ExportBench bench;
        QVERIFY(!bench.timer()->isActive());
        for (int round = 1; round <= 2; ++round) {
            bench.start(numbered(round), bench.untilOpen(numbered(round)));
            QVERIFY(bench.timer()->isActive());
            QVERIFY(bench.waitForNotes("start", round));
            QTest::qWait(aWhile);
            QVERIFY(bench.timer()->isActive());
            bench.open(numbered(round));
            QVERIFY(bench.waitForReports(round));
            QVERIFY(QTest::qWaitFor([&] { return !bench.timer()->isActive(); }, 3 * tick));
        }
    }

    void everyExporterHasPlacesOfItsOwn()
    {
        ExportBench bench;
        ImageEffectExporter other;
        QSignalSpy otherFinished(&other, &ImageEffectExporter::exportFinished);
        for (int i = 0; i < slotCount; ++i) {
            bench.start(numbered(i), bench.untilOpen("gate"));
        }
        QVERIFY(bench.waitForNotes("start", slotCount));
        other.setSource(bench.write("other", QByteArray()));
        other.exportToFile(bench.target("other.png"));
        QVERIFY(otherFinished.wait(patience));
        QCOMPARE(bench.reports().size(), 0);
        bench.open("gate");
        QVERIFY(bench.waitForReports(slotCount));
    }

    void aListenerExportsAgain()
    {
        ExportBench bench;
        connect(bench.exporter(), &ImageEffectExporter::exportFinished, this, [&] {
            if (bench.reports().size() < 6) {
                bench.start(numbered(bench.reports().size()));
            }
        });
        bench.start(numbered(0));
        QVERIFY(bench.waitForReports(6));
        QTest::qWait(aWhile);
        QCOMPARE(bench.reported(), allNumbered(6));
        QVERIFY(!bench.timer()->isActive());
    }

    // Such as one that shows a dialog: what else has ended is reported after it.
    void aListenerRunsAnEventLoop()
    {
        ExportBench bench;
        int depth = 0;
        int deepest = 0;
        connect(bench.exporter(), &ImageEffectExporter::exportFinished, this, [&] {
            deepest = std::max(deepest, ++depth);
            if (bench.reports().size() == 1) {
                bench.start(numbered(6));
                QTest::qWait(aWhile);
            }
            --depth;
        });
        for (int i = 0; i < 6; ++i) {
            bench.start(numbered(i));
        }
        QVERIFY(bench.waitForReports(7));
        QTest::qWait(aWhile);
        QStringList reported = bench.reported();
        reported.sort();
        QCOMPARE(reported, allNumbered(7));
        QCOMPARE(deepest, 1);
        QVERIFY(!bench.timer()->isActive());
        QCOMPARE(bench.temporaryFiles().size(), 1);
    }

    void aListenerDeletesTheExporter_data()
    {
        QTest::addColumn<QByteArray>("instructions");
        QTest::newRow("finished") << QByteArray();
        QTest::newRow("failed") << QByteArray("exit 1\n");
    }

    void aListenerDeletesTheExporter()
    {
        QFETCH(const QByteArray, instructions);
        ExportBench bench;
        const auto drop = [&] { delete bench.releaseExporter(); };
        connect(bench.exporter(), &ImageEffectExporter::exportFinished, this, drop);
        connect(bench.exporter(), &ImageEffectExporter::exportFailed, this, drop);
        bench.start(numbered(0), instructions);
        for (int i = 1; i < 7; ++i) {
            bench.start(numbered(i), bench.untilOpen("never"));
        }
        QVERIFY(bench.waitForReports(1));
        QCOMPARE(bench.exporter(), nullptr);
        QTest::qWait(aWhile);
        QCOMPARE(bench.reports().size(), 1);
        QCOMPARE(bench.alive(), 0);
        QCOMPARE(bench.temporaryFiles(), QStringList());
    }

    void aListenerDeletesTheExporterInAnEventLoopOfItsOwn()
    {
        ExportBench bench;
        connect(bench.exporter(), &ImageEffectExporter::exportFinished, this, [&] {
            QTimer::singleShot(0, this, [&] { bench.deleteExporter(); });
            QTest::qWait(aWhile);
        });
        bench.start(numbered(0));
        bench.start(numbered(1), bench.untilOpen("never"));
        QVERIFY(bench.waitForReports(1));
        QTest::qWait(aWhile);
        QCOMPARE(bench.exporter(), nullptr);
        QCOMPARE(bench.alive(), 0);
        QCOMPARE(bench.temporaryFiles(), QStringList());
    }
};

KORVEL_TEST_MAIN(ExportQueueTest)

#include "tst_exportqueue.moc"
