#include "ExporterRun.h"
#include "PictureFiles.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QtEndian>

#include <cmath>

namespace
{

const QString sourcePng = QStringLiteral("source.png");
const QString targetPng = QStringLiteral("target.png");
const QString byGl = QStringLiteral("--engine=gl");
const QByteArray older("an older target");
constexpr int pictureTooLarge = 13;

// Of one step in eight bits, twice: the mean is rounded, and then drawn.
constexpr int meanTolerance = 1;
// A small export is drawn with a kernel of a quarter of the taps, from means that are rounded.
constexpr int smallTolerance = 4;

QStringList maxSize(int width, int height)
{
    return {QStringLiteral("--max-size=%1x%2").arg(width).arg(height)};
}

QImage plain(const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(QColor(200, 100, 50));
    return image;
}

// Stripes of one pixel, black and white, which a thinner picture cannot show.
QImage stripes(const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            image.setPixel(x, y, x % 2 == 0 ? 0xff000000 : 0xffffffff);
        }
    }
    return image;
}

// Soft hills with a slope across, so that a blur has something to do. No hard edge: means of what a
// curve made of them differ from what it makes of their mean.
QImage landscape(const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const double wave = 100.0 + 60.0 * std::sin(x / 37.0) * std::cos(y / 23.0);
            const int edge = qBound(0, 3 * x - 2 * y - size.width(), 80);
            image.setPixel(x, y, qRgb(int(wave), int(wave / 2.0) + edge, 200 - int(wave / 3.0)));
        }
    }
    return image;
}

template <class Number>
QByteArray bigEndian(Number value)
{
    QByteArray bytes(sizeof(Number), '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
}

QByteArray littleEndian(quint32 value)
{
    QByteArray bytes(sizeof(value), '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

// Small files that claim to be enormous pictures.
QByteArray claiming(const QString &format, int width, int height)
{
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray file =
        encodePicture(format == QLatin1String("bmp") ? QStringLiteral("png") : format, image, {});
    if (format == QLatin1String("png")) {
        file.replace(16, 8, bigEndian(quint32(width)) + bigEndian(quint32(height)));
        // The checksum of the header.
        quint32 crc = ~0U;
        for (const char byte : file.mid(12, 17)) {
            crc ^= uchar(byte);
            for (int i = 0; i < 8; ++i) {
                crc = (crc >> 1) ^ (0xedb88320U & (0U - (crc & 1)));
            }
        }
        return file.replace(29, 4, bigEndian(~crc));
    }
    if (format == QLatin1String("jpg")) {
        const int frame = file.indexOf("\xff\xc0");
        return file.replace(frame + 5, 4, bigEndian(quint16(height)) + bigEndian(quint16(width)));
    }
    if (format == QLatin1String("tif")) {
        file.replace(10 + 8, 4, littleEndian(quint32(width)));
        return file.replace(22 + 8, 4, littleEndian(quint32(height)));
    }
    return QByteArray("BM\0\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0", 18) + littleEndian(quint32(width)) +
           littleEndian(quint32(height)) + QByteArray("\1\0\x18\0", 4) + QByteArray(28, '\0');
}

} // namespace

class tst_exporter_sizes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itFitsInside_data();
    void itFitsInside();
    void theLimitCountsForTheUprightPicture();
    void stripesBecomeTheirMean_data();
    void stripesBecomeTheirMean();
    void resolutionAndChannelsStay();
    void aSmallExportLooksLikeTheLargeOne_data();
    void aSmallExportLooksLikeTheLargeOne();
    void tooManyPixels_data();
    void tooManyPixels();
    void theNumberOfPixelsMayBeReached();
    void aPictureBeyondTheTextureLimitMayBeMadeSmaller();
    void theTextureLimitIsExplained();
    void translucentOverTheBackground();
};

void tst_exporter_sizes::itFitsInside_data()
{
    QTest::addColumn<QSize>("source");
    QTest::addColumn<QSize>("limit");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("wide") << QSize(300, 100) << QSize(60, 60) << QSize(60, 20);
    QTest::newRow("tall") << QSize(100, 300) << QSize(60, 60) << QSize(20, 60);
    QTest::newRow("as large") << QSize(60, 60) << QSize(60, 60) << QSize(60, 60);
    QTest::newRow("never larger") << QSize(30, 20) << QSize(60, 60) << QSize(30, 20);
    QTest::newRow("one side") << QSize(100, 50) << QSize(100, 10) << QSize(20, 10);
    QTest::newRow("a thread") << QSize(300, 1) << QSize(30, 30) << QSize(30, 1);
}

void tst_exporter_sizes::itFitsInside()
{
    QFETCH(QSize, source);
    QFETCH(QSize, limit);
    QFETCH(QSize, expected);
    const Workshop workshop;
    for (const QString &format : {QStringLiteral("png"), QStringLiteral("jpg")}) {
        const QString name = QStringLiteral("source.") + format;
        workshop.write(name, plain(source));
        for (const QJsonArray &stack : {QJsonArray(), QJsonArray{effect(QStringLiteral("Blur"))}}) {
            const ToolRun run =
                workshop.run(name, targetPng, stack, maxSize(limit.width(), limit.height()));
            QCOMPARE(run.errors, QByteArray());
            QCOMPARE(run.exitCode, 0);
            QCOMPARE(difference(workshop.readPicture(targetPng), plain(expected), 2), QString());
        }
    }
}

void tst_exporter_sizes::theLimitCountsForTheUprightPicture()
{
    const Workshop workshop;
    for (const QString &format : {QStringLiteral("jpg"), QStringLiteral("png"),
                                  QStringLiteral("webp"), QStringLiteral("tif")}) {
        const QString name = QStringLiteral("source.") + format;
        workshop.write(name, encodePicture(format, plain(QSize(400, 200)), {{}, 6}));
        QCOMPARE(workshop.run(name, targetPng, {}, maxSize(500, 100)).exitCode, 0);
        QCOMPARE(workshop.readPicture(targetPng).size(), QSize(50, 100));
        QCOMPARE(workshop.run(name, targetPng, {}, maxSize(100, 500)).exitCode, 0);
        QCOMPARE(workshop.readPicture(targetPng).size(), QSize(100, 200));
    }
}

void tst_exporter_sizes::stripesBecomeTheirMean_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("width");
    for (const QString &format : {QStringLiteral("png"), QStringLiteral("jpg")}) {
        for (const int width : {512, 256, 64, 32}) {
            QTest::addRow("%s, %d", qPrintable(format), width) << format << width;
        }
    }
}

