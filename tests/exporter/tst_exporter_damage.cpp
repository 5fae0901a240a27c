#include "ExporterRun.h"
#include "PictureFiles.h"

#include <QtGui/QImageWriter>

namespace
{

const QString sourcePng = QStringLiteral("source.png");
const QString targetPng = QStringLiteral("target.png");
const QByteArray older("an older target");
constexpr int sourceNotAPicture = 5;

QJsonArray drawnStack()
{
    return {effect(QStringLiteral("ColorFill"))};
}

} // namespace

class tst_exporter_damage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sourceThatIsNoPicture_data();
    void sourceThatIsNoPicture();
    void truncatedSource_data();
    void truncatedSource();
    void damagedTiff();
    void bitmapWithoutItsLastByte_data();
    void bitmapWithoutItsLastByte();
};

void tst_exporter_damage::sourceThatIsNoPicture_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("This is not a picture.\n");
    QTest::newRow("zeros") << QByteArray(5000, '\0');
    QTest::newRow("GIF") << QByteArray(
        "GIF89a\1\0\1\0\x80\0\0\0\0\0\xff\xff\xff,\0\0\0\0\1\0\1\0\0\2"
        "\2\x44\1\0;",
        35);
    QTest::newRow("only a JPEG start") << QByteArray("\xff\xd8\xff\xe0");
    QTest::newRow("only a PNG start") << QByteArray("\x89PNG\r\n\x1a\n");
    QTest::newRow("only a WebP start") << QByteArray("RIFF\4\0\0\0WEBP", 12);
    QTest::newRow("only a TIFF start") << QByteArray("II*\0\x08\0\0\0", 8);
    QTest::newRow("only a BMP start") << QByteArray("BM");
}

void tst_exporter_damage::sourceThatIsNoPicture()
{
    QFETCH(QByteArray, content);
    const Workshop workshop;
    workshop.write(sourcePng, content);
    workshop.write(targetPng, older);
    for (const QJsonArray &stack : {QJsonArray(), drawnStack()}) {
        const ToolRun run = workshop.run(sourcePng, targetPng, stack);
        VERIFY_FAILURE(run, sourceNotAPicture, "source.png");
        QCOMPARE(workshop.read(targetPng), older);
    }
}

void tst_exporter_damage::truncatedSource_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("percent");
    for (const char *format : {"jpg", "png", "webp", "tif", "bmp", "directory-first.tif"}) {
        for (const int percent : {5, 50, 97}) {
            QTest::addRow("%d percent of %s", percent, format)
                << QStringLiteral("source.") + QLatin1String(format) << percent;
        }
    }
}

void tst_exporter_damage::truncatedSource()
{
    QFETCH(QString, name);
    QFETCH(int, percent);
    const QImage image = noise(QSize(90, 70), QImage::Format_RGB32);
    const Workshop workshop;
    if (name.contains(QLatin1String("directory-first"))) {
        workshop.write(name, encodeTiff(image, {}));
    } else {
        workshop.write(name, image);
    }
    const QByteArray whole = workshop.read(name);
    QCOMPARE(workshop.run(name, QStringLiteral("whole.png"), {}).exitCode, 0);
    workshop.write(name, whole.left(int(qint64(whole.size()) * percent / 100)));
    workshop.write(targetPng, older);
    const ToolRun run = workshop.run(name, targetPng, {});
    VERIFY_FAILURE(run, sourceNotAPicture, name.toUtf8());
    QCOMPARE(workshop.read(targetPng), older);
}

void tst_exporter_damage::damagedTiff()
{
    const Workshop workshop;
    const QString name = QStringLiteral("source.tif");
    QImageWriter writer(workshop.path(name));
    constexpr int lzw = 1;
    writer.setCompression(lzw);
    QVERIFY(writer.write(noise(QSize(90, 70), QImage::Format_RGB32)));
    QCOMPARE(workshop.run(name, targetPng, {}).exitCode, 0);
    QByteArray file = workshop.read(name);
    file.replace(2000, 500, QByteArray(500, char(0xff)));
    workshop.write(name, file);
    const ToolRun run = workshop.run(name, targetPng, {});
    VERIFY_FAILURE(run, sourceNotAPicture, "source.tif");
}

void tst_exporter_damage::bitmapWithoutItsLastByte_data()
{
    QTest::addColumn<QByteArray>("whole");
    const Workshop workshop;
    workshop.write(QStringLiteral("a.bmp"), noise(QSize(90, 70), QImage::Format_RGB32));
    QTest::newRow("of today") << workshop.read(QStringLiteral("a.bmp"));
    // Two by two pixels of three bytes, in rows of eight bytes.
    QTest::newRow("of the oldest kind") << QByteArray("BM\x2a\0\0\0\0\0\0\0\x1a\0\0\0"
                                                      "\x0c\0\0\0\2\0\2\0\1\0\x18\0",
                                                      26) +
                                               QByteArray(16, 'x');
}

void tst_exporter_damage::bitmapWithoutItsLastByte()
{
    QFETCH(QByteArray, whole);
    const Workshop workshop;
    const QString name = QStringLiteral("source.bmp");
    workshop.write(name, whole);
    QCOMPARE(workshop.run(name, targetPng, {}).exitCode, 0);
    workshop.write(name, whole.chopped(1));
    VERIFY_FAILURE(workshop.run(name, targetPng, {}), sourceNotAPicture, "source.bmp");
}

QTEST_GUILESS_MAIN(tst_exporter_damage)

#include "tst_exporter_damage.moc"
