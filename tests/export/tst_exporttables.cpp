#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/LookupTableImageEffect.h"
#include "imagefx/export/ExportStack.h"
#include "tests/export/ExportBench.h"
#include "tests/quick/OffscreenReference.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/EffectTester.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TableCases.h"
#include "tests/support/TestMain.h"

#include <QtCore/QDir>
#include <QtCore/QJsonObject>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

const char *const presets[] = {"american-hustle",      "fargo",
                               "grand-budapest-hotel", "interstellar",
                               "little-miss-sunshine", "pulp-fiction"};
// Tool and test draw opaque pixels with the same programs on the same driver.
constexpr double sameProgram = 0.0;
const QUrl ownTable(QStringLiteral("qrc:/export/own-table.png"));

QUrl presetUrl(const char *name)
{
    return QUrl(QStringLiteral("qrc:/imagefx/lib/lut/%1.png").arg(QLatin1String(name)));
}

QImage curves()
{
    return tableImage({powerLevels(2.0), powerLevels(0.5), powerLevels(3.0)});
}

// A folder to work in while it lives.
class WorkingFolder
{
public:
    explicit WorkingFolder(const QString &path) { QDir::setCurrent(path); }
    ~WorkingFolder() { QDir::setCurrent(m_former); }

private:
    Q_DISABLE_COPY(WorkingFolder)

    const QString m_former = QDir::currentPath();
};

QString tableIn(const QJsonValue &effect)
{
    return effect.toObject().value(QLatin1String("table")).toString();
}

} // namespace

