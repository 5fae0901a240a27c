#include "FolderWorkshop.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtTest/QtTest>

#include <sys/stat.h>
#include <unistd.h>

namespace
{

enum Code {
    usage = 2,
    targetsClash = 18,
};

QStringList list(const char *words)
{
    return QString::fromLatin1(words).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

const QString json = QStringLiteral("--progress=json");

} // namespace

class tst_exporter_places : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_workshop = std::make_unique<FolderWorkshop>(); }
    void cleanup() { m_workshop.reset(); }

    void placesOfTargets_data();
    void placesOfTargets();
    void everyPictureIsWhatASingleExportMakes();
    void suffixAndFormatNameTheTargets_data();
    void suffixAndFormatNameTheTargets();
    void anUnknownSuffixIsRefused();
    void otherFilesAreLeftOutWithANote();
    void linksToFilesCountAndLinksToFoldersDoNot();
    void theTargetFolderIsNotASource();
    void aFolderMayBeItsOwnTarget();
    void aFolderThatIsItsOwnTargetCanBeContinued();
    void namesMayHaveAnyBytes();
    void namesMayBeginWithADash();

    void clashes_data();
    void clashes();
    void namesThatDifferInCaseDoNotClash();
    void aTargetMayNotReplaceASource_data();
    void aTargetMayNotReplaceASource();
    void aTargetThatIsMissingClashesWhileOthersAreSkipped();

private:
    std::unique_ptr<FolderWorkshop> m_workshop;
};

void tst_exporter_places::placesOfTargets_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("targets");
    QTest::newRow("file") << list("photos/sea/b.png") << list("b.png");
    QTest::newRow("files") << list("photos/sea/b.png photos/a.png") << list("a.png b.png");
    QTest::newRow("folder with slash") << list("photos/") << list("a.png sea/b.png sea/deep/c.png");
    QTest::newRow("folder") << list("photos")
                            << list("photos/a.png photos/sea/b.png photos/sea/deep/c.png");
    QTest::newRow("nested folder") << list("photos/sea") << list("sea/b.png sea/deep/c.png");
    QTest::newRow("folder and dot") << list("photos/sea/.") << list("b.png deep/c.png");
    QTest::newRow("parent folder")
        << list("photos/sea/..") << list("a.png sea/b.png sea/deep/c.png");
    QTest::newRow("mark before a file")
        << list("photos/./sea/deep/c.png") << list("sea/deep/c.png");
    QTest::newRow("mark before a folder")
        << list("photos/./sea") << list("sea/b.png sea/deep/c.png");
    QTest::newRow("mark at the end") << list("photos/./") << list("a.png sea/b.png sea/deep/c.png");
    QTest::newRow("mark and parents") << list("photos/./sea/../a.png") << list("a.png");
    QTest::newRow("all kinds") << list("photos/a.png photos/sea photos/sea/deep/")
                               << list("a.png c.png sea/b.png sea/deep/c.png");
}

void tst_exporter_places::placesOfTargets()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, targets);
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->picture(QStringLiteral("photos/sea/b.png"));
    m_workshop->picture(QStringLiteral("photos/sea/deep/c.png"));
    const ToolRun run = FolderWorkshop::run(arguments);
    QVERIFY2(run.exitCode == 0, run.errors.constData());
    QCOMPARE(FolderWorkshop::targets(), targets);
}

void tst_exporter_places::everyPictureIsWhatASingleExportMakes()
{
    QStringList names = list("a.png b.jpg c.webp d.tif e.bmp f.jpeg g.tiff");
    const int formats = names.size();
    for (int i = 0; i < formats; ++i) {
        m_workshop->picture(QStringLiteral("photos/") + names.at(i),
                            QSize(20 + 30 * i, 90 - 11 * i));
    }
    // One without a density: the unit in the header is "none".
    QByteArray jpeg = m_workshop->read(QStringLiteral("photos/b.jpg"));
    QCOMPARE(jpeg.mid(6, 5), QByteArray("JFIF", 5));
    jpeg.replace(13, 5, QByteArray("\0\0\1\0\1", 5));
    m_workshop->write(QStringLiteral("photos/h.jpg"), jpeg);
    names.append(QStringLiteral("h.jpg"));
    const ToolRun run = FolderWorkshop::run({QStringLiteral("photos/")});
    QVERIFY2(run.exitCode == 0, run.errors.constData());
    for (const QString &name : names) {
        const QString target = QStringLiteral("single-") + name;
        const ToolRun single =
            runTool({QStringLiteral("--source=photos/") + name,
                     QStringLiteral("--target=") + target, QStringLiteral("--effects=look.json")});
        QCOMPARE(single.exitCode, 0);
        QVERIFY2(m_workshop->read(QStringLiteral("out/") + name) == m_workshop->read(target),
                 qPrintable(name));
    }
}

