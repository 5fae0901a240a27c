#include "ExporterRun.h"
#include "JpegFiles.h"
#include "PictureFiles.h"

#include <QtGui/QColorSpace>
#include <QtGui/QImageWriter>

namespace
{

const QString sourceJpeg = QStringLiteral("source.jpg");
const QString targetPng = QStringLiteral("target.png");
const QString targetJpeg = QStringLiteral("target.jpg");
constexpr int sourceNotAPicture = 5;

// Of two conversions with rounded coefficients, there and back.
constexpr int lossyTolerance = 4;
// The profile's grid is hit exactly, but the library puts a coarser one of its own over it.
constexpr int profileTolerance = 6;

const QStringList verbose = {QStringLiteral("--verbose")};

// Blocks of inks, each as wide as two of JPEG's blocks.
constexpr int block = 16;
constexpr Inks blockInks[] = {{0, 0, 0, 0},   {102, 0, 0, 0},   {0, 102, 0, 0},
                              {0, 0, 102, 0}, {102, 0, 102, 0}, {0, 102, 0, 204}};
constexpr QSize blocksSize(6 * block, block);

Inks inksAt(int x, int)
{
    return blockInks[x / block];
}

QImage blocks(const QVector<QRgb> &colours)
{
    QImage image(blocksSize, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            image.setPixel(x, y, colours.at(x / block));
        }
    }
    return image;
}

QImage plainColours()
{
    return blocks({0xffffffff, 0xff99ffff, 0xffff99ff, 0xffffff99, 0xff99ff99, 0xff331f33});
}

// As plainColours(), with red and blue in each other's place.
QImage swappedColours()
{
    return blocks({0xffffffff, 0xffffff99, 0xffff99ff, 0xff99ffff, 0xff99ff99, 0xff331f33});
}

QImage hills(QImage::Format format)
{
    QImage image(96, 64, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            image.setPixel(x, y, qRgb(2 * x + 20, 3 * y + 20, x + y + 40));
        }
    }
    return image.convertToFormat(format);
}

QByteArray withQuality(const Workshop &workshop, const QStringList &options)
{
    return workshop.run(QStringLiteral("source.png"), targetJpeg, {}, options).exitCode == 0
               ? workshop.read(targetJpeg)
               : QByteArray();
}

} // namespace

class tst_exporter_jpeg : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void inksWithoutAProfile_data();
    void inksWithoutAProfile();
    void inksThroughTheirProfile_data();
    void inksThroughTheirProfile();
    void inksWithAProfileOfSomethingElse_data();
    void inksWithAProfileOfSomethingElse();
    void progressiveIsReadLikeBaseline();
    void tooManyScans();
    void greyStaysGrey();
    void resolutionStays();
    void qualityIs92WithoutAWord();
    void lowerQualityIsSmaller();
    void deepSourcesAreTaken_data();
    void deepSourcesAreTaken();
    void deepCopiesStayDeep();
    void scaledDeepSourcesStayDeep_data();
    void scaledDeepSourcesStayDeep();
};

void tst_exporter_jpeg::inksWithoutAProfile_data()
{
    QTest::addColumn<bool>("asYcck");
    QTest::addColumn<bool>("adobe");
    QTest::newRow("CMYK by Adobe's rule") << false << true;
    QTest::newRow("YCCK by Adobe's rule") << true << true;
    QTest::newRow("CMYK as it is") << false << false;
}

void tst_exporter_jpeg::inksWithoutAProfile()
{
    QFETCH(bool, asYcck);
    QFETCH(bool, adobe);
    const Workshop workshop;
    workshop.write(sourceJpeg, encodeCmyk(blocksSize, inksAt, {asYcck, adobe}));
    const ToolRun quiet = workshop.run(sourceJpeg, targetPng, {});
    QCOMPARE(quiet.errors, QByteArray());
    QCOMPARE(quiet.exitCode, 0);
    QCOMPARE(difference(workshop.readPicture(targetPng), plainColours(), lossyTolerance),
             QString());
    const ToolRun run = workshop.run(sourceJpeg, targetPng, {}, verbose);
    QVERIFY2(run.errors.contains("note: the source ") && run.errors.contains("without a profile"),
             run.errors.constData());
}

void tst_exporter_jpeg::inksThroughTheirProfile_data()
{
    QTest::addColumn<bool>("asYcck");
    QTest::addColumn<bool>("adobe");
    QTest::newRow("CMYK by Adobe's rule") << false << true;
    QTest::newRow("YCCK by Adobe's rule") << true << true;
    QTest::newRow("CMYK as it is") << false << false;
}