// A lookup table is found by the tool as well, wherever the application has it from.
class ExportTablesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_bench = std::make_unique<ExportBench>(ExportBench::Maker::Cpp, ExportBench::tool);
        m_source = opaquePicture().convertToFormat(QImage::Format_RGB32);
        QVERIFY(m_source.save(m_bench->path("source.png")));
        m_bench->exporter()->setSource(m_bench->url("source.png"));
    }

    void cleanup()
    {
        m_shown.clear();
        m_bench.reset();
    }

    void presetsAreExported()
    {
        std::vector<std::unique_ptr<LookupTableImageEffect>> grades;
        for (const char *name : presets) {
            grades.push_back(std::make_unique<LookupTableImageEffect>());
            grades.back()->setTable(presetUrl(name));
            add(QString::fromLatin1(name), {grades.back().get()});
            // The stack that the tool reads is the one that serialize() writes.
            const QList<ImageEffect *> effects{grades.back().get()};
            QCOMPARE(writeExportStack(effects), ImageEffect::serialize(effects));
        }
        KORVEL_CHECK(compareAll());
    }

    void tablesInBatchesAreExported()
    {
        std::vector<std::unique_ptr<LookupTableImageEffect>> grades;
        std::vector<std::unique_ptr<BatchImageEffect>> batches;
        for (const char *name : presets) {
            grades.push_back(std::make_unique<LookupTableImageEffect>());
            grades.back()->setTable(presetUrl(name));
            batches.push_back(std::make_unique<BatchImageEffect>());
            batches.back()->setImageEffectList({grades.back().get()});
            add(QString::fromLatin1(name), {batches.back().get()});
        }
        LookupTableImageEffect own;
        own.setTable(ownTable);
        BatchImageEffect inner;
        inner.setImageEffectList({grades.at(0).get(), &own});
        BatchImageEffect outer;
        outer.setImageEffectList({grades.at(1).get(), &inner});
        add(QStringLiteral("own, nested"), {grades.at(2).get(), &outer});
        KORVEL_CHECK(compareAll());
    }

    void tablesOfTheApplicationAreExported()
    {
        LookupTableImageEffect resource;
        resource.setTable(ownTable);
        add(QStringLiteral("resource"), {&resource});
        LookupTableImageEffect resourceFile;
        resourceFile.setTable(QUrl::fromLocalFile(QStringLiteral(":/export/own-table.png")));
        QVERIFY(!resourceFile.lut().isNull());
        add(QStringLiteral("resource as a file"), {&resourceFile});
        LookupTableImageEffect data;
        data.setTable(dataUrl(curves()));
        add(QStringLiteral("data"), {&data});
        // Refused, so the table before it stays.
        LookupTableImageEffect kept;
        kept.setTable(dataUrl(curves()));
        kept.setTable(QUrl(QStringLiteral("http://example.org/table.png")));
        QVERIFY(!kept.lut().isNull());
        add(QStringLiteral("kept"), {&kept});
        LookupTableImageEffect emptied;
        emptied.setTable(presetUrl("fargo"));
        emptied.setTable(QUrl());
        QVERIFY(!emptied.lut().isNull());
        add(QStringLiteral("emptied"), {&emptied});
        KORVEL_CHECK(compareAll());
    }

    // The application moves elsewhere before the tool starts.
    void tablesInFilesAreExported()
    {
        const WorkingFolder folder(m_bench->path(QStringLiteral("scripts")));
        QVERIFY(curves().save("table 100%.png"));
        LookupTableImageEffect relative;
        relative.setTable(QUrl::fromLocalFile(QStringLiteral("table 100%.png")));
        QVERIFY(!relative.lut().isNull());
        add(QStringLiteral("relative"), {&relative});
        LookupTableImageEffect absolute;
        absolute.setTable(QUrl::fromLocalFile(QDir::current().absoluteFilePath("table 100%.png")));
        add(QStringLiteral("absolute"), {&absolute});
        const QList<ImageEffect *> effects{&absolute};
        QCOMPARE(writeExportStack(effects), ImageEffect::serialize(effects));
        QVERIFY(QDir::setCurrent(QDir::rootPath()));
        KORVEL_CHECK(compareAll());
    }

    // What the application does not show is left to the tool as it is.
    void tablesThatCannotBeReadStayAsTheyAre()
    {
        LookupTableImageEffect none;
        LookupTableImageEffect missing;
        missing.setTable(QUrl(QStringLiteral("qrc:/missing.png")));
        LookupTableImageEffect remote;
        remote.setTable(QUrl(QStringLiteral("http://example.org/a%20b.png")));
        const QList<ImageEffect *> effects{&none, &missing, &remote};
        QCOMPARE(writeExportStack(effects), ImageEffect::serialize(effects));
        QCOMPARE(tableIn(writeExportStack(effects).at(2)),
                 QStringLiteral("http://example.org/a%20b.png"));
    }

private:
    struct Shown {
        QString name;
        QImage picture;
    };

    // Exports the effects, and keeps what the application shows with them.
    void add(const QString &name, const QList<ImageEffect *> &effects)
    {
        QQmlListProperty<ImageEffect> list = m_bench->exporter()->imageEffects();
        list.clear(&list);
        for (ImageEffect *effect : effects) {
            list.append(&list, effect);
        }
        m_bench->exporter()->exportToFile(m_bench->target(name + ".png"));
        m_shown.append({name, m_reference.draw(effects, m_source)});
    }

    QByteArray compareAll()
    {
        if (!m_bench->waitForReports(m_shown.size())) {
            return "not all exports were reported";
        }
        for (const Shown &shown : qAsConst(m_shown)) {
            const QImage exported(m_bench->target(shown.name + ".png").toLocalFile());
            const QByteArray difference = comparePictures(exported, shown.picture, sameProgram);
            if (!difference.isEmpty()) {
                return shown.name.toUtf8() + ": " + difference;
            }
            if (comparePictures(exported, m_source, sameProgram).isEmpty()) {
                return shown.name.toUtf8() + ": exported without its table";
            }
        }
        return QByteArray();
    }

    std::unique_ptr<ExportBench> m_bench;
    OffscreenReference m_reference;
    QImage m_source;
    QVector<Shown> m_shown;
};

KORVEL_TEST_MAIN(ExportTablesTest)

#include "tst_exporttables.moc"
