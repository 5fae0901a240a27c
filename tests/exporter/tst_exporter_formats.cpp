#include "ExporterRun.h"

#include <QtGui/QImageReader>

namespace
{

const QString sourcePng = QStringLiteral("source.png");
const QString targetPng = QStringLiteral("target.png");

// GL and the composition may round the last bit of a channel either way.
constexpr int rounding = 1;

// Not neutral, so it is drawn, and less than any rounding can show.
QJsonArray invisibleChange()
{
    return {effect(QStringLiteral("BrightnessContrast"), {{QStringLiteral("brightness"), 1e-6}})};
}

QImage premultipliedBytes(const QImage &image)
{
    QImage bytes = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    bytes.reinterpretAsFormat(QImage::Format_ARGB32);
    return bytes;
}

} // namespace

class tst_exporter_formats : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyFormatIsReadAndWritten_data();
    void everyFormatIsReadAndWritten();
    void theContentTellsTheSourceFormat();
    void translucentOverWhite_data();
    void translucentOverWhite();
    void losslessFormatsKeepAlpha_data();
    void losslessFormatsKeepAlpha();
};

void tst_exporter_formats::everyFormatIsReadAndWritten_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QByteArray>("format");
    const struct {
        const char *suffix;
        const char *format;
    } known[] = {{"jpg", "jpeg"}, {"jpeg", "jpeg"}, {"png", "png"},   {"webp", "webp"},
                 {"tif", "tiff"}, {"tiff", "tiff"}, {"bmp", "bmp"},   {"JPG", "jpeg"},
                 {"PnG", "png"},  {"WEBP", "webp"}, {"TIFF", "tiff"}, {"BMP", "bmp"}};
    for (const char *source : {"jpg", "png", "webp", "tif", "bmp"}) {
        for (const auto &target : known) {
            QTest::addRow("%s to %s", source, target.suffix)
                << QStringLiteral("source.") + QLatin1String(source)
                << QStringLiteral("target.") + QLatin1String(target.suffix)
                << QByteArray(target.format);
        }
    }
}

void tst_exporter_formats::everyFormatIsReadAndWritten()
{
    QFETCH(QString, source);
    QFETCH(QString, target);
    QFETCH(QByteArray, format);
    QImage image(33, 20, QImage::Format_RGB32);
    image.fill(qRgb(200, 100, 50));
    const Workshop workshop;
    workshop.write(source, image);
    const ToolRun run = workshop.run(source, target, {});
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(QImageReader::imageFormat(workshop.path(target)), format);
    // One flat colour: what remains is the codecs' conversion to luma and chroma and back.
    constexpr int codecTolerance = 4;
    QCOMPARE(difference(workshop.readPicture(target), image, codecTolerance), QString());
}

void tst_exporter_formats::theContentTellsTheSourceFormat()
{
    const QImage image = noise(QSize(9, 9), QImage::Format_RGB32);
    const Workshop workshop;
    workshop.write(sourcePng, image);
    workshop.write(QStringLiteral("misnamed.jpg"), workshop.read(sourcePng));
    QCOMPARE(workshop.run(QStringLiteral("misnamed.jpg"), targetPng, {}).exitCode, 0);
    QCOMPARE(difference(workshop.readPicture(targetPng), image), QString());
}

void tst_exporter_formats::translucentOverWhite_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QJsonArray>("stack");
    QTest::addColumn<int>("tolerance");
    QTest::newRow("copied to BMP") << QStringLiteral("target.bmp") << QJsonArray() << rounding;
    QTest::newRow("drawn to BMP") << QStringLiteral("target.bmp") << invisibleChange() << rounding;
    QTest::newRow("copied to JPEG") << QStringLiteral("target.jpg") << QJsonArray() << 6;
    QTest::newRow("drawn to JPEG") << QStringLiteral("target.jpg") << invisibleChange() << 6;
}

void tst_exporter_formats::translucentOverWhite()
{
    QFETCH(QString, target);
    QFETCH(QJsonArray, stack);
    QFETCH(int, tolerance);
    // Whole JPEG blocks of one colour.
    const QRgb colors[] = {qRgba(0, 0, 0, 0), qRgba(0, 0, 0, 51), qRgba(0, 0, 0, 255)};
    const int grays[] = {255, 204, 0};
    QImage image(48, 16, QImage::Format_ARGB32);
    QImage expected(48, 16, QImage::Format_RGB32);
    for (int i = 0; i < 48 * 16; ++i) {
        const int x = i % 48;
        image.setPixel(x, i / 48, colors[x / 16]);
        expected.setPixel(x, i / 48, qRgb(grays[x / 16], grays[x / 16], grays[x / 16]));
    }
    const Workshop workshop;
    workshop.write(sourcePng, image);
    QCOMPARE(workshop.run(sourcePng, target, stack).exitCode, 0);
    QCOMPARE(difference(workshop.readPicture(target), expected, tolerance), QString());
}

void tst_exporter_formats::losslessFormatsKeepAlpha_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("PNG") << targetPng;
    QTest::newRow("TIFF") << QStringLiteral("target.tif");
}

// TIFF is read back with premultiplied colours, so those are compared.
void tst_exporter_formats::losslessFormatsKeepAlpha()
{
    QFETCH(QString, target);
    const QImage image = noise(QSize(97, 9), QImage::Format_ARGB32);
    const Workshop workshop;
    workshop.write(sourcePng, image);
    for (const QJsonArray &stack : {QJsonArray(), invisibleChange()}) {
        QCOMPARE(workshop.run(sourcePng, target, stack).exitCode, 0);
        const QImage result = workshop.readPicture(target);
        QVERIFY(result.hasAlphaChannel());
        QCOMPARE(difference(premultipliedBytes(result), premultipliedBytes(image), rounding),
                 QString());
    }
}

QTEST_GUILESS_MAIN(tst_exporter_formats)

#include "tst_exporter_formats.moc"
