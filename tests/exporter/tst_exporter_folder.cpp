#include "FolderWorkshop.h"
#include "ShellRun.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QProcess>
#include <QtTest/QtTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

enum Code {
    sourceMissing = 3,
    sourceUnreadable = 4,
    sourceNotAPicture = 5,
    effectsUnreadable = 6,
    effectsNotExact = 8,
    targetFolder = 10,
    targetWrite = 11,
    noOpenGl = 12,
    pictureTooLarge = 13,
    someFailed = 17,
    nothingToDo = 19,
};

QStringList list(const char *words)
{
    return QString::fromLatin1(words).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

QString text(const QJsonObject &event, const char *key)
{
    return event.value(QLatin1String(key)).toString();
}

const QString json = QStringLiteral("--progress=json");
const QByteArray older("an older target");

// The tool with an end of a pipe as its standard output.
class PipedTool : public QProcess
{
public:
    explicit PipedTool(int output) : m_output(output) {}

protected:
    void setupChildProcess() override { dup2(m_output, STDOUT_FILENO); }

private:
    const int m_output;
};

} // namespace

class tst_exporter_folder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_workshop = std::make_unique<FolderWorkshop>(); }
    void cleanup() { m_workshop.reset(); }

    void oneBadFileFailsAlone();
    void badArgumentsFailAlone_data();
    void badArgumentsFailAlone();
    void aLinkThatLeadsNowhereFailsAlone();
    void anUnreadableFolderFailsAlone();
    void aTooLargePictureFailsAlone();
    void aTargetFolderThatCannotBeMadeFailsItsPictures();
    void noPictureAtAll();
    void mistakesInTheStackEndTheRunBeforeAnyWork();
    void openGlIsNeededOnlyToDraw();
    void warningsAreTold();

    void existingTargetsAreReplaced();
    void existingTargetsAreSkippedOnDemand();
    void successIsSilent();
    void eventsTellTheRun();
    void aReaderThatGoesEndsTheRun();
    void aFullOutputEndsTheRun();
    void aLostLastEventIsAFailure();
    void aReaderThatGoesDuringTheLastPictureIsNoSuccess();
    void aSlowReaderIsAwaited();
    void theNumberOfThreadsChangesNothing_data();
    void theNumberOfThreadsChangesNothing();

private:
    std::unique_ptr<FolderWorkshop> m_workshop;
};

void tst_exporter_folder::oneBadFileFailsAlone()
{
    for (int i = 0; i < 37; ++i) {
        m_workshop->picture(QStringLiteral("photos/%1.png").arg(i, 2, 10, QLatin1Char('0')));
    }
    m_workshop->write(QStringLiteral("photos/005.png"), QByteArray());
    m_workshop->write(QStringLiteral("photos/text.jpg"), "not a picture at all");
    const QByteArray whole = m_workshop->read(QStringLiteral("photos/07.png"));
    m_workshop->write(QStringLiteral("photos/short.png"), whole.left(whole.size() / 2));
    const ToolRun run = FolderWorkshop::run(list("photos/"));
    QCOMPARE(run.exitCode, int(someFailed));
    QCOMPARE(FolderWorkshop::targets().size(), 37);
    for (const char *name : {"photos/005.png", "photos/text.jpg", "photos/short.png"}) {
        QCOMPARE(run.errors.count(name), 1);
    }
    QCOMPARE(run.errors.count('\n'), 4);
    QCOMPARE(lastLine(run.errors),
             QByteArray("korvel-image-exporter: 37 of 40 pictures exported, 3 failed"));
}

void tst_exporter_folder::badArgumentsFailAlone_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<int>("code");
    QTest::newRow("missing") << QStringLiteral("photos/none.png") << int(sourceMissing);
    QTest::newRow("missing folder") << QStringLiteral("none/") << int(sourceMissing);
    QTest::newRow("not a picture") << QStringLiteral("notes.jpg") << int(sourceNotAPicture);
    QTest::newRow("not a folder") << QStringLiteral("photos/a.png/") << int(sourceUnreadable);
    QTest::newRow("pipe") << QStringLiteral("pipe.png") << int(sourceUnreadable);
}

void tst_exporter_folder::badArgumentsFailAlone()
{
    QFETCH(QString, argument);
    QFETCH(int, code);
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->write(QStringLiteral("notes.jpg"), "not a picture");
    QCOMPARE(mkfifo("pipe.png", 0600), 0);
    const ToolRun run = FolderWorkshop::run({json, argument, QStringLiteral("photos/a.png")});
    QCOMPARE(run.exitCode, int(someFailed));
    QCOMPARE(FolderWorkshop::targets(), list("a.png"));
    const QVector<QJsonObject> failed = events(run.output, "failed");
    QCOMPARE(failed.size(), 1);
    QCOMPARE(text(failed.first(), "source"), argument);
    QCOMPARE(failed.first().value(QLatin1String("code")).toInt(), code);
    QVERIFY(text(failed.first(), "reason").contains(argument));
}

