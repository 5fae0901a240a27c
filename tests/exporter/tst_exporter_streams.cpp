#include "ExporterRun.h"
#include "JpegFiles.h"
#include "PictureFiles.h"

#include <QtCore/QRandomGenerator>
#include <QtGui/QColorSpace>

// A JPEG becomes a JPEG without ever being a picture in memory. The other way, over a whole
// picture, is taken from BMP, which holds the same pixels.

namespace
{

const QString byGl = QStringLiteral("--engine=gl");
const QString byProcessor = QStringLiteral("--engine=cpu");
const QString sourceJpeg = QStringLiteral("source.jpg");
const QString targetJpeg = QStringLiteral("target.jpg");
const QByteArray older("an older target");
constexpr int sourceNotAPicture = 5;

// Rows beyond several bands, which end within one, and a blur that reaches beyond a band.
constexpr QSize manyBands(173, 203);

QJsonArray drawnStack()
{
    return {effect(QStringLiteral("HSV"), {{QStringLiteral("saturation"), 0.4}}),
            effect(QStringLiteral("Blur"), {{QStringLiteral("radius"), 21}})};
}

QImage photograph(const QSize &size)
{
    const QImage whole(QStringLiteral(EXAMPLE_PHOTOGRAPHS "/room.jpg"));
    return whole.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_RGB32);
}

QByteArray jpegOf(const Workshop &workshop, const QImage &image)
{
    return workshop.read(workshop.write(QStringLiteral("picture.jpg"), image));
}

} // namespace

class tst_exporter_streams : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aStreamGivesTheSameFile_data();
    void aStreamGivesTheSameFile();
    void whatCannotBeStreamedIsDrawnWhole_data();
    void whatCannotBeStreamedIsDrawnWhole();
    void threadsChangeNothing_data();
    void threadsChangeNothing();
    void greyStaysGreyWhenNothingIsDrawn();
    void aProfileAndMetadataGoAlong();
    void aCutSourceLeavesTheTarget_data();
    void aCutSourceLeavesTheTarget();
    void aDamagedSourceIsToldAlike_data();
    void aDamagedSourceIsToldAlike();
    void theSourceMayBeTheTarget();
};

void tst_exporter_streams::aStreamGivesTheSameFile_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QJsonArray>("stack");
    const Workshop workshop;
    const QImage image = photograph(manyBands);
    const auto row = [](const char *name, const QByteArray &file) {
        QTest::addRow("%s drawn", name) << file << drawnStack();
        QTest::addRow("%s copied", name) << file << QJsonArray();
    };
    row("colour", jpegOf(workshop, image));
    row("progressive", encodeProgressive(image));
    for (const QSize &size : {QSize(1, 1), QSize(1, 100), QSize(100, 1), QSize(17, 16),
                              QSize(8, 64), QSize(40000, 5), QSize(5, 40000)}) {
        row(qPrintable(QStringLiteral("%1 x %2").arg(size.width()).arg(size.height())),
            jpegOf(workshop, photograph(size)));
    }
    // Copied, it stays grey, which BMP does not know.
    QTest::newRow("grey drawn") << jpegOf(workshop,
                                          image.convertToFormat(QImage::Format_Grayscale8))
                                << drawnStack();
}

void tst_exporter_streams::aStreamGivesTheSameFile()
{
    QFETCH(QByteArray, file);
    QFETCH(QJsonArray, stack);
    const Workshop workshop;
    const QString bitmap = QStringLiteral("source.bmp");
    workshop.write(sourceJpeg, file);
    QCOMPARE(workshop.run(sourceJpeg, bitmap, {}).exitCode, 0);
    QCOMPARE(workshop.run(bitmap, QStringLiteral("whole.jpg"), stack, {byProcessor}).exitCode, 0);
    QCOMPARE(workshop.run(sourceJpeg, targetJpeg, stack, {byProcessor}).exitCode, 0);
    QVERIFY(!workshop.read(targetJpeg).isEmpty());
    QVERIFY(workshop.read(targetJpeg) == workshop.read(QStringLiteral("whole.jpg")));
}

