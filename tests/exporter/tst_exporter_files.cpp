#include "ExporterRun.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtCore/QUrl>
#include <QtTest/QtTest>

#include <sys/resource.h>
#include <unistd.h>

namespace
{

const QString sourcePng = QStringLiteral("source.png");
const QString targetPng = QStringLiteral("target.png");
const QByteArray older("an older target");

QJsonArray drawnStack()
{
    return {effect(QStringLiteral("BrightnessContrast"),
                   {{QStringLiteral("brightness"), 0.125}, {QStringLiteral("contrast"), -0.25}})};
}

// The tool with a largest file size, as on a disk that is nearly full.
class LimitedProcess : public QProcess
{
public:
    explicit LimitedProcess(rlim_t bytes) : m_bytes(bytes) {}

protected:
    void setupChildProcess() override
    {
        const rlimit limit = {m_bytes, m_bytes};
        setrlimit(RLIMIT_FSIZE, &limit);
    }

private:
    const rlim_t m_bytes;
};

// Whether the process has a file of the folder open that is neither its source nor its stack: bytes
// of the target are on their way.
bool writesInto(qint64 processId, const Workshop &workshop)
{
    const QDir descriptors(QStringLiteral("/proc/%1/fd").arg(processId));
    const QStringList names = descriptors.entryList(QDir::NoFilter);
    for (const QString &name : names) {
        const QByteArray link = QFile::encodeName(descriptors.filePath(name));
        char file[4096];
        const ssize_t length = readlink(link.constData(), file, sizeof(file));
        const QString path = QFile::decodeName(QByteArray(file, int(qMax(length, ssize_t(0)))));
        if (path.startsWith(workshop.path(QString())) && path != workshop.path(sourcePng) &&
            !path.endsWith(QLatin1String(".json"))) {
            return true;
        }
    }
    return false;
}

QStringList arguments(const Workshop &workshop, const QString &target)
{
    return {QStringLiteral("--source=") + workshop.path(sourcePng),
            QStringLiteral("--target=") + workshop.path(target),
            QStringLiteral("--effects=") +
                workshop.write(QStringLiteral("stack.json"), drawnStack())};
}

} // namespace

class tst_exporter_files : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anOlderTargetIsReplaced();
    void theSourceMayBeTheTarget();
    void onlyTheTargetIsWritten();
    void aNewTargetHasTheUsualPermissions();
    void aLinkedTargetStaysALink();
    void relativePathsCountFromTheWorkingFolder();
    void anyLetterMayStandInAPath_data();
    void anyLetterMayStandInAPath();
    void anyLetterMayStandInThePathOfATable_data();
    void anyLetterMayStandInThePathOfATable();
    void aNameTooLongToBeReplacedIsTold();
    void aFullDiskLeavesTheOlderTarget();
    void aKillWhileWorkingLeavesTheOlderTarget_data();
    void aKillWhileWorkingLeavesTheOlderTarget();
    void aKillWhileWritingLeavesTheOlderTarget();
    void theLocaleChangesNothing();
};

void tst_exporter_files::anOlderTargetIsReplaced()
{
    const QImage image = noise(QSize(5, 5), QImage::Format_RGB32);
    const Workshop workshop;
    workshop.write(sourcePng, image);
    workshop.write(targetPng, QByteArray(100000, 'x'));
    QCOMPARE(workshop.run(sourcePng, targetPng, {}).exitCode, 0);
    QCOMPARE(difference(workshop.readPicture(targetPng), image), QString());
    QVERIFY(workshop.read(targetPng).size() < 1000);
}

void tst_exporter_files::theSourceMayBeTheTarget()
{
    const Workshop workshop;
    QImage image(5, 5, QImage::Format_RGB32);
    image.fill(Qt::blue);
    workshop.write(sourcePng, image);
    QCOMPARE(workshop.run(sourcePng, sourcePng, {effect(QStringLiteral("ColorFill"))}).exitCode, 0);
    image.fill(Qt::red);
    QCOMPARE(difference(workshop.readPicture(sourcePng), image), QString());
}

void tst_exporter_files::onlyTheTargetIsWritten()
{
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(5, 5), QImage::Format_RGB32));
    const QByteArray source = workshop.read(sourcePng);
    QCOMPARE(workshop.run(sourcePng, targetPng, drawnStack()).exitCode, 0);
    QCOMPARE(workshop.read(sourcePng), source);
    QCOMPARE(workshop.files(), (QStringList{sourcePng, QStringLiteral("stack.json"), targetPng}));
}