void tst_exporter_places::suffixAndFormatNameTheTargets_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QStringList>("targets");
    QTest::addColumn<QByteArray>("format");
    const QByteArray jpeg("\xff\xd8\xff");
    const QByteArray png("\x89PNG");
    QTest::newRow("suffix") << list("--suffix=jpg") << list("a.jpg sea.x/b.2.jpg sea.x/c.jpg")
                            << jpeg;
    QTest::newRow("suffix in capitals")
        << list("--suffix=JPG") << list("a.JPG sea.x/b.2.JPG sea.x/c.JPG") << jpeg;
    QTest::newRow("format") << list("--format=jpg") << list("a.jpg sea.x/b.2.jpg sea.x/c.jpg")
                            << jpeg;
    QTest::newRow("both") << list("--format=png --suffix=jpg")
                          << list("a.jpg sea.x/b.2.jpg sea.x/c.jpg") << png;
}

void tst_exporter_places::suffixAndFormatNameTheTargets()
{
    QFETCH(QStringList, options);
    QFETCH(QStringList, targets);
    QFETCH(QByteArray, format);
    m_workshop->picture(QStringLiteral("photos/a.PNG"));
    m_workshop->picture(QStringLiteral("photos/sea.x/b.2.bmp"));
    m_workshop->picture(QStringLiteral("photos/sea.x/c.tiff"));
    const ToolRun run = FolderWorkshop::run(options + list("photos/"));
    QVERIFY2(run.exitCode == 0, run.errors.constData());
    QCOMPARE(FolderWorkshop::targets(), targets);
    for (const QString &target : targets) {
        QVERIFY(m_workshop->read(QStringLiteral("out/") + target).startsWith(format));
    }
}

void tst_exporter_places::anUnknownSuffixIsRefused()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    const ToolRun run = FolderWorkshop::run(list("--suffix=gif photos"));
    VERIFY_FAILURE(run, usage, "gif");
    QVERIFY(!QFileInfo::exists(QStringLiteral("out")));
}

void tst_exporter_places::otherFilesAreLeftOutWithANote()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->picture(QStringLiteral("photos/.hidden.png"));
    m_workshop->picture(QStringLiteral("photos/.thumbnails/a.png"));
    m_workshop->write(QStringLiteral("photos/notes.txt"), "no picture");
    m_workshop->write(QStringLiteral("photos/png"), "no suffix");
    QCOMPARE(mkfifo("photos/pipe.png", 0600), 0);

    const ToolRun quiet = FolderWorkshop::run(list("photos/"));
    QCOMPARE(quiet.exitCode, 0);
    QCOMPARE(quiet.errors, QByteArray());
    QCOMPARE(FolderWorkshop::targets(), list("a.png"));

    const ToolRun run = FolderWorkshop::run(list("--verbose photos/"));
    QCOMPARE(run.exitCode, 0);
    for (const char *name : {".hidden.png", ".thumbnails", "notes.txt", "photos/png", "pipe.png"}) {
        QVERIFY2(run.errors.contains(name), name);
    }
    QVERIFY(!run.errors.contains("photos/a.png is left out"));
    QCOMPARE(lastLine(run.errors), QByteArray("korvel-image-exporter: 1 of 1 picture exported"));

    const ToolRun named = FolderWorkshop::run(list("photos/.hidden.png"));
    QCOMPARE(named.exitCode, 0);
    QCOMPARE(FolderWorkshop::targets(), list(".hidden.png a.png"));
}

void tst_exporter_places::linksToFilesCountAndLinksToFoldersDoNot()
{
    m_workshop->picture(QStringLiteral("elsewhere/b.png"));
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->link(QStringLiteral("../elsewhere/b.png"), QStringLiteral("photos/link.png"));
    m_workshop->link(QStringLiteral("../elsewhere"), QStringLiteral("photos/folder"));
    m_workshop->link(QStringLiteral("."), QStringLiteral("photos/loop"));
    m_workshop->link(QStringLiteral("itself.png"), QStringLiteral("photos/itself.txt"));
    m_workshop->link(QStringLiteral("photos"), QStringLiteral("named"));
    const ToolRun run = FolderWorkshop::run(list("named"));
    QVERIFY2(run.exitCode == 0, run.errors.constData());
    QCOMPARE(FolderWorkshop::targets(), list("named/a.png named/link.png"));
}

