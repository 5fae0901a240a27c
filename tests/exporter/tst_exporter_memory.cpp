#include "ExporterRun.h"
#include "JpegFiles.h"

#include <QtGui/QImageReader>

#include <sys/resource.h>

// A program of its own: the system tells the largest memory of all the programs that it started,
// and a program that starts with the memory of a larger one counts as large as that.

namespace
{

constexpr QSize twentyFourMegapixels(6000, 4000);
constexpr int kibibyte = 1024;
// As decoded, and an amount that leaves no doubt that it is not.
constexpr int decoded = 6000 * 4000 / kibibyte * 4;
constexpr int muchLess = decoded / 2;

} // namespace

class tst_exporter_memory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aJpegIsNeverInMemoryAsAPicture_data();
    void aJpegIsNeverInMemoryAsAPicture();
};

void tst_exporter_memory::aJpegIsNeverInMemoryAsAPicture_data()
{
    QTest::addColumn<QString>("threads");
    QTest::newRow("one thread") << QStringLiteral("--threads=1");
    QTest::newRow("four threads") << QStringLiteral("--threads=4");
}

void tst_exporter_memory::aJpegIsNeverInMemoryAsAPicture()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("A sanitizer's own memory counts, too.");
#endif
    QFETCH(QString, threads);
    const QString source = QStringLiteral("source.jpg");
    const QString target = QStringLiteral("target.jpg");
    const QJsonArray stack{effect(QStringLiteral("Exposure"), {{QStringLiteral("exposure"), 0.2}}),
                           effect(QStringLiteral("HSV"), {{QStringLiteral("saturation"), 0.4}}),
                           effect(QStringLiteral("Blur"), {{QStringLiteral("radius"), 16}})};
    const Workshop workshop;
    workshop.write(source, encodeGradient(twentyFourMegapixels));
    const ToolRun run =
        workshop.run(source, target, stack, {QStringLiteral("--engine=cpu"), threads});
    QVERIFY2(run.exitCode == 0, run.errors.constData());
    rusage usage{};
    QCOMPARE(getrusage(RUSAGE_CHILDREN, &usage), 0);
    QVERIFY2(usage.ru_maxrss < muchLess, qPrintable(QStringLiteral("%1 KiB").arg(usage.ru_maxrss)));
    QImageReader reader(workshop.path(target));
    QCOMPARE(reader.size(), twentyFourMegapixels);
}

QTEST_GUILESS_MAIN(tst_exporter_memory)

#include "tst_exporter_memory.moc"