void tst_exporter_folder::aLinkThatLeadsNowhereFailsAlone()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->link(QStringLiteral("none.png"), QStringLiteral("photos/b.png"));
    const ToolRun run = FolderWorkshop::run(list("photos/"));
    QCOMPARE(run.exitCode, int(someFailed));
    QVERIFY(run.errors.contains("photos/b.png does not exist"));
    QCOMPARE(FolderWorkshop::targets(), list("a.png"));
}

// Deeper than a path can name, so that it is unreadable for root, too.
void tst_exporter_folder::anUnreadableFolderFailsAlone()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    const std::string name(200, 'd');
    int folder = open("photos", O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < 25; ++i) {
        QCOMPARE(mkdirat(folder, name.c_str(), 0700), 0);
        const int next = openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY);
        close(folder);
        folder = next;
    }
    close(folder);
    const ToolRun run = FolderWorkshop::run({json, QStringLiteral("photos/")});
    QCOMPARE(run.exitCode, int(someFailed));
    const QVector<QJsonObject> failed = events(run.output, "failed");
    QCOMPARE(failed.size(), 1);
    QCOMPARE(failed.first().value(QLatin1String("code")).toInt(), int(sourceUnreadable));
    QCOMPARE(FolderWorkshop::targets(), list("a.png"));
}

void tst_exporter_folder::aTooLargePictureFailsAlone()
{
    m_workshop->picture(QStringLiteral("photos/a.png"), QSize(10, 10));
    m_workshop->picture(QStringLiteral("photos/b.png"), QSize(11, 10));
    const ToolRun run = FolderWorkshop::run(list("--progress=json --max-pixels=100 photos/"));
    QCOMPARE(run.exitCode, int(someFailed));
    QCOMPARE(FolderWorkshop::targets(), list("a.png"));
    QCOMPARE(events(run.output, "failed").value(0).value(QLatin1String("code")).toInt(),
             int(pictureTooLarge));
}

void tst_exporter_folder::aTargetFolderThatCannotBeMadeFailsItsPictures()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->picture(QStringLiteral("photos/sea/b.png"));
    m_workshop->write(QStringLiteral("out/sea"), "a file in the way");
    const ToolRun run = FolderWorkshop::run({json, QStringLiteral("photos/")});
    QCOMPARE(run.exitCode, int(someFailed));
    QCOMPARE(FolderWorkshop::targets(), list("a.png sea"));
    QCOMPARE(events(run.output, "failed").value(0).value(QLatin1String("code")).toInt(),
             int(targetFolder));
}

void tst_exporter_folder::noPictureAtAll()
{
    m_workshop->write(QStringLiteral("photos/notes.txt"), "no picture");
    const ToolRun run = FolderWorkshop::run(list("photos"));
    VERIFY_FAILURE(run, nothingToDo, "photos");
    QVERIFY(!QFileInfo::exists(QStringLiteral("out")));
}

void tst_exporter_folder::mistakesInTheStackEndTheRunBeforeAnyWork()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->write(QStringLiteral("strange.json"), "[{\"effectId\":\"unknown\"}]");
    const ToolRun missing = runTool(list("--effects=none.json --target-dir=out photos"));
    VERIFY_FAILURE(missing, effectsUnreadable, "none.json");
    const ToolRun strict = runTool(list("--effects=strange.json --target-dir=out --strict photos"));
    VERIFY_FAILURE(strict, effectsNotExact, "unknown");
    QVERIFY(!QFileInfo::exists(QStringLiteral("out")));
}

void tst_exporter_folder::openGlIsNeededOnlyToDraw()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->write(QStringLiteral("empty.json"), "[]");
    const ToolRun drawn = FolderWorkshop::run(list("--engine=gl photos/"), withoutGl());
    VERIFY_FAILURE(drawn, noOpenGl, "OpenGL");
    QVERIFY(!QFileInfo::exists(QStringLiteral("out")));
    const ToolRun copied =
        runTool(list("--effects=empty.json --target-dir=out photos/"), withoutGl());
    QVERIFY2(copied.exitCode == 0, copied.errors.constData());
    QCOMPARE(FolderWorkshop::targets(), list("a.png"));
}

void tst_exporter_folder::warningsAreTold()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->write(QStringLiteral("look.json"), "[{\"effectId\":\"unknown\"}]");
    const ToolRun run = FolderWorkshop::run(list("photos/"));
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.wroteOneErrorLine() && run.errors.contains("warning: look.json"),
             run.errors.constData());
}