void tst_exporter_sizes::stripesBecomeTheirMean()
{
    QFETCH(QString, format);
    QFETCH(int, width);
    const Workshop workshop;
    const QString name = QStringLiteral("source.") + format;
    workshop.write(name, stripes(QSize(1024, 64)));
    QCOMPARE(workshop.run(name, targetPng, {}, maxSize(width, 64)).exitCode, 0);
    QImage grey(workshop.readPicture(targetPng).size(), QImage::Format_RGB32);
    grey.fill(qRgb(128, 128, 128));
    const bool lossy = format == QLatin1String("jpg");
    QCOMPARE(difference(workshop.readPicture(targetPng), grey, lossy ? 3 : meanTolerance),
             QString());
}

void tst_exporter_sizes::resolutionAndChannelsStay()
{
    QImage translucent(100, 80, QImage::Format_ARGB32);
    translucent.fill(qRgba(250, 120, 60, 128));
    translucent.setDotsPerMeterX(11811);
    translucent.setDotsPerMeterY(11811);
    const Workshop workshop;
    workshop.write(sourcePng, translucent);
    QCOMPARE(workshop.run(sourcePng, targetPng, {}, maxSize(50, 50)).exitCode, 0);
    const QImage result = workshop.readPicture(targetPng);
    QCOMPARE(result.dotsPerMeterX(), 11811);
    QImage expected(50, 40, QImage::Format_ARGB32);
    expected.fill(qRgba(250, 120, 60, 128));
    QCOMPARE(difference(result, expected, 2), QString());

    workshop.write(sourcePng, plain(QSize(100, 80)).convertToFormat(QImage::Format_Grayscale8));
    QCOMPARE(workshop.run(sourcePng, targetPng, {}, maxSize(50, 50)).exitCode, 0);
    QCOMPARE(workshop.readPicture(targetPng).format(), QImage::Format_Grayscale8);
}

void tst_exporter_sizes::aSmallExportLooksLikeTheLargeOne_data()
{
    QTest::addColumn<QJsonArray>("stack");
    QTest::newRow("blur") << QJsonArray{
        effect(QStringLiteral("Blur"), {{QStringLiteral("radius"), 16}})};
    QTest::newRow("sharpen") << QJsonArray{
        effect(QStringLiteral("Sharpen"),
               {{QStringLiteral("radius"), 12}, {QStringLiteral("strength"), 1.0}})};
    QTest::newRow("colours") << QJsonArray{
        effect(QStringLiteral("BrightnessContrast"), {{QStringLiteral("contrast"), 0.3}})};
}