void tst_exporter_files::aNewTargetHasTheUsualPermissions()
{
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(5, 5), QImage::Format_RGB32));
    QCOMPARE(workshop.run(sourcePng, targetPng, {}).exitCode, 0);
    QCOMPARE(QFile::permissions(workshop.path(targetPng)),
             QFile::permissions(workshop.path(sourcePng)));
}

void tst_exporter_files::aLinkedTargetStaysALink()
{
    const QImage image = noise(QSize(5, 5), QImage::Format_RGB32);
    const Workshop workshop;
    workshop.write(sourcePng, image);
    workshop.write(QStringLiteral("real.png"), older);
    QVERIFY(QFile::link(workshop.path(QStringLiteral("real.png")), workshop.path(targetPng)));
    QCOMPARE(workshop.run(sourcePng, targetPng, {}).exitCode, 0);
    QVERIFY(QFileInfo(workshop.path(targetPng)).isSymLink());
    QCOMPARE(difference(workshop.readPicture(QStringLiteral("real.png")), image), QString());
}

void tst_exporter_files::relativePathsCountFromTheWorkingFolder()
{
    const QImage image = noise(QSize(5, 5), QImage::Format_RGB32);
    const Workshop workshop;
    workshop.write(sourcePng, image);
    workshop.write(QStringLiteral("stack.json"), QJsonArray());
    QProcess process;
    process.setWorkingDirectory(workshop.path(QString()));
    process.start(toolPath(),
                  {QStringLiteral("--source=source.png"), QStringLiteral("--target=target.png"),
                   QStringLiteral("--effects=stack.json")});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(difference(workshop.readPicture(targetPng), image), QString());
}

void tst_exporter_files::anyLetterMayStandInAPath_data()
{
    QTest::addColumn<QString>("locale");
    QTest::newRow("in the C locale") << QStringLiteral("C");
    QTest::newRow("in a UTF-8 locale") << QStringLiteral("C.UTF-8");
}

void tst_exporter_files::anyLetterMayStandInAPath()
{
    QFETCH(QString, locale);
    const QString source = QStringLiteral("Übung = 100% %1 \"a\" 写真.png");
    const QString target = QStringLiteral("%2 Ergebnis für %3.PNG");
    const QImage image = noise(QSize(5, 5), QImage::Format_RGB32);
    const Workshop workshop;
    QFile file(workshop.path(sourcePng));
    workshop.write(sourcePng, image);
    QVERIFY(file.rename(workshop.path(source)));
    const Environment environment = {{QStringLiteral("LC_ALL"), locale}};
    const ToolRun run = workshop.run(source, target, {}, {}, environment);
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, 0);
    QVERIFY(workshop.files().contains(target));

    const ToolRun missing =
        workshop.run(QStringLiteral("fehlt %1 ä.png"), target, {}, {}, environment);
    QVERIFY2(missing.errors.contains("fehlt %1 ä.png"), missing.errors.constData());
}

void tst_exporter_files::anyLetterMayStandInThePathOfATable_data()
{
    anyLetterMayStandInAPath_data();
}

void tst_exporter_files::anyLetterMayStandInThePathOfATable()
{
    QFETCH(QString, locale);
    const QString table = QStringLiteral("Tönung 写真.png");
    QImage inverse(256, 1, QImage::Format_RGB32);
    for (int x = 0; x < 256; ++x) {
        inverse.setPixel(x, 0, qRgb(255 - x, 255 - x, 255 - x));
    }
    QImage image(3, 3, QImage::Format_RGB32);
    image.fill(qRgb(255, 0, 255));
    const Workshop workshop;
    workshop.write(sourcePng, image);
    QFile file(workshop.write(targetPng, inverse));
    QVERIFY(file.rename(workshop.path(table)));
    const QString url = QUrl::fromLocalFile(workshop.path(table)).toString();
    const ToolRun run = workshop.run(
        sourcePng, targetPng, {effect(QStringLiteral("LUT"), {{QStringLiteral("table"), url}})}, {},
        {{QStringLiteral("LC_ALL"), locale}});
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, 0);
    image.fill(qRgb(0, 255, 0));
    constexpr int rounding = 1;
    QCOMPARE(difference(workshop.readPicture(targetPng), image, rounding), QString());
}

