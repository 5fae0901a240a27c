#include "ExporterRun.h"

#include <QtCore/QDir>
#include <QtCore/QUrl>

namespace
{

const QString sourcePng = QStringLiteral("source.png");
const QString targetPng = QStringLiteral("target.png");

// Turns every channel around.
QImage invertingTable()
{
    QImage table(256, 1, QImage::Format_RGB32);
    for (int i = 0; i < 256; ++i) {
        table.setPixel(i, 0, qRgb(255 - i, 255 - i, 255 - i));
    }
    return table;
}

QJsonObject tableEffect(const QString &url)
{
    return effect(QStringLiteral("LUT"), {{QStringLiteral("table"), url}});
}

QImage picture(QRgb colour)
{
    QImage image(5, 4, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

} // namespace

class tst_exporter_tables : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void relativeUrlsCountFromTheStack_data();
    void relativeUrlsCountFromTheStack();
    void tablesInBatchesToo();
    void absoluteUrlsStay();
};

void tst_exporter_tables::relativeUrlsCountFromTheStack_data()
{
    QTest::addColumn<QString>("url");
    QTest::newRow("a name") << QStringLiteral("table.png");
    QTest::newRow("with the scheme") << QStringLiteral("file:table.png");
    QTest::newRow("from a folder above") << QStringLiteral("../looks/table.png");
    QTest::newRow("with an escaped blank") << QStringLiteral("a%20table.png");
    QTest::newRow("with a blank") << QStringLiteral("a table.png");
}

void tst_exporter_tables::relativeUrlsCountFromTheStack()
{
    QFETCH(QString, url);
    const Workshop workshop;
    QVERIFY(QDir(workshop.path(QString())).mkdir(QStringLiteral("looks")));
    workshop.write(QStringLiteral("looks/table.png"), invertingTable());
    workshop.write(QStringLiteral("looks/a table.png"), invertingTable());
    workshop.write(QStringLiteral("looks/stack.json"), QJsonArray{tableEffect(url)});
    workshop.write(sourcePng, picture(qRgb(10, 20, 30)));
    const ToolRun run =
        workshop.runWithEffects(sourcePng, targetPng, QStringLiteral("looks/stack.json"));
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(difference(workshop.readPicture(targetPng), picture(qRgb(245, 235, 225)), 1),
             QString());
}

void tst_exporter_tables::tablesInBatchesToo()
{
    const Workshop workshop;
    workshop.write(QStringLiteral("table.png"), invertingTable());
    workshop.write(sourcePng, picture(qRgb(10, 20, 30)));
    const QJsonObject batch = effect(
        QStringLiteral("Batch"),
        {{QStringLiteral("imageEffects"), QJsonArray{tableEffect(QStringLiteral("table.png"))}}});
    const ToolRun run = workshop.run(sourcePng, targetPng, {batch});
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(difference(workshop.readPicture(targetPng), picture(qRgb(245, 235, 225)), 1),
             QString());
}

void tst_exporter_tables::absoluteUrlsStay()
{
    const Workshop workshop;
    const Workshop elsewhere;
    elsewhere.write(QStringLiteral("table.png"), invertingTable());
    const QString path = elsewhere.path(QStringLiteral("table.png"));
    workshop.write(sourcePng, picture(qRgb(10, 20, 30)));
    for (const QString &url : {QUrl::fromLocalFile(path).toString(), path}) {
        const ToolRun run = workshop.run(sourcePng, targetPng, {tableEffect(url)});
        QCOMPARE(run.errors, QByteArray());
        QCOMPARE(difference(workshop.readPicture(targetPng), picture(qRgb(245, 235, 225)), 1),
                 QString());
    }
}

QTEST_GUILESS_MAIN(tst_exporter_tables)

#include "tst_exporter_tables.moc"