void tst_exporter_jpeg::inksThroughTheirProfile()
{
    QFETCH(bool, asYcck);
    QFETCH(bool, adobe);
    const Workshop workshop;
    workshop.write(sourceJpeg,
                   encodeCmyk(blocksSize, inksAt, {asYcck, adobe, swappedCmykProfile()}));
    const QJsonArray neutral{
        effect(QStringLiteral("BrightnessContrast"), {{QStringLiteral("brightness"), 1e-6}})};
    for (const QJsonArray &stack : {QJsonArray(), neutral}) {
        const ToolRun run = workshop.run(sourceJpeg, targetPng, stack);
        QCOMPARE(run.errors, QByteArray());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(difference(workshop.readPicture(targetPng), swappedColours(), profileTolerance),
                 QString());
        // The pixels are sRGB now, which the profile does not describe.
        QCOMPARE(profileIn(QStringLiteral("png"), workshop.read(targetPng)), QByteArray());
    }
    const ToolRun run = workshop.run(sourceJpeg, targetPng, {}, verbose);
    QVERIFY2(run.errors.contains("which its profile turned into sRGB"), run.errors.constData());
}

void tst_exporter_jpeg::inksWithAProfileOfSomethingElse_data()
{
    QTest::addColumn<QByteArray>("profile");
    QTest::newRow("of RGB") << QColorSpace(QColorSpace::AdobeRgb).iccProfile();
    QTest::newRow("damaged") << swappedCmykProfile().left(700);
    QTest::newRow("nonsense") << QByteArray(500, 'x');
}

void tst_exporter_jpeg::inksWithAProfileOfSomethingElse()
{
    QFETCH(QByteArray, profile);
    const Workshop workshop;
    workshop.write(sourceJpeg, encodeCmyk(blocksSize, inksAt, {false, true, profile}));
    const ToolRun run = workshop.run(sourceJpeg, targetPng, {});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.wroteOneErrorLine());
    QVERIFY2(run.errors.contains("does not describe its CMYK colours"), run.errors.constData());
    QCOMPARE(difference(workshop.readPicture(targetPng), plainColours(), lossyTolerance),
             QString());
    QCOMPARE(profileIn(QStringLiteral("png"), workshop.read(targetPng)), QByteArray());
}

void tst_exporter_jpeg::progressiveIsReadLikeBaseline()
{
    const QImage image = hills(QImage::Format_RGB32);
    const Workshop workshop;
    workshop.write(sourceJpeg, encodeProgressive(image));
    QCOMPARE(workshop.run(sourceJpeg, targetPng, {}).exitCode, 0);
    QCOMPARE(difference(workshop.readPicture(targetPng), image, lossyTolerance), QString());
}

void tst_exporter_jpeg::tooManyScans()
{
    const QByteArray whole = encodeProgressive(hills(QImage::Format_RGB32));
    const Workshop workshop;
    workshop.write(sourceJpeg, withRepeatedScans(whole, 10));
    QCOMPARE(workshop.run(sourceJpeg, targetPng, {}).exitCode, 0);
    workshop.write(sourceJpeg, withRepeatedScans(whole, 1000));
    VERIFY_FAILURE(workshop.run(sourceJpeg, targetPng, {}), sourceNotAPicture, "scans");
}

void tst_exporter_jpeg::greyStaysGrey()
{
    const QImage image = hills(QImage::Format_Grayscale8);
    const Workshop workshop;
    workshop.write(sourceJpeg, image);
    QCOMPARE(workshop.run(sourceJpeg, targetJpeg, {}).exitCode, 0);
    const QImage result = workshop.readPicture(targetJpeg);
    QCOMPARE(result.format(), QImage::Format_Grayscale8);
    QCOMPARE(difference(result, image, lossyTolerance), QString());
    const QJsonArray stack{effect(QStringLiteral("ColorFill"))};
    QCOMPARE(workshop.run(sourceJpeg, targetPng, stack).exitCode, 0);
    QCOMPARE(workshop.readPicture(targetPng).pixel(5, 5), 0xffff0000);
}

void tst_exporter_jpeg::resolutionStays()
{
    QImage image = hills(QImage::Format_RGB32);
    image.setDotsPerMeterX(11811); // 300 dots an inch
    image.setDotsPerMeterY(5906);
    const Workshop workshop;
    workshop.write(sourceJpeg, image);
    const QJsonArray drawn{
        effect(QStringLiteral("BrightnessContrast"), {{QStringLiteral("brightness"), 0.1}})};
    for (const QJsonArray &stack : {QJsonArray(), drawn}) {
        for (const QString &target : {targetJpeg, targetPng}) {
            QCOMPARE(workshop.run(sourceJpeg, target, stack).exitCode, 0);
            const QImage result = workshop.readPicture(target);
            constexpr int halfADot = 20;
            QVERIFY(qAbs(result.dotsPerMeterX() - 11811) <= halfADot);
            QVERIFY(qAbs(result.dotsPerMeterY() - 5906) <= halfADot);
        }
    }
}

void tst_exporter_jpeg::qualityIs92WithoutAWord()
{
    const Workshop workshop;
    workshop.write(QStringLiteral("source.png"), hills(QImage::Format_RGB32));
    const QByteArray file = withQuality(workshop, {});
    QVERIFY(!file.isEmpty());
    QVERIFY(file == withQuality(workshop, {QStringLiteral("--quality=92")}));
    QVERIFY(file != withQuality(workshop, {QStringLiteral("--quality=91")}));
    // What Qt itself makes of quality 92.
    const QString reference = workshop.path(QStringLiteral("reference.jpg"));
    QVERIFY(hills(QImage::Format_RGB32).save(reference, "jpg", 92));
    QCOMPARE(difference(workshop.readPicture(targetJpeg), QImage(reference), lossyTolerance),
             QString());
    QVERIFY(file.contains(workshop.read(reference).mid(20, 138))); // the quantization tables
}

