#include "ExporterRun.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QRegularExpression>
#include <QtTest/QtTest>

#include <unistd.h>

namespace
{

const QString sourcePng = QStringLiteral("source.png");
const QString targetPng = QStringLiteral("target.png");
const QString byGl = QStringLiteral("--engine=gl");
const QByteArray older("an older target");

enum Code {
    usage = 2,
    sourceMissing = 3,
    sourceUnreadable = 4,
    effectsUnreadable = 6,
    effectsInvalid = 7,
    targetFormatUnknown = 9,
    targetFolder = 10,
    targetWrite = 11,
    noOpenGl = 12,
    pictureTooLarge = 13,
};

QJsonArray drawnStack()
{
    return {effect(QStringLiteral("ColorFill"))};
}

// Bytes of a file that exists and opens, also for root, but cannot be read.
QString unreadableFile()
{
    return QStringLiteral("/proc/self/mem");
}

} // namespace

class tst_exporter_errors : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void helpNeedsNothing();
    void versionNeedsNothing();
    void helpListsEveryCode();
    void wrongArguments_data();
    void wrongArguments();
    void missingSource();
    void unreadableSource_data();
    void unreadableSource();
    void unreadableEffects_data();
    void unreadableEffects();
    void invalidEffects_data();
    void invalidEffects();
    void effectsThatAreNoArray();
    void unknownTargetFormat_data();
    void unknownTargetFormat();
    void missingTargetFolder();
    void unwritableTargetFolder();
    void unwritableTargetFolderForRoot();
    void targetIsAFolder();
    void pictureBeyondTheEncoder();
    void noOpenGlOnPlatform_data();
    void noOpenGlOnPlatform();
    void noOpenGlDriver();
    void platformFromTheEnvironmentIsIgnored();
    void pictureBeyondTheTextureLimit();
    void namesWithLineBreaksStayOnOneLine();
};

void tst_exporter_errors::helpNeedsNothing()
{
    const ToolRun run = runTool({QStringLiteral("--help")}, withoutGl());
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.errors, QByteArray());
    for (const char *option : {"--source=FILE", "--target=FILE", "--effects=FILE", "--strict",
                               "--version", "-platform"}) {
        QVERIFY2(run.output.contains(option), option);
    }
}

void tst_exporter_errors::versionNeedsNothing()
{
    const ToolRun run = runTool({QStringLiteral("--version")}, withoutGl());
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.errors, QByteArray());
    const QRegularExpression form(QStringLiteral("^korvel-image-exporter \\d+\\.\\d+\\.\\d+\n$"));
    QVERIFY(form.match(QString::fromUtf8(run.output)).hasMatch());
}

void tst_exporter_errors::helpListsEveryCode()
{
    const ToolRun run = runTool({QStringLiteral("--help")});
    for (const int code : {0, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}) {
        const QByteArray entry = "\n  " + QByteArray::number(code).rightJustified(2) + "  ";
        QVERIFY2(run.output.contains(entry), entry.constData());
    }
}

void tst_exporter_errors::wrongArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("named");
    const QString source = QStringLiteral("--source=a.png");
    const QString target = QStringLiteral("--target=b.png");
    const QString effects = QStringLiteral("--effects=c.json");
    const auto with = [&](const char *more) {
        return QStringList{source, target, effects, QLatin1String(more)};
    };
    QTest::newRow("none at all") << QStringList() << QByteArray("--source");
    QTest::newRow("no source") << QStringList{target, effects} << QByteArray("--source");
    QTest::newRow("no target") << QStringList{source, effects} << QByteArray("--target");
    QTest::newRow("no effects") << QStringList{source, target} << QByteArray("--effects");
    QTest::newRow("unknown option") << with("--colour=3") << QByteArray("--colour=3");
    QTest::newRow("abbreviated option") << with("--sour=x") << QByteArray("--sour=x");
    QTest::newRow("unknown short option") << with("-v") << QByteArray("-v");
    QTest::newRow("stray argument") << with("d.png") << QByteArray("d.png");
    QTest::newRow("empty argument") << with("") << QByteArray("\"\"");
    QTest::newRow("source twice") << with("--source=d.png") << QByteArray("--source");
    QTest::newRow("target twice") << with("--target=d.png") << QByteArray("--target");
    QTest::newRow("effects twice") << with("--effects=d.png") << QByteArray("--effects");
    QTest::newRow("strict with a value") << with("--strict=yes") << QByteArray("--strict=yes");
    QTest::newRow("platform without a name") << with("-platform") << QByteArray("-platform");
    QTest::newRow("empty source") << QStringList{QStringLiteral("--source="), target, effects}
                                  << QByteArray("--source");
    QTest::newRow("target without a value")
        << QStringList{source, QStringLiteral("--target"), effects} << QByteArray("--target");
}

void tst_exporter_errors::wrongArguments()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, named);
    const ToolRun run = runTool(arguments, withoutGl());
    VERIFY_FAILURE(run, usage, named);
    QCOMPARE(run.output, QByteArray());
}