void tst_exporter_files::aNameTooLongToBeReplacedIsTold()
{
    constexpr int longest = 248;
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(9, 7), QImage::Format_RGB32));
    const QString suffix = QStringLiteral(".png");
    const QString replaced = QString(longest - suffix.size(), QLatin1Char('a')) + suffix;
    workshop.write(replaced, older);
    QCOMPARE(workshop.run(sourcePng, replaced, {}).exitCode, 0);

    const QString longer = QLatin1Char('a') + replaced;
    workshop.write(longer, older);
    const QStringList before = workshop.files();
    const ToolRun run = workshop.run(sourcePng, longer, {});
    VERIFY_FAILURE(run, 11,
                   longer.toUtf8() +
                       " cannot be written: its name is too long to be replaced safely\n");
    QCOMPARE(workshop.read(longer), older);
    QCOMPARE(workshop.files(), before);
}

void tst_exporter_files::aFullDiskLeavesTheOlderTarget()
{
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(97, 97), QImage::Format_RGB32));
    workshop.write(targetPng, older);
    LimitedProcess process(4096);
    process.start(toolPath(), arguments(workshop, targetPng));
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 11);
    const QByteArray errors = process.readAllStandardError();
    QCOMPARE(errors.count('\n'), 1);
    QVERIFY2(errors.contains(workshop.path(targetPng).toUtf8()), errors.constData());
    QCOMPARE(workshop.read(targetPng), older);
    QCOMPARE(workshop.files(), (QStringList{sourcePng, QStringLiteral("stack.json"), targetPng}));
}

void tst_exporter_files::aKillWhileWorkingLeavesTheOlderTarget_data()
{
    QTest::addColumn<int>("milliseconds");
    for (const int milliseconds : {1, 20, 60, 120, 250}) {
        QTest::addRow("after %d ms", milliseconds) << milliseconds;
    }
}

// Encoding this as PNG alone takes longer than the last of these times.
void tst_exporter_files::aKillWhileWorkingLeavesTheOlderTarget()
{
    QFETCH(int, milliseconds);
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(1500, 1500), QImage::Format_RGB32));
    workshop.write(targetPng, older);
    QProcess process;
    process.start(toolPath(), arguments(workshop, targetPng));
    QVERIFY(process.waitForStarted());
    QThread::msleep(ulong(milliseconds));
    process.kill();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    QCOMPARE(workshop.read(targetPng), older);
}

void tst_exporter_files::aKillWhileWritingLeavesTheOlderTarget()
{
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(4000, 3000), QImage::Format_RGB32));
    const QString target = QStringLiteral("target.bmp");
    workshop.write(target, older);
    const QStringList toolArguments = arguments(workshop, target);
    QProcess process;
    process.start(toolPath(), toolArguments);
    QVERIFY(process.waitForStarted());
    QElapsedTimer timer;
    timer.start();
    while (!writesInto(process.processId(), workshop) && timer.elapsed() < 60000) {
    }
    process.kill();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    QCOMPARE(workshop.read(target), older);
}

void tst_exporter_files::theLocaleChangesNothing()
{
    const Environment german = germanLocale();
    QVERIFY2(!german.isEmpty(), "the German locale of the build is missing");
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(31, 17), QImage::Format_ARGB32));
    const ToolRun plain = workshop.run(sourcePng, QStringLiteral("plain.png"), drawnStack(), {},
                                       {{QStringLiteral("LC_ALL"), QStringLiteral("C")}});
    QCOMPARE(plain.exitCode, 0);
    const ToolRun translated =
        workshop.run(sourcePng, QStringLiteral("german.png"), drawnStack(), {}, german);
    QCOMPARE(translated.errors, QByteArray());
    QCOMPARE(translated.exitCode, 0);
    QVERIFY(workshop.read(QStringLiteral("plain.png")) ==
            workshop.read(QStringLiteral("german.png")));
    QVERIFY(workshop.read(QStringLiteral("plain.png")) != workshop.read(sourcePng));

    workshop.write(sourcePng, QImage(100000, 1, QImage::Format_Grayscale8));
    const ToolRun tooLarge =
        workshop.run(sourcePng, targetPng, drawnStack(), {QStringLiteral("--engine=gl")}, german);
    QVERIFY2(tooLarge.errors.contains("100000 x 1"), tooLarge.errors.constData());
}

QTEST_GUILESS_MAIN(tst_exporter_files)

#include "tst_exporter_files.moc"