void tst_exporter_streams::whatCannotBeStreamedIsDrawnWhole_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QSize>("size");
    const QImage image = photograph(manyBands);
    for (const int orientation : {2, 3, 6}) {
        PictureFile turned;
        turned.orientation = orientation;
        QTest::addRow("turned by EXIF's %d", orientation)
            << encodePicture(QStringLiteral("jpg"), image, turned)
            << QStringList{QStringLiteral("--keep=none")}
            << (orientation == 6 ? manyBands.transposed() : manyBands);
    }
    const Workshop workshop;
    QTest::newRow("smaller") << jpegOf(workshop, image)
                             << QStringList{QStringLiteral("--max-size=86x101")} << QSize(86, 101);
    QTest::newRow("CMYK") << encodeCmyk(manyBands,
                                        [](int x, int y) {
                                            return Inks{x, y, 9, 40};
                                        },
                                        {})
                          << QStringList() << manyBands;
}

void tst_exporter_streams::whatCannotBeStreamedIsDrawnWhole()
{
    QFETCH(QByteArray, file);
    QFETCH(QStringList, options);
    QFETCH(QSize, size);
    const QJsonArray stack{effect(QStringLiteral("HSV"), {{QStringLiteral("saturation"), 0.4}})};
    const Workshop workshop;
    const QString bitmap = QStringLiteral("source.bmp");
    workshop.write(sourceJpeg, file);
    QCOMPARE(workshop.run(sourceJpeg, bitmap, {}, options).exitCode, 0);
    QCOMPARE(workshop.readPicture(bitmap).size(), size);
    QCOMPARE(workshop.run(bitmap, QStringLiteral("whole.jpg"), stack, {byProcessor}).exitCode, 0);
    options.append(byProcessor);
    QCOMPARE(workshop.run(sourceJpeg, targetJpeg, stack, options).exitCode, 0);
    QVERIFY(!workshop.read(targetJpeg).isEmpty());
    QVERIFY(workshop.read(targetJpeg) == workshop.read(QStringLiteral("whole.jpg")));
}

void tst_exporter_streams::threadsChangeNothing_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QJsonArray>("stack");
    QTest::newRow("stream") << sourceJpeg << targetJpeg << drawnStack();
    QTest::newRow("copy") << sourceJpeg << targetJpeg << QJsonArray();
    QTest::newRow("whole picture")
        << QStringLiteral("source.png") << QStringLiteral("target.png") << drawnStack();
}

void tst_exporter_streams::threadsChangeNothing()
{
    QFETCH(QString, source);
    QFETCH(QString, target);
    QFETCH(QJsonArray, stack);
    const Workshop workshop;
    workshop.write(source, photograph(QSize(640, 480)));
    QVector<QByteArray> files;
    for (const char *threads : {"--threads=1", "--threads=2", "--threads=4", "--threads=9"}) {
        QCOMPARE(
            workshop.run(source, target, stack, {byProcessor, QLatin1String(threads)}).exitCode, 0);
        files.append(workshop.read(target));
        QVERIFY(!files.constLast().isEmpty());
        QVERIFY(files.constLast() == files.constFirst());
    }
}

void tst_exporter_streams::greyStaysGreyWhenNothingIsDrawn()
{
    const QImage grey = photograph(manyBands).convertToFormat(QImage::Format_Grayscale8);
    const Workshop workshop;
    workshop.write(sourceJpeg, grey);
    const QJsonArray hidden{effect(QStringLiteral("HSV"))};
    for (const QJsonArray &stack : {QJsonArray(), hidden}) {
        QCOMPARE(
            workshop
                .run(sourceJpeg, targetJpeg, stack, {byProcessor, QStringLiteral("--quality=100")})
                .exitCode,
            0);
        QCOMPARE(workshop.readPicture(targetJpeg).format(), QImage::Format_Grayscale8);
        // Encoded once more.
        QCOMPARE(difference(workshop.readPicture(targetJpeg), workshop.readPicture(sourceJpeg), 2),
                 QString());
    }
    QCOMPARE(workshop.run(sourceJpeg, targetJpeg, drawnStack(), {byProcessor}).exitCode, 0);
    QCOMPARE(workshop.readPicture(targetJpeg).format(), QImage::Format_RGB32);
}

