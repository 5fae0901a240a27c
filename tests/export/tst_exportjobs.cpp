#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/export/ExportJob.h"
#include "imagefx/model/LuminanceAlphaMask.h"
#include "tests/export/ExportBench.h"
#include "tests/support/TestMain.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QRegularExpression>
#include <QtCore/QTimer>
#include <QtQml/QQmlListReference>
#include <QtTest/QSignalSpy>

#include <csignal>
#include <sys/resource.h>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

void append(ImageEffectExporter *exporter, ImageEffect *effect)
{
    QQmlListProperty<ImageEffect> list = exporter->imageEffects();
    list.append(&list, effect);
}

QByteArray jsonOf(const QList<ImageEffect *> &effects)
{
    return QJsonDocument(ImageEffect::serialize(effects)).toJson();
}

// While it lives no file of this process grows beyond some bytes, as on a full disk.
class SmallDisk
{
public:
    explicit SmallDisk(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &m_former);
        const rlimit small{bytes, m_former.rlim_max};
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_former);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    Q_DISABLE_COPY(SmallDisk)

    rlimit m_former{};
    void (*m_handler)(int);
};

} // namespace

// What the tool is told, and what becomes of the ways in which it ends.
class ExportJobsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void propertiesSignalTheirChanges()
    {
        ImageEffectExporter exporter;
        QSignalSpy sources(&exporter, &ImageEffectExporter::sourceChanged);
        QSignalSpy effects(&exporter, &ImageEffectExporter::imageEffectsChanged);
        QCOMPARE(exporter.source(), QUrl());
        exporter.setSource(QUrl());
        QCOMPARE(sources.count(), 0);
        const QUrl url(QStringLiteral("http://example.org/a.png"));
        exporter.setSource(url);
        exporter.setSource(url);
        QCOMPARE(exporter.source(), url);
        QCOMPARE(sources.count(), 1);

        QQmlListProperty<ImageEffect> list = exporter.imageEffects();
        list.clear(&list);
        QCOMPARE(effects.count(), 0);
        HSVImageEffect first;
        auto second = std::make_unique<HSVImageEffect>();
        list.append(&list, &first);
        list.append(&list, second.get());
        list.append(&list, &first);
        QCOMPARE(effects.count(), 3);
        list.append(&list, nullptr);
        QCOMPARE(effects.count(), 3);
        QCOMPARE(list.count(&list), 3);
        QCOMPARE(list.at(&list, 1), second.get());
        QCOMPARE(list.at(&list, 2), &first);
        QCOMPARE(list.at(&list, 3), nullptr);
        QCOMPARE(list.at(&list, -1), nullptr);
        second.reset();
        QCOMPARE(list.count(&list), 2);
        QCOMPARE(list.at(&list, 1), &first);
        list.clear(&list);
        QCOMPARE(list.count(&list), 0);
        QCOMPARE(effects.count(), 4);
        QCOMPARE(sources.count(), 1);
    }

    void theToolGetsThreePlainPathsInOrder()
    {
        ExportBench bench;
        const QUrl source = bench.write(QStringLiteral("a \"picture\" 100%20=b.txt"),
                                        "effects " + QFile::encodeName(bench.path("copy")));
        bench.exporter()->setSource(source);
        bench.exporter()->exportToFile(bench.target(QStringLiteral("the 'result' #1?.png")));
        QVERIFY(bench.waitForReports(1));
        const QVector<StandinNote> arguments = bench.notes("argument");
        QCOMPARE(arguments.size(), 3);
        QCOMPARE(arguments.at(0).text,
                 "--source=" + bench.path(QStringLiteral("a \"picture\" 100%20=b.txt")));
        QCOMPARE(arguments.at(1).text,
                 "--target=" + bench.path(QStringLiteral("targets/the 'result' #1?.png")));
        QVERIFY(arguments.at(2).text.startsWith("--effects=" + bench.path("tmp") + '/'));
        QCOMPARE(bench.read("copy"), QByteArray("[\n]\n"));
        QVERIFY(bench.reports().first().finished);
        QCOMPARE(bench.reports().first().source, source);
    }

    void theToolLiesBesideTheApplication()
    {
        QCOMPARE(exportProgramName, QStringLiteral("korvel-image-exporter"));
        QVERIFY(QFileInfo(QDir(QCoreApplication::applicationDirPath()), exportProgramName)
                    .isExecutable());
    }

    // Source and effects as they were, although nothing has started yet.
    void laterChangesDoNotMatter()
    {
        ExportBench bench;
        auto effect = std::make_unique<HSVImageEffect>();
        LuminanceAlphaMask mask;
        mask.addGradientStop(0.25F, 0.5F);
        effect->setHue(0.3F);
        effect->setAlphaMask(&mask);
        BatchImageEffect batch;
        batch.setImageEffectList({effect.get()});
        append(bench.exporter(), &batch);
        append(bench.exporter(), effect.get());
        const QByteArray expected = jsonOf({&batch, effect.get()});
        bench.start("a.png", "effects " + QFile::encodeName(bench.path("copy")));

        effect->setHue(-0.5F);
        mask.setEnabled(false);
        bench.exporter()->setSource(QUrl(QStringLiteral("http://example.org/other.png")));
        batch.setImageEffectList({});
        QQmlListProperty<ImageEffect> list = bench.exporter()->imageEffects();
        list.clear(&list);
        effect.reset();
        QVERIFY(bench.waitForReports(1));
        QVERIFY(bench.reports().first().finished);
        QCOMPARE(bench.read("copy"), expected);
        QVERIFY(expected.contains("0.3"));
        QCOMPARE(bench.exporter()->source(), QUrl("http://example.org/other.png"));
    }

    void anEffectThatDiedIsNotExported()
    {
        ExportBench bench;
        HSVImageEffect lives;
        {
            HSVImageEffect dies;
            append(bench.exporter(), &dies);
            append(bench.exporter(), &lives);
        }
        bench.start("a.png", "effects " + QFile::encodeName(bench.path("copy")));
        QVERIFY(bench.waitForReports(1));
        QCOMPARE(bench.read("copy"), jsonOf({&lives}));
    }

    // A program at work has its target there already, and says when it is done.
    void aTargetThatGrowsSlowlyIsReportedWhenItIsWhole()
    {
        ExportBench bench;
        bench.start("a.png", "write the first half\nready\n" + bench.untilOpen("gate") +
                                 "write  and the second\n");
        QVERIFY(bench.waitForNotes("ready", 1));
        QTest::qWait(aWhile);
        QCOMPARE(bench.read("targets/a.png"), QByteArray("the first half"));
        QCOMPARE(bench.reports().size(), 0);
        bench.open("gate");
        QVERIFY(bench.waitForReports(1));
        QVERIFY(bench.reports().first().finished);
        QCOMPARE(bench.read("targets/a.png"), QByteArray("the first half and the second"));
    }

    void withoutATargetTheFileHasItsOwnName()
    {
        ExportBench bench;
        bench.exporter()->setSource(bench.write("script", "write x\n"));
        bench.exporter()->exportToFile();
        bench.exporter()->exportToFile(QUrl());
        bench.exporter()->exportToFile(QUrl(), QStringLiteral("png"));
        bench.exporter()->exportToFile(bench.target("given.tif"), QStringLiteral("png"));
        QVERIFY(bench.waitForReports(4));
        QStringList names;
        QStringList folders;
        for (const Report &report : bench.reports()) {
            QVERIFY(report.finished);
            const QFileInfo file(report.target.toLocalFile());
            QVERIFY(file.exists());
            names.append(file.fileName());
            folders.append(file.absolutePath());
        }
        const QRegularExpression pattern(
            QStringLiteral("^[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]\\.(jpg|jpg|png)$"));
        for (int i = 0; i < 3; ++i) {
            QVERIFY2(pattern.match(names.at(i)).hasMatch(), qPrintable(names.at(i)));
            QCOMPARE(folders.at(i), folders.first());
        }
        QVERIFY(names.at(0).endsWith(".jpg") && names.at(1).endsWith(".jpg"));
        QVERIFY(names.at(2).endsWith(".png"));
        QVERIFY(names.at(0) != names.at(1));
        QVERIFY(QFileInfo(folders.first()).absolutePath() == bench.path("tmp"));
        QCOMPARE(bench.targets(), QStringList{"given.tif"});
        bench.deleteExporter();
        QVERIFY(!QFileInfo::exists(folders.first()));
        QCOMPARE(bench.targets(), QStringList{"given.tif"});
    }

    void anExitCodeIsAFailure()
    {
        ExportBench bench;
        const MessageLog log(true);
        bench.start("a.png", "say the disk is full\nexit 7\n");
        QVERIFY(bench.waitForReports(1));
        QVERIFY(!bench.reports().first().finished);
        QCOMPARE(bench.reports().first().target, bench.target("a.png"));
        QCOMPARE(log.critical(), QStringList{"Image export failed with code 7"});
        QCOMPARE(log.debug(), QStringList{"the disk is full"});
    }

    void aCrashIsAFailure()
    {
        ExportBench bench;
        const MessageLog log(true);
        bench.start("a.png", "crash\n");
        QVERIFY(bench.waitForReports(1));
        QVERIFY(!bench.reports().first().finished);
        QCOMPARE(log.critical(), QStringList{"Image export failed with error 1: Process crashed"});
        QCOMPARE(log.count(), 1);
    }

    void successSaysNothing()
    {
        ExportBench bench;
        const MessageLog log(true);
        bench.start("a.png", "say something\n");
        QVERIFY(bench.waitForReports(1));
        QVERIFY(bench.reports().first().finished);
        QCOMPARE(log.count(), 0);
    }

    void aToolThatCannotStartKeepsItsPlaceInSilence_data()
    {
        QTest::addColumn<bool>("debug");
        QTest::newRow("silent") << false;
        QTest::newRow("with debug messages") << true;
    }

    void aToolThatCannotStartKeepsItsPlaceInSilence()
    {
        QFETCH(const bool, debug);
        ExportBench bench(ExportBench::Maker::Cpp, "no-such-exporter");
        const MessageLog log(debug);
        for (int i = 0; i < slotCount; ++i) {
            bench.start("lost.png");
        }
        QTest::qWait(aWhile);
        exportProgramName = QLatin1String(ExportBench::standin);
        bench.start("waits.png");
        QTest::qWait(aWhile);
        QCOMPARE(bench.reports().size(), 0);
        QCOMPARE(bench.noted("start"), QStringList());
        QVERIFY(bench.timer()->isActive());
        QCOMPARE(log.critical(), QStringList());
        QCOMPARE(log.count(), debug ? slotCount : 0);
        if (debug) {
            const QString line = log.debug().value(0);
            QVERIFY2(line.contains(QCoreApplication::applicationDirPath() + "/no-such-exporter"),
                     qPrintable(line));
            QVERIFY2(line.contains("No such file or directory"), qPrintable(line));
        }
    }

    void aLostPlaceLeavesTheOthers()
    {
        ExportBench bench(ExportBench::Maker::Cpp, "no-such-exporter");
        bench.start("lost.png");
        QTest::qWait(aWhile);
        exportProgramName = QLatin1String(ExportBench::standin);
        for (int i = 0; i < 5; ++i) {
            bench.start(QStringLiteral("%1.png").arg(i));
        }
        QVERIFY(bench.waitForReports(5));
        QVERIFY(bench.timer()->isActive());
    }

    void aTargetThatIsNoLocalFileIsTheToolsAffair_data()
    {
        QTest::addColumn<QUrl>("target");
        QTest::newRow("remote") << QUrl("http://example.org/a.png");
        QTest::newRow("relative") << QUrl("a.png");
        QTest::newRow("resource") << QUrl("qrc:/a.png");
    }

    void aTargetThatIsNoLocalFileIsTheToolsAffair()
    {
        QFETCH(const QUrl, target);
        ExportBench bench;
        bench.exporter()->setSource(bench.write("script", QByteArray()));
        bench.exporter()->exportToFile(target);
        QVERIFY(bench.waitForReports(1));
        QCOMPARE(bench.notes("argument").at(1).text, QStringLiteral("--target="));

        exportProgramName = QLatin1String(ExportBench::tool);
        const MessageLog log(true);
        bench.exporter()->exportToFile(target);
        QVERIFY(bench.waitForReports(2));
        QVERIFY(!bench.reports().last().finished);
        QCOMPARE(bench.reports().last().target, target);
        QCOMPARE(log.critical(), QStringList{"Image export failed with code 2"});
        QVERIFY(log.debug().value(0).contains("--target needs a path"));
    }

    void effectsThatCannotBeWrittenFail_data()
    {
        QTest::addColumn<bool>("fullDisk");
        QTest::newRow("full disk") << true;
        QTest::newRow("no folder") << false;
    }

    void effectsThatCannotBeWrittenFail()
    {
        QFETCH(const bool, fullDisk);
        ExportBench bench;
        const MessageLog log(true);
        HSVImageEffect effect;
        append(bench.exporter(), &effect);
        if (fullDisk) {
            const SmallDisk disk(0);
            bench.start("a.png");
        } else {
            const QByteArray folder = qgetenv("TMPDIR");
            qputenv("TMPDIR", QFile::encodeName(bench.write("file", "x").toLocalFile()));
            bench.start("a.png");
            qputenv("TMPDIR", folder);
        }
        QCOMPARE(bench.reports().size(), 0);
        bench.start("b.png");
        QVERIFY(bench.waitForReports(2));
        QVERIFY(!bench.reports().first().finished);
        QCOMPARE(bench.reported(), (QStringList{"a.png", "b.png"}));
        QVERIFY(bench.reports().last().finished);
        QCOMPARE(bench.noted("start"), QStringList{"b.png"});
        QCOMPARE(log.critical(), QStringList());
        QCOMPARE(log.debug().size(), 1);
        const QString reason =
            fullDisk ? QStringLiteral("File too large") : QStringLiteral("Not a directory");
        QVERIFY2(log.debug().value(0).startsWith("Failed to write the effects to ") &&
                     log.debug().value(0).contains(reason),
                 qPrintable(log.debug().value(0)));
        QCOMPARE(bench.temporaryFiles().size(), 1);
    }
};

KORVEL_TEST_MAIN(ExportJobsTest)

#include "tst_exportjobs.moc"