void tst_exporter_folder::existingTargetsAreReplaced()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->write(QStringLiteral("out/a.png"), older);
    QCOMPARE(FolderWorkshop::run(list("photos/")).exitCode, 0);
    QVERIFY(m_workshop->read(QStringLiteral("out/a.png")) != older);
}

void tst_exporter_folder::existingTargetsAreSkippedOnDemand()
{
    for (const QString &name : list("photos/a.png photos/b.png photos/sea/c.png")) {
        m_workshop->picture(name);
    }
    m_workshop->write(QStringLiteral("photos/d.png"), "a bad file");
    m_workshop->write(QStringLiteral("out/b.png"), older);
    m_workshop->write(QStringLiteral("out/d.png"), older);
    const ToolRun run = FolderWorkshop::run(list("--skip-existing --progress=json photos/"));
    QVERIFY2(run.exitCode == 0, run.errors.constData());
    QCOMPARE(events(run.output, "done").size(), 2);
    const QVector<QJsonObject> skipped = events(run.output, "skipped");
    QCOMPARE(skipped.size(), 2);
    for (const QJsonObject &event : skipped) {
        QVERIFY(list("photos/b.png photos/d.png").contains(text(event, "source")));
        QCOMPARE(m_workshop->read(text(event, "target")), older);
    }
    QCOMPARE(FolderWorkshop::targets(), list("a.png b.png d.png sea/c.png"));
}

void tst_exporter_folder::successIsSilent()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->picture(QStringLiteral("photos/b.png"));
    const ToolRun run = FolderWorkshop::run(list("photos/"));
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.output, QByteArray());
    QCOMPARE(run.errors, QByteArray());
}

void tst_exporter_folder::eventsTellTheRun()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->picture(QStringLiteral("photos/b.png"));
    m_workshop->write(QStringLiteral("photos/c.png"), "a bad file");
    m_workshop->picture(QStringLiteral("photos/d.png"));
    m_workshop->write(QStringLiteral("out/d.png"), older);
    const ToolRun run = FolderWorkshop::run(list("--skip-existing --progress=json photos/"));
    QCOMPARE(run.exitCode, int(someFailed));
    const QVector<QJsonObject> all = events(run.output);
    QCOMPARE(all.size(), 6);
    QCOMPARE(all.first(), QJsonObject({{QStringLiteral("event"), QStringLiteral("start")},
                                       {QStringLiteral("total"), 4}}));
    QStringList done;
    for (const QJsonObject &event : events(run.output, "done")) {
        QCOMPARE(text(event, "target"),
                 text(event, "source").replace(QLatin1String("photos"), QLatin1String("out")));
        const double seconds = event.value(QLatin1String("seconds")).toDouble(-1.0);
        QVERIFY(seconds >= 0.0 && seconds < 60.0);
        QVERIFY(event.value(QLatin1String("warnings")).isArray());
        done.append(text(event, "source"));
    }
    done.sort();
    QCOMPARE(done, list("photos/a.png photos/b.png"));
    const QJsonObject failed = events(run.output, "failed").value(0);
    QCOMPARE(text(failed, "source"), QStringLiteral("photos/c.png"));
    QCOMPARE(text(failed, "target"), QStringLiteral("out/c.png"));
    QCOMPARE(failed.value(QLatin1String("code")).toInt(), int(sourceNotAPicture));
    QVERIFY(run.errors.contains(text(failed, "reason").toUtf8()));
    QJsonObject end = all.last();
    QVERIFY(end.take(QStringLiteral("seconds")).isDouble());
    QCOMPARE(end, QJsonObject({{QStringLiteral("event"), QStringLiteral("end")},
                               {QStringLiteral("total"), 4},
                               {QStringLiteral("done"), 2},
                               {QStringLiteral("failed"), 1},
                               {QStringLiteral("skipped"), 1},
                               {QStringLiteral("left"), 0},
                               {QStringLiteral("interrupted"), false}}));
}

void tst_exporter_folder::aReaderThatGoesEndsTheRun()
{
    for (int i = 0; i < 60; ++i) {
        m_workshop->picture(QStringLiteral("photos/%1.png").arg(i), QSize(200, 200));
    }
    const QString command =
        QStringLiteral("set -o pipefail; '%1' %2 --threads=1 photos/ | head -n 1; exit $?")
            .arg(toolPath(), FolderWorkshop::arguments({json}).join(QLatin1Char(' ')));
    QProcess shell;
    shell.start(QStringLiteral("bash"), {QStringLiteral("-c"), command});
    QVERIFY(shell.waitForFinished(60000));
    QCOMPARE(shell.exitCode(), 141);
    QVERIFY(FolderWorkshop::targets().size() < 60);
    QVERIFY(shell.readAllStandardError().contains("interrupted: "));
}