void tst_exporter_jpeg::lowerQualityIsSmaller()
{
    const Workshop workshop;
    workshop.write(QStringLiteral("source.png"), noise(QSize(96, 64), QImage::Format_RGB32));
    for (const QString &target : {targetJpeg, QStringLiteral("target.webp")}) {
        int last = 0;
        for (const char *quality :
             {"--quality=1", "--quality=50", "--quality=92", "--quality=99"}) {
            QCOMPARE(
                workshop
                    .run(QStringLiteral("source.png"), target, {}, {QString::fromLatin1(quality)})
                    .exitCode,
                0);
            const int size = workshop.read(target).size();
            QVERIFY2(size > last, quality);
            last = size;
        }
    }
}

void tst_exporter_jpeg::deepSourcesAreTaken_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<int>("format");
    QTest::newRow("PNG") << QStringLiteral("deep.png") << int(QImage::Format_RGBX64);
    QTest::newRow("PNG with alpha") << QStringLiteral("deep.png") << int(QImage::Format_RGBA64);
    QTest::newRow("grey PNG") << QStringLiteral("deep.png") << int(QImage::Format_Grayscale16);
    QTest::newRow("TIFF") << QStringLiteral("deep.tif") << int(QImage::Format_RGBX64);
}

void tst_exporter_jpeg::deepSourcesAreTaken()
{
    QFETCH(QString, source);
    QFETCH(int, format);
    const Workshop workshop;
    workshop.write(source, hills(QImage::Format(format)));
    const QJsonArray stack{
        effect(QStringLiteral("BrightnessContrast"), {{QStringLiteral("brightness"), 1e-6}})};
    const ToolRun quiet = workshop.run(source, targetPng, stack);
    QCOMPARE(quiet.errors, QByteArray());
    const ToolRun run = workshop.run(source, targetPng, stack, verbose);
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.errors.count("has 16 bits a channel, of which 8 are used"), 1);
    // And what drew.
    QCOMPARE(run.errors.count('\n'), 2);
    const QImage expected = hills(QImage::Format(format));
    QCOMPARE(difference(workshop.readPicture(targetPng).convertToFormat(QImage::Format_RGB32),
                        expected.convertToFormat(QImage::Format_RGB32), 1),
             QString());
}

void tst_exporter_jpeg::deepCopiesStayDeep()
{
    const QImage deep = hills(QImage::Format_RGBX64);
    const Workshop workshop;
    workshop.write(QStringLiteral("deep.png"), deep);
    const ToolRun run = workshop.run(QStringLiteral("deep.png"), targetPng, {}, verbose);
    QCOMPARE(run.errors, QByteArray());
    QVERIFY(workshop.readPicture(targetPng) == deep);
    const ToolRun shallow = workshop.run(QStringLiteral("deep.png"), targetJpeg, {}, verbose);
    QVERIFY2(shallow.errors.contains("16 bits"), shallow.errors.constData());
}

void tst_exporter_jpeg::scaledDeepSourcesStayDeep_data()
{
    QTest::addColumn<int>("format");
    QTest::newRow("colour") << int(QImage::Format_RGBX64);
    QTest::newRow("alpha") << int(QImage::Format_RGBA64);
    QTest::newRow("grey") << int(QImage::Format_Grayscale16);
}

void tst_exporter_jpeg::scaledDeepSourcesStayDeep()
{
    QFETCH(int, format);
    const QImage deep = hills(QImage::Format(format));
    const Workshop workshop;
    workshop.write(QStringLiteral("deep.png"), deep);
    const QString half =
        QStringLiteral("--max-size=%1x%2").arg(deep.width() / 2).arg(deep.height() / 2);
    const ToolRun copied =
        workshop.run(QStringLiteral("deep.png"), targetPng, {}, verbose + QStringList{half});
    QCOMPARE(copied.errors, QByteArray());
    const QImage copy = workshop.readPicture(targetPng);
    QCOMPARE(int(copy.format()), format);
    // The first pixel is the mean of four.
    const int sum = deep.pixelColor(0, 0).rgba64().red() + deep.pixelColor(1, 0).rgba64().red() +
                    deep.pixelColor(0, 1).rgba64().red() + deep.pixelColor(1, 1).rgba64().red();
    QVERIFY(std::abs(copy.pixelColor(0, 0).rgba64().red() - sum / 4) <= 2);

    const QJsonArray stack{
        effect(QStringLiteral("BrightnessContrast"), {{QStringLiteral("brightness"), 1e-6}})};
    const ToolRun drawn =
        workshop.run(QStringLiteral("deep.png"), targetPng, stack, verbose + QStringList{half});
    QCOMPARE(drawn.exitCode, 0);
    QCOMPARE(drawn.errors.count("has 16 bits a channel, of which 8 are used"), 1);
}

QTEST_GUILESS_MAIN(tst_exporter_jpeg)

#include "tst_exporter_jpeg.moc"