void tst_exporter_places::theTargetFolderIsNotASource()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->picture(QStringLiteral("photos/out/older.png"));
    const QStringList arguments =
        list("--effects=look.json --target-dir=photos/out/ --progress=json photos/");
    for (int i = 0; i < 2; ++i) {
        const ToolRun run = runTool(arguments);
        QVERIFY2(run.exitCode == 0, run.errors.constData());
        QCOMPARE(events(run.output, "done").size(), 1);
    }
    QCOMPARE(FolderWorkshop::filesBelow(QStringLiteral("photos")),
             list("a.png out/a.png out/older.png"));
}

void tst_exporter_places::aFolderMayBeItsOwnTarget()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->picture(QStringLiteral("photos/sea/b.png"));
    const ToolRun run =
        runTool(list("--effects=look.json --target-dir=photos --suffix=jpg photos/"));
    QVERIFY2(run.exitCode == 0, run.errors.constData());
    QCOMPARE(FolderWorkshop::filesBelow(QStringLiteral("photos")),
             list("a.jpg a.png sea/b.jpg sea/b.png"));
}

void tst_exporter_places::aFolderThatIsItsOwnTargetCanBeContinued()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->picture(QStringLiteral("photos/sea/b.png"));
    const QStringList arguments =
        list("--effects=look.json --target-dir=photos --suffix=jpg --progress=json photos/");
    QCOMPARE(runTool(arguments).exitCode, 0);
    m_workshop->picture(QStringLiteral("photos/c.png"));
    const QByteArray before = m_workshop->read(QStringLiteral("photos/a.jpg"));

    const ToolRun refused = runTool(arguments);
    VERIFY_FAILURE(refused, targetsClash, "photos/a.jpg");
    QCOMPARE(refused.output, QByteArray());

    const ToolRun run = runTool(arguments + list("--skip-existing"));
    QVERIFY2(run.exitCode == 0, run.errors.constData());
    QCOMPARE(events(run.output, "skipped").size(), 4);
    const QVector<QJsonObject> done = events(run.output, "done");
    QCOMPARE(done.size(), 1);
    QCOMPARE(done.first().value(QLatin1String("target")).toString(),
             QStringLiteral("photos/c.jpg"));
    const QJsonObject end = events(run.output, "end").value(0);
    QCOMPARE(end.value(QLatin1String("total")).toInt(), 5);
    QCOMPARE(end.value(QLatin1String("skipped")).toInt(), 4);
    QCOMPARE(end.value(QLatin1String("left")).toInt(), 0);
    QCOMPARE(m_workshop->read(QStringLiteral("photos/a.jpg")), before);
    QCOMPARE(FolderWorkshop::filesBelow(QStringLiteral("photos")),
             list("a.jpg a.png c.jpg c.png sea/b.jpg sea/b.png"));
}

void tst_exporter_places::namesMayHaveAnyBytes()
{
    m_workshop->picture(QStringLiteral("a.png"));
    const QList<QByteArray> names{"photos/ two  blanks .png", "photos/line\nbreak.png",
                                  "photos/\xff\xc3.png", "photos/\xc3\xa4\xe2\x82\xac.png",
                                  "photos/\"quoted\\.png"};
    QDir().mkpath(QStringLiteral("photos"));
    for (const QByteArray &name : names) {
        QCOMPARE(::link("a.png", name.constData()), 0);
    }
    // The locale's encoding does not matter.
    const ToolRun run = FolderWorkshop::run({json, QStringLiteral("photos/")},
                                            {{QStringLiteral("LC_ALL"), QStringLiteral("C")}});
    QVERIFY2(run.exitCode == 0, run.errors.constData());
    for (const QByteArray &name : names) {
        const QByteArray target = "out/" + name.mid(int(qstrlen("photos/")));
        QVERIFY2(access(target.constData(), R_OK) == 0, target.constData());
    }
    // A byte that is not UTF-8 is U+DC00 and the byte, in JSON's notation.
    QVERIFY2(run.output.contains("\"source\":\"photos/\\udcff\\udcc3.png\""),
             run.output.constData());
    QVERIFY(run.output.contains("\"target\":\"out/line\\nbreak.png\""));
    QVERIFY(run.output.contains("\"source\":\"photos/\xc3\xa4\xe2\x82\xac.png\""));
    QCOMPARE(run.output.count('\n'), names.size() + 2);
}