void tst_exporter_sizes::aSmallExportLooksLikeTheLargeOne()
{
    QFETCH(QJsonArray, stack);
    const Workshop workshop;
    workshop.write(sourcePng, landscape(QSize(800, 600)));
    QCOMPARE(workshop.run(sourcePng, QStringLiteral("large.png"), stack).exitCode, 0);
    QCOMPARE(
        workshop.run(sourcePng, QStringLiteral("small.png"), stack, maxSize(200, 200)).exitCode, 0);
    const QImage large = workshop.readPicture(QStringLiteral("large.png"));
    QVERIFY(!difference(large, workshop.readPicture(sourcePng), smallTolerance).isEmpty());
    QCOMPARE(difference(workshop.readPicture(QStringLiteral("small.png")),
                        large.scaled(200, 150, Qt::IgnoreAspectRatio, Qt::SmoothTransformation),
                        smallTolerance),
             QString());
}

void tst_exporter_sizes::tooManyPixels_data()
{
    QTest::addColumn<QString>("format");
    for (const char *format : {"png", "jpg", "tif", "bmp"}) {
        QTest::newRow(format) << QString::fromLatin1(format);
    }
}

void tst_exporter_sizes::tooManyPixels()
{
    QFETCH(QString, format);
    const Workshop workshop;
    const QString name = QStringLiteral("source.") + format;
    workshop.write(name, claiming(format, 30000, 20000));
    workshop.write(targetPng, older);
    for (const QJsonArray &stack :
         {QJsonArray(), QJsonArray{effect(QStringLiteral("ColorFill"))}}) {
        const ToolRun run = workshop.run(name, targetPng, stack);
        VERIFY_FAILURE(run, pictureTooLarge, name.toUtf8());
        for (const char *part : {"30000 x 20000", "300000000", "--max-pixels"}) {
            QVERIFY2(run.errors.contains(part), run.errors.constData());
        }
        QCOMPARE(workshop.read(targetPng), older);
    }
}

void tst_exporter_sizes::theNumberOfPixelsMayBeReached()
{
    const Workshop workshop;
    workshop.write(sourcePng, plain(QSize(40, 25)));
    QCOMPARE(workshop.run(sourcePng, targetPng, {}, {QStringLiteral("--max-pixels=1000")}).exitCode,
             0);
    const ToolRun run =
        workshop.run(sourcePng, targetPng, {}, {QStringLiteral("--max-pixels=999")});
    VERIFY_FAILURE(run, pictureTooLarge, "40 x 25");
}

void tst_exporter_sizes::aPictureBeyondTheTextureLimitMayBeMadeSmaller()
{
    const Workshop workshop;
    workshop.write(sourcePng, plain(QSize(40000, 20)));
    const QJsonArray stack{effect(QStringLiteral("Blur"))};
    VERIFY_FAILURE(workshop.run(sourcePng, targetPng, stack, {byGl}), pictureTooLarge,
                   "40000 x 20");
    QCOMPARE(workshop.run(sourcePng, targetPng, stack, maxSize(4000, 4000) << byGl).exitCode, 0);
    QCOMPARE(workshop.readPicture(targetPng).size(), QSize(4000, 2));
}

void tst_exporter_sizes::theTextureLimitIsExplained()
{
    const Workshop workshop;
    workshop.write(sourcePng, claiming(QStringLiteral("png"), 40000, 2));
    const ToolRun run =
        workshop.run(sourcePng, targetPng, {effect(QStringLiteral("ColorFill"))}, {byGl});
    VERIFY_FAILURE(run, pictureTooLarge, "40000 x 2");
    for (const char *part : {"OpenGL's limit of ", "--max-size="}) {
        QVERIFY2(run.errors.contains(part), run.errors.constData());
    }
}

void tst_exporter_sizes::translucentOverTheBackground()
{
    QImage clear(16, 16, QImage::Format_ARGB32);
    clear.fill(qRgba(255, 255, 255, 0));
    const Workshop workshop;
    workshop.write(sourcePng, clear);
    QImage expected(16, 16, QImage::Format_RGB32);
    expected.fill(qRgb(0, 128, 0));
    for (const QString &format : {QStringLiteral("jpg"), QStringLiteral("bmp")}) {
        const QString target = QStringLiteral("target.") + format;
        QCOMPARE(
            workshop.run(sourcePng, target, {}, {QStringLiteral("--background=green")}).exitCode,
            0);
        QCOMPARE(difference(workshop.readPicture(target), expected, 3), QString());
    }
    QCOMPARE(
        workshop.run(sourcePng, targetPng, {}, {QStringLiteral("--background=green")}).exitCode, 0);
    QCOMPARE(difference(workshop.readPicture(targetPng), clear), QString());
}

QTEST_GUILESS_MAIN(tst_exporter_sizes)

#include "tst_exporter_sizes.moc"