void tst_exporter_errors::missingSource()
{
    const Workshop workshop;
    workshop.write(targetPng, older);
    const ToolRun run = workshop.run(QStringLiteral("absent.png"), targetPng, drawnStack());
    VERIFY_FAILURE(run, sourceMissing, "absent.png");
    QCOMPARE(workshop.read(targetPng), older);
}

void tst_exporter_errors::unreadableSource_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("a folder") << QStringLiteral("folder");
    QTest::newRow("without permission") << QStringLiteral("permission");
    QTest::newRow("fails on reading") << QStringLiteral("memory");
}

void tst_exporter_errors::unreadableSource()
{
    QFETCH(QString, kind);
    const Workshop workshop;
    workshop.write(targetPng, older);
    QString source = QStringLiteral(".");
    if (kind == QLatin1String("permission")) {
        if (geteuid() == 0) {
            QSKIP("root may read every file");
        }
        source = sourcePng;
        workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
        QFile::setPermissions(workshop.path(sourcePng), QFileDevice::WriteOwner);
    } else if (kind == QLatin1String("memory")) {
        source = unreadableFile();
    }
    const ToolRun run = workshop.run(source, targetPng, drawnStack());
    VERIFY_FAILURE(run, sourceUnreadable, workshop.path(source).toUtf8());
    QCOMPARE(workshop.read(targetPng), older);
}

void tst_exporter_errors::unreadableEffects_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("missing") << QStringLiteral("/nonexistent/absent.json");
    QTest::newRow("a folder") << QStringLiteral("/proc");
    QTest::newRow("fails on reading") << unreadableFile();
}

void tst_exporter_errors::unreadableEffects()
{
    QFETCH(QString, path);
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
    workshop.write(targetPng, older);
    const ToolRun run = workshop.runWithEffects(sourcePng, targetPng, path);
    VERIFY_FAILURE(run, effectsUnreadable, path.toUtf8());
    QCOMPARE(workshop.read(targetPng), older);
}

void tst_exporter_errors::invalidEffects_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("a word") << QByteArray("[nonsense]");
    QTest::newRow("unfinished") << QByteArray("[{\"a\": 1},");
    QTest::newRow("behind the end") << QByteArray("[] []");
}

void tst_exporter_errors::invalidEffects()
{
    QFETCH(QByteArray, content);
    QJsonParseError parsed;
    QJsonDocument::fromJson(content, &parsed);
    const QByteArray named = ": " + parsed.errorString().toUtf8() + " at byte " +
                             QByteArray::number(parsed.offset) + '\n';
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
    workshop.write(targetPng, older);
    workshop.write(QStringLiteral("bad.json"), content);
    const ToolRun run = workshop.runWithEffects(sourcePng, targetPng, QStringLiteral("bad.json"));
    VERIFY_FAILURE(run, effectsInvalid, "bad.json");
    QVERIFY2(run.errors.contains(named), run.errors.constData());
    QCOMPARE(workshop.read(targetPng), older);
}

void tst_exporter_errors::effectsThatAreNoArray()
{
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
    workshop.write(QStringLiteral("bad.json"), QByteArray("{}"));
    const ToolRun run = workshop.runWithEffects(sourcePng, targetPng, QStringLiteral("bad.json"));
    VERIFY_FAILURE(run, effectsInvalid, "bad.json is not a JSON array");
}

void tst_exporter_errors::unknownTargetFormat_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("unknown suffix") << QStringLiteral("target.xyz");
    QTest::newRow("no suffix") << QStringLiteral("target");
    QTest::newRow("a suffix in the folder's name") << QStringLiteral("folder.png/../target");
    QTest::newRow("a format that is only read elsewhere") << QStringLiteral("target.gif");
}

void tst_exporter_errors::unknownTargetFormat()
{
    QFETCH(QString, target);
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
    const ToolRun run = workshop.run(sourcePng, target, {});
    VERIFY_FAILURE(run, targetFormatUnknown, workshop.path(target).toUtf8());
    QVERIFY(run.errors.contains("webp"));
    QCOMPARE(workshop.files(), (QStringList{sourcePng, QStringLiteral("stack.json")}));
}

void tst_exporter_errors::missingTargetFolder()
{
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
    const ToolRun run = workshop.run(sourcePng, QStringLiteral("absent/target.png"), {});
    VERIFY_FAILURE(run, targetFolder, "absent/target.png");
}