void tst_exporter_places::namesMayBeginWithADash()
{
    m_workshop->picture(QStringLiteral("-a.png"));
    m_workshop->picture(QStringLiteral("--suffix=jpg/b.png"));
    const ToolRun run = FolderWorkshop::run(list("-- -a.png --suffix=jpg"));
    QVERIFY2(run.exitCode == 0, run.errors.constData());
    QCOMPARE(FolderWorkshop::targets(), list("--suffix=jpg/b.png -a.png"));
}

void tst_exporter_places::clashes_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("second");
    QTest::newRow("same name but for the suffix")
        << list("--suffix=jpg photos/") << QByteArray("photos/a.jpg") << QByteArray("photos/a.png");
    QTest::newRow("same name in two folders")
        << list("photos/b.png photos/sea/b.png") << QByteArray("photos/b.png")
        << QByteArray("photos/sea/b.png");
    QTest::newRow("a file and its folder")
        << list("photos/ photos/b.png") << QByteArray("photos/b.png and photos/b.png")
        << QByteArray("out/b.png");
    QTest::newRow("by way of a link in the target folder")
        << list("photos/./b.png photos/./sea/b.png --target-dir=linked")
        << QByteArray("photos/./b.png") << QByteArray("photos/./sea/b.png");
}

void tst_exporter_places::clashes()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, second);
    for (const QString &name : list("photos/a.jpg photos/a.png photos/b.png photos/sea/b.png")) {
        m_workshop->picture(name);
    }
    m_workshop->link(QStringLiteral("."), QStringLiteral("linked/sea"));
    const bool ownTarget = arguments.contains(QStringLiteral("--target-dir=linked"));
    const ToolRun run = ownTarget ? runTool(list("--effects=look.json") + arguments)
                                  : FolderWorkshop::run(arguments);
    VERIFY_FAILURE(run, targetsClash, first);
    QVERIFY2(run.errors.contains(second), run.errors.constData());
    QVERIFY(!QFileInfo::exists(QStringLiteral("out")));
    QCOMPARE(FolderWorkshop::filesBelow(QStringLiteral("linked")), QStringList());
}

void tst_exporter_places::namesThatDifferInCaseDoNotClash()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->picture(QStringLiteral("photos/A.png"));
    const ToolRun run = FolderWorkshop::run(list("photos/"));
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(FolderWorkshop::targets(), list("A.png a.png"));
}

void tst_exporter_places::aTargetMayNotReplaceASource_data()
{
    QTest::addColumn<QString>("targetFolder");
    QTest::newRow("the same folder") << QStringLiteral("photos");
    QTest::newRow("by another name") << QStringLiteral("photos/sea/..");
    QTest::newRow("by a link to the folder") << QStringLiteral("folderlink");
    QTest::newRow("by a link to the file") << QStringLiteral("filelink");
}

void tst_exporter_places::aTargetMayNotReplaceASource()
{
    QFETCH(QString, targetFolder);
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->makeFolder(QStringLiteral("photos/sea"));
    m_workshop->link(QStringLiteral("photos"), QStringLiteral("folderlink"));
    m_workshop->link(QStringLiteral("../photos/a.png"), QStringLiteral("filelink/a.png"));
    const QByteArray before = m_workshop->read(QStringLiteral("photos/a.png"));
    const ToolRun run =
        runTool({QStringLiteral("--effects=look.json"),
                 QStringLiteral("--target-dir=") + targetFolder, QStringLiteral("photos/")});
    VERIFY_FAILURE(run, targetsClash, "photos/a.png");
    QCOMPARE(m_workshop->read(QStringLiteral("photos/a.png")), before);
}

void tst_exporter_places::aTargetThatIsMissingClashesWhileOthersAreSkipped()
{
    m_workshop->picture(QStringLiteral("photos/a.png"));
    m_workshop->picture(QStringLiteral("photos/b.bmp"));
    m_workshop->picture(QStringLiteral("photos/b.png"));
    m_workshop->write(QStringLiteral("out/a.jpg"), "older");
    const ToolRun run = FolderWorkshop::run(list("--skip-existing --suffix=jpg photos/"));
    VERIFY_FAILURE(run, targetsClash, "photos/b.bmp and photos/b.png");
    QCOMPARE(FolderWorkshop::targets(), list("a.jpg"));
}

QTEST_GUILESS_MAIN(tst_exporter_places)

#include "tst_exporter_places.moc"