void tst_exporter_streams::aProfileAndMetadataGoAlong()
{
    PictureFile embedded;
    embedded.orientation = 1;
    embedded.xmp = "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\"/>";
    embedded.iccProfile = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
    const Workshop workshop;
    workshop.write(sourceJpeg,
                   encodePicture(QStringLiteral("jpg"), photograph(manyBands), embedded));
    const QString whole = QStringLiteral("whole.jpg");
    QCOMPARE(workshop.run(sourceJpeg, whole, drawnStack(), {byGl}).exitCode, 0);
    QCOMPARE(workshop.run(sourceJpeg, targetJpeg, drawnStack(), {byProcessor}).exitCode, 0);
    const QByteArray file = workshop.read(targetJpeg);
    QVERIFY(profileIn(QStringLiteral("jpg"), file) == embedded.iccProfile);
    // All that stands in front of the pixels.
    const auto head = [](const QByteArray &jpeg) { return jpeg.left(jpeg.indexOf("\xff\xda")); };
    QVERIFY(head(file).contains("adobe:ns:meta"));
    QVERIFY(head(file) == head(workshop.read(whole)));
}

void tst_exporter_streams::aCutSourceLeavesTheTarget_data()
{
    QTest::addColumn<bool>("progressive");
    QTest::addColumn<int>("percent");
    for (const bool progressive : {false, true}) {
        for (const int percent : {1, 10, 30, 50, 70, 90, 97, 99}) {
            QTest::addRow("%d percent of %s", percent, progressive ? "progressive" : "baseline")
                << progressive << percent;
        }
    }
}

void tst_exporter_streams::aCutSourceLeavesTheTarget()
{
    QFETCH(bool, progressive);
    QFETCH(int, percent);
    const Workshop workshop;
    const QImage image = photograph(manyBands);
    const QByteArray whole = progressive ? encodeProgressive(image) : jpegOf(workshop, image);
    workshop.write(sourceJpeg, whole.left(whole.size() * percent / 100));
    workshop.write(targetJpeg, older);
    const ToolRun gl = workshop.run(sourceJpeg, targetJpeg, drawnStack(), {byGl});
    VERIFY_FAILURE(gl, sourceNotAPicture, "source.jpg");
    for (const QJsonArray &stack : {drawnStack(), QJsonArray()}) {
        const ToolRun run = workshop.run(sourceJpeg, targetJpeg, stack, {byProcessor});
        QCOMPARE(run.errors, gl.errors);
        QCOMPARE(run.exitCode, gl.exitCode);
        QCOMPARE(workshop.read(targetJpeg), older);
    }
}

void tst_exporter_streams::aDamagedSourceIsToldAlike_data()
{
    QTest::addColumn<QByteArray>("file");
    const Workshop workshop;
    const QImage image = photograph(manyBands);
    QRandomGenerator random(5);
    for (const QByteArray &whole : {jpegOf(workshop, image), encodeProgressive(image)}) {
        const int pixels = whole.indexOf("\xff\xda") + 12;
        for (int i = 0; i < 16; ++i) {
            QByteArray file = whole;
            const int position = random.bounded(pixels, whole.size() - 8);
            for (int k = 0; k < 6; ++k) {
                file[position + k] = char(random.bounded(256));
            }
            QTest::addRow("%d of %d", position, whole.size()) << file;
        }
    }
}

// Some damage cannot be told, and some is only worth a warning.
void tst_exporter_streams::aDamagedSourceIsToldAlike()
{
    QFETCH(QByteArray, file);
    const Workshop workshop;
    workshop.write(sourceJpeg, file);
    workshop.write(targetJpeg, older);
    const ToolRun gl = workshop.run(sourceJpeg, QStringLiteral("gl.jpg"), drawnStack(), {byGl});
    const ToolRun run = workshop.run(sourceJpeg, targetJpeg, drawnStack(), {byProcessor});
    QCOMPARE(run.errors, gl.errors);
    QCOMPARE(run.exitCode, gl.exitCode);
    QCOMPARE(workshop.read(targetJpeg) == older, run.exitCode != 0);
}

void tst_exporter_streams::theSourceMayBeTheTarget()
{
    const Workshop workshop;
    workshop.write(sourceJpeg, photograph(manyBands));
    const QByteArray before = workshop.read(sourceJpeg);
    QCOMPARE(workshop.run(sourceJpeg, targetJpeg, drawnStack(), {byProcessor}).exitCode, 0);
    QCOMPARE(workshop.run(sourceJpeg, sourceJpeg, drawnStack(), {byProcessor}).exitCode, 0);
    QVERIFY(workshop.read(sourceJpeg) != before);
    QVERIFY(workshop.read(sourceJpeg) == workshop.read(targetJpeg));
}

QTEST_GUILESS_MAIN(tst_exporter_streams)

#include "tst_exporter_streams.moc"