void tst_exporter_errors::unwritableTargetFolder()
{
    if (geteuid() == 0) {
        QSKIP("root may write into every folder");
    }
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
    const QString folder = workshop.path(QStringLiteral("folder"));
    QVERIFY(QDir().mkdir(folder));
    QVERIFY(QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    const ToolRun run = workshop.run(sourcePng, QStringLiteral("folder/target.png"), {});
    VERIFY_FAILURE(run, targetFolder, "folder/target.png");
    QFile::setPermissions(folder,
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
}

void tst_exporter_errors::unwritableTargetFolderForRoot()
{
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
    const ToolRun run = workshop.run(sourcePng, QStringLiteral("/proc/target.png"), {});
    VERIFY_FAILURE(run, targetFolder, "/proc/target.png");
}

void tst_exporter_errors::targetIsAFolder()
{
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
    QVERIFY(QDir().mkdir(workshop.path(targetPng)));
    VERIFY_FAILURE(workshop.run(sourcePng, targetPng, {}), targetWrite, "target.png");
}

// WebP ends at 16383 pixels a side.
void tst_exporter_errors::pictureBeyondTheEncoder()
{
    const Workshop workshop;
    QImage image(16384, 1, QImage::Format_RGB32);
    image.fill(Qt::red);
    workshop.write(sourcePng, image);
    workshop.write(QStringLiteral("target.webp"), older);
    const ToolRun run = workshop.run(sourcePng, QStringLiteral("target.webp"), {});
    VERIFY_FAILURE(run, targetWrite, "target.webp of 16384 x 1 pixels");
    QCOMPARE(workshop.read(QStringLiteral("target.webp")), older);
}

void tst_exporter_errors::noOpenGlOnPlatform_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("platform");
    QTest::newRow("one without OpenGL") << QStringLiteral("-platform") << QStringLiteral("minimal");
    QTest::newRow("one that does not exist")
        << QStringLiteral("--platform") << QStringLiteral("nonsense");
    QTest::newRow("one that finds no display")
        << QStringLiteral("-platform") << QStringLiteral("xcb");
    QTest::newRow("one that finds no display to draw on")
        << QStringLiteral("-platform") << QStringLiteral("offscreen");
    QTest::newRow("one with a parameter that does not exist")
        << QStringLiteral("-platform") << QStringLiteral("headless:nonsense=1");
}

void tst_exporter_errors::noOpenGlOnPlatform()
{
    QFETCH(QString, option);
    QFETCH(QString, platform);
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
    workshop.write(targetPng, older);
    // The plug-in "offscreen" leaks its screen.
    Environment environment = withoutLeakCheck();
    environment.append({QStringLiteral("DISPLAY"), QString()});
    const ToolRun run =
        workshop.run(sourcePng, targetPng, drawnStack(), {option, platform}, environment);
    VERIFY_FAILURE(run, noOpenGl, "source.png");
    QVERIFY(run.errors.contains('"' + platform.toUtf8() + '"'));
    QCOMPARE(workshop.read(targetPng), older);
}

void tst_exporter_errors::noOpenGlDriver()
{
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
    workshop.write(targetPng, older);
    const ToolRun run = workshop.run(sourcePng, targetPng, drawnStack(), {byGl}, withoutGl());
    VERIFY_FAILURE(run, noOpenGl, "source.png");
    QCOMPARE(workshop.read(targetPng), older);
}

void tst_exporter_errors::platformFromTheEnvironmentIsIgnored()
{
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
    const ToolRun run =
        workshop.run(sourcePng, targetPng, drawnStack(), {byGl},
                     {{QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("minimal")},
                      {QStringLiteral("DISPLAY"), QString()}});
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, 0);
}

void tst_exporter_errors::pictureBeyondTheTextureLimit()
{
    constexpr int beyondEveryLimit = 100000;
    QImage image(beyondEveryLimit, 1, QImage::Format_RGB32);
    image.fill(Qt::red);
    const Workshop workshop;
    workshop.write(sourcePng, image);
    workshop.write(targetPng, older);
    const ToolRun run = workshop.run(sourcePng, targetPng, drawnStack(), {byGl});
    VERIFY_FAILURE(run, pictureTooLarge, "source.png of 100000 x 1 pixels");
    QCOMPARE(workshop.read(targetPng), older);

    const QRegularExpression limitText(QStringLiteral("limit of (\\d+) x "));
    const int limit = limitText.match(QString::fromUtf8(run.errors)).captured(1).toInt();
    QVERIFY(limit >= 1024);
    image = QImage(1, limit, QImage::Format_RGB32);
    image.fill(Qt::green);
    workshop.write(sourcePng, image);
    QCOMPARE(workshop.run(sourcePng, targetPng, drawnStack(), {byGl}).exitCode, 0);
    image.fill(Qt::red);
    QCOMPARE(difference(workshop.readPicture(targetPng), image), QString());

    workshop.write(sourcePng, QImage(1, limit + 1, QImage::Format_Grayscale8));
    VERIFY_FAILURE(workshop.run(sourcePng, targetPng, drawnStack(), {byGl}), pictureTooLarge,
                   "source.png");
}

void tst_exporter_errors::namesWithLineBreaksStayOnOneLine()
{
    const Workshop workshop;
    const ToolRun run = workshop.run(QStringLiteral("two\nlines.png"), targetPng, {});
    VERIFY_FAILURE(run, sourceMissing, "two lines.png");
}

QTEST_GUILESS_MAIN(tst_exporter_errors)

#include "tst_exporter_errors.moc"