void tst_exporter_folder::aFullOutputEndsTheRun()
{
    for (int i = 0; i < 60; ++i) {
        m_workshop->picture(QStringLiteral("photos/%1.png").arg(i));
    }
    const ToolRun run =
        runShell("$TOOL --effects=look.json --target-dir=out --progress=json photos/ > /dev/full",
                 QDir::currentPath());
    VERIFY_FAILURE(run, targetWrite, "standard output cannot be written: No space left on device");
    QCOMPARE(FolderWorkshop::targets(), QStringList());
}

void tst_exporter_folder::aLostLastEventIsAFailure()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->write(QStringLiteral("out/a.png"), older);
    // All but a few bytes of the last line find room below the limit.
    const ToolRun run = runShell(R"(
arguments='--effects=look.json --target-dir=out --skip-existing --progress=json photos/'
$TOOL $arguments > whole
head -c $((4096 - $(head -n 2 whole | wc -c) - 3)) /dev/zero > events
ulimit -f 4
$TOOL $arguments >> events
)",
                                 QDir::currentPath());
    VERIFY_FAILURE(run, targetWrite, "standard output cannot be written: File too large");
    QCOMPARE(m_workshop->read(QStringLiteral("events")).size(), 4096);
}

void tst_exporter_folder::aReaderThatGoesDuringTheLastPictureIsNoSuccess()
{
    m_workshop->picture(QStringLiteral("photos/a.png"), QSize(1600, 1200));
    const ToolRun run = runShell("set -o pipefail\n"
                                 "$TOOL --effects=look.json --target-dir=out --progress=json "
                                 "photos/ | head -n 1",
                                 QDir::currentPath());
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, 141);
    QCOMPARE(FolderWorkshop::targets(), list("a.png"));
}

void tst_exporter_folder::aSlowReaderIsAwaited()
{
    constexpr int pictures = 90;
    constexpr int fullAfter = 500;
    for (int i = 0; i < pictures; ++i) {
        const QString name = QStringLiteral("%1.png").arg(i);
        m_workshop->write(QStringLiteral("photos/") + name, "not looked at");
        m_workshop->write(QStringLiteral("out/") + name, older);
    }
    int ends[2];
    QCOMPARE(pipe2(ends, O_NONBLOCK | O_CLOEXEC), 0);
    const int room = fcntl(ends[1], F_SETPIPE_SZ, 4096);
    PipedTool tool(ends[1]);
    tool.start(toolPath(),
               FolderWorkshop::arguments(list("--skip-existing --progress=json photos/")));
    QVERIFY(tool.waitForStarted());
    close(ends[1]);
    QVERIFY(!tool.waitForFinished(fullAfter));
    fcntl(ends[0], F_SETFL, 0);
    QFile reader;
    QVERIFY(reader.open(ends[0], QIODevice::ReadOnly, QFile::AutoCloseHandle));
    const QByteArray output = reader.readAll();
    QVERIFY(tool.waitForFinished());
    QCOMPARE(tool.readAllStandardError(), QByteArray());
    QCOMPARE(tool.exitCode(), 0);
    QVERIFY(output.size() > room);
    QCOMPARE(events(output, "skipped").size(), pictures);
    QCOMPARE(events(output, "end").size(), 1);
}

void tst_exporter_folder::theNumberOfThreadsChangesNothing_data()
{
    QTest::addColumn<QString>("threads");
    for (const char *threads : {"1", "2", "7", "64"}) {
        QTest::newRow(threads) << QStringLiteral("--threads=%1").arg(QLatin1String(threads));
    }
}

void tst_exporter_folder::theNumberOfThreadsChangesNothing()
{
    QFETCH(QString, threads);
    for (int i = 0; i < 30; ++i) {
        m_workshop->picture(QStringLiteral("photos/%1.png").arg(i), QSize(10 + i, 40 - i));
    }
    QCOMPARE(runTool(list("--effects=look.json --target-dir=expected photos/")).exitCode, 0);
    QCOMPARE(FolderWorkshop::run({threads, QStringLiteral("photos/")}).exitCode, 0);
    const QStringList targets = FolderWorkshop::targets();
    QCOMPARE(targets.size(), 30);
    for (const QString &target : targets) {
        QCOMPARE(m_workshop->read(QStringLiteral("out/") + target),
                 m_workshop->read(QStringLiteral("expected/") + target));
    }
}

QTEST_GUILESS_MAIN(tst_exporter_folder)

#include "tst_exporter_folder.moc"
