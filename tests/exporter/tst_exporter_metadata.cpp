#include "ExporterRun.h"
#include "PictureFiles.h"

#include <QtGui/QColorSpace>
#include <QtTest/QtTest>

namespace
{

const QString targetPng = QStringLiteral("target.png");
const QStringList formats = {QStringLiteral("jpg"), QStringLiteral("png"), QStringLiteral("webp"),
                             QStringLiteral("tif")};

// Twice a lossy codec's block: the middle of a square of one colour keeps that colour, but for the
// conversion to luma and chroma and back.
constexpr int block = 32;
constexpr int lossyTolerance = 4;

// Six blocks of different colours, three in a row: no turn or mirroring leaves it as it is.
QImage blocks()
{
    const QRgb colors[] = {0xffe02020, 0xff20c020, 0xff2020e0, 0xffe0e020, 0xff808080, 0xff101010};
    QImage image(3 * block, 2 * block, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            image.setPixel(x, y, colors[3 * (y / block) + x / block]);
        }
    }
    return image;
}

// Where EXIF's table puts the stored rows and columns: the pixel of `stored` that is seen at (x,
// y).
QPoint storedPosition(int orientation, const QSize &stored, int x, int y)
{
    const int right = stored.width() - 1;
    const int bottom = stored.height() - 1;
    switch (orientation) {
    case 2: // row 0 at the top, column 0 at the right
        return {right - x, y};
    case 3: // bottom, right
        return {right - x, bottom - y};
    case 4: // bottom, left
        return {x, bottom - y};
    case 5: // row 0 at the left, column 0 at the top
        return {y, x};
    case 6: // row 0 at the right, column 0 at the top
        return {y, bottom - x};
    case 7: // right, bottom
        return {right - y, bottom - x};
    case 8: // left, bottom
        return {right - y, x};
    default:
        return {x, y};
    }
}

QImage seen(const QImage &stored, int orientation)
{
    const QSize size =
        orientation >= 5 && orientation <= 8 ? stored.size().transposed() : stored.size();
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            image.setPixel(x, y, stored.pixel(storedPosition(orientation, stored.size(), x, y)));
        }
    }
    return image;
}

// One pixel from the middle of each block.
QImage middles(const QImage &image)
{
    QImage result(image.width() / block, image.height() / block, QImage::Format_RGB32);
    for (int y = 0; y < result.height(); ++y) {
        for (int x = 0; x < result.width(); ++x) {
            result.setPixel(x, y, image.pixel(x * block + block / 2, y * block + block / 2));
        }
    }
    return result;
}

QByteArray meaninglessBytes(int size)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i) {
        bytes[i] = char((i * 7919) ^ (i >> 5));
    }
    return bytes;
}

// A profile of that colour space whose tables nobody needs to read.
QByteArray profileOfSpace(const char *space)
{
    QByteArray profile(132, '\0');
    profile[3] = char(132); // size
    profile.replace(12, 4, "mntr").replace(16, 4, space).replace(20, 4, "XYZ ");
    return profile.replace(36, 4, "acsp");
}

QJsonArray drawnStack()
{
    return {effect(QStringLiteral("BrightnessContrast"), {{QStringLiteral("brightness"), 1e-6}})};
}

} // namespace

class tst_exporter_metadata : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void orientationIsApplied_data();
    void orientationIsApplied();
    void orientationIsAppliedBeforeTheEffects();
    void orientationMayBeBigEndian();
    void aTurnedBitmapKeepsItsPixels();
    void damagedExifIsNoFailure();
    void anOrientationAloneIsNoLoss_data();
    void anOrientationAloneIsNoLoss();
    void profileIsKept_data();
    void profileIsKept();
    void profileIsKeptWithEffects();
    void profileIsKeptWithAlpha();
    void noProfileIsMadeUp();
    void grayProfileStaysWithGrayPixels();
    void grayProfileIsDroppedFromColours();
    void profileOfOtherChannelsIsDropped();
    void rgbProfileMakesGrayPixelsRgb();
    void whatBigTiffLosesIsTold_data();
    void whatBigTiffLosesIsTold();
};

void tst_exporter_metadata::orientationIsApplied_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("orientation");
    for (const QString &format : formats) {
        for (int orientation = 0; orientation <= 9; ++orientation) {
            QTest::addRow("%s, %d", qPrintable(format), orientation) << format << orientation;
        }
    }
}

void tst_exporter_metadata::orientationIsApplied()
{
    QFETCH(QString, format);
    QFETCH(int, orientation);
    const Workshop workshop;
    const QString name = QStringLiteral("source.") + format;
    workshop.write(name, encodePicture(format, blocks(), {{}, orientation}));
    const ToolRun run = workshop.run(name, targetPng, {});
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, 0);
    const QImage result = workshop.readPicture(targetPng);
    const QImage expected = seen(blocks(), orientation);
    QCOMPARE(result.size(), expected.size());
    QCOMPARE(difference(middles(result), middles(expected), lossyTolerance), QString());
    if (format != QLatin1String("jpg")) {
        QCOMPARE(difference(result, expected), QString());
    }
}

void tst_exporter_metadata::orientationIsAppliedBeforeTheEffects()
{
    const Workshop workshop;
    workshop.write(QStringLiteral("source.png"),
                   encodePicture(QStringLiteral("png"), blocks(), {{}, 6}));
    QCOMPARE(workshop.run(QStringLiteral("source.png"), targetPng, drawnStack()).exitCode, 0);
    QCOMPARE(difference(workshop.readPicture(targetPng), seen(blocks(), 6)), QString());
}

void tst_exporter_metadata::orientationMayBeBigEndian()
{
    const Workshop workshop;
    for (const QString &format :
         {QStringLiteral("jpg"), QStringLiteral("png"), QStringLiteral("webp")}) {
        const QString name = QStringLiteral("source.") + format;
        workshop.write(name, encodePicture(format, blocks(), {{}, 8, true}));
        QCOMPARE(workshop.run(name, targetPng, {}).exitCode, 0);
        QCOMPARE(difference(middles(workshop.readPicture(targetPng)), middles(seen(blocks(), 8)),
                            lossyTolerance),
                 QString());
    }
}

void tst_exporter_metadata::aTurnedBitmapKeepsItsPixels()
{
    QImage bitmap(19, 7, QImage::Format_Mono);
    bitmap.setColorTable({0xff000000, 0xffffffff});
    for (int i = 0; i < 19 * 7; ++i) {
        bitmap.setPixel(i % 19, i / 19, uint(i * i / 3 % 2));
    }
    const Workshop workshop;
    workshop.write(QStringLiteral("source.png"),
                   encodePicture(QStringLiteral("png"), bitmap, {{}, 6}));
    QCOMPARE(workshop.run(QStringLiteral("source.png"), targetPng, {}).exitCode, 0);
    QCOMPARE(difference(workshop.readPicture(targetPng),
                        seen(bitmap.convertToFormat(QImage::Format_RGB32), 6)),
             QString());
}

void tst_exporter_metadata::damagedExifIsNoFailure()
{
    const Workshop workshop;
    QByteArray file = encodePicture(QStringLiteral("webp"), blocks(), {{}, 6});
    file.replace("II*", "I?*");
    workshop.write(QStringLiteral("source.webp"), file);
    const ToolRun run = workshop.run(QStringLiteral("source.webp"), targetPng, {});
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(difference(workshop.readPicture(targetPng), blocks()), QString());
}

void tst_exporter_metadata::anOrientationAloneIsNoLoss_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<bool>("bigEndian");
    for (const char *format : {"jpg", "png", "webp"}) {
        QTest::addRow("%s", format) << QString::fromLatin1(format) << false;
        QTest::addRow("%s, big-endian", format) << QString::fromLatin1(format) << true;
    }
}

void tst_exporter_metadata::anOrientationAloneIsNoLoss()
{
    QFETCH(QString, format);
    QFETCH(bool, bigEndian);
    const Workshop workshop;
    const QString source = QStringLiteral("source.") + format;
    PictureFile turned;
    turned.orientation = 6;
    turned.bigEndianExif = bigEndian;
    workshop.write(source, encodePicture(format, noise(QSize(8, 5), QImage::Format_RGB32), turned));
    const ToolRun run = workshop.run(source, QStringLiteral("target.tif"), {});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(workshop.readPicture(QStringLiteral("target.tif")).size(), QSize(5, 8));

    // What cannot be read may have been more.
    PictureFile damaged;
    damaged.exif = QByteArray("II*\0\xff\xff\xff\x7f", 8) + QByteArray(40, 'x');
    workshop.write(source,
                   encodePicture(format, noise(QSize(8, 5), QImage::Format_RGB32), damaged));
    const ToolRun warned = workshop.run(source, QStringLiteral("target.tif"), {});
    QCOMPARE(warned.exitCode, 0);
    QVERIFY2(warned.errors.contains("target.tif cannot hold the source's EXIF data"),
             warned.errors.constData());
}

void tst_exporter_metadata::profileIsKept_data()
{
    QTest::addColumn<QString>("sourceFormat");
    QTest::addColumn<QString>("targetFormat");
    QTest::addColumn<QByteArray>("profile");
    const QByteArray adobe = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
    const QByteArray foreign = meaninglessBytes(1001);
    const QByteArray large = meaninglessBytes(200000);
    for (const QString &source : formats) {
        for (const QString &target : formats) {
            const QByteArray pair = (source + " to " + target).toLatin1();
            QTest::addRow("%s, understood", pair.constData()) << source << target << adobe;
            QTest::addRow("%s, not understood", pair.constData()) << source << target << foreign;
            QTest::addRow("%s, large", pair.constData()) << source << target << large;
        }
    }
}

void tst_exporter_metadata::profileIsKept()
{
    QFETCH(QString, sourceFormat);
    QFETCH(QString, targetFormat);
    QFETCH(QByteArray, profile);
    const Workshop workshop;
    const QString source = QStringLiteral("source.") + sourceFormat;
    const QString target = QStringLiteral("target.") + targetFormat;
    workshop.write(source, encodePicture(sourceFormat, blocks(), {profile, 0}));
    const ToolRun run = workshop.run(source, target, {});
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, 0);
    QVERIFY(profileIn(targetFormat, workshop.read(target)) == profile);
    const QImage result = workshop.readPicture(target);
    QCOMPARE(result.size(), blocks().size());
    QCOMPARE(difference(middles(result), middles(blocks()), lossyTolerance), QString());
}

void tst_exporter_metadata::profileIsKeptWithEffects()
{
    const QByteArray profile = meaninglessBytes(777);
    const Workshop workshop;
    workshop.write(QStringLiteral("source.jpg"),
                   encodePicture(QStringLiteral("jpg"), blocks(), {profile, 0}));
    for (const QString &format : formats) {
        const QString target = QStringLiteral("target.") + format;
        QCOMPARE(workshop.run(QStringLiteral("source.jpg"), target, drawnStack()).exitCode, 0);
        QVERIFY2(profileIn(format, workshop.read(target)) == profile, qPrintable(format));
    }
}

void tst_exporter_metadata::profileIsKeptWithAlpha()
{
    const QByteArray profile = QColorSpace(QColorSpace::DisplayP3).iccProfile();
    QImage translucent = blocks().convertToFormat(QImage::Format_ARGB32);
    translucent.fill(qRgba(255, 0, 0, 102));
    const Workshop workshop;
    workshop.write(QStringLiteral("source.png"),
                   encodePicture(QStringLiteral("png"), translucent, {profile, 0}));
    for (const QString &format : formats.mid(1)) {
        const QString target = QStringLiteral("target.") + format;
        QCOMPARE(workshop.run(QStringLiteral("source.png"), target, {}).exitCode, 0);
        QVERIFY2(profileIn(format, workshop.read(target)) == profile, qPrintable(format));
        const QImage result = workshop.readPicture(target);
        QVERIFY2(result.hasAlphaChannel(), qPrintable(format));
        QCOMPARE(result.pixelColor(20, 20).alpha(), 102);
    }
}

void tst_exporter_metadata::noProfileIsMadeUp()
{
    const Workshop workshop;
    for (const QString &format : formats) {
        const QString source = QStringLiteral("source.") + format;
        const QString target = QStringLiteral("target.") + format;
        workshop.write(source, encodePicture(format, blocks(), {}));
        QCOMPARE(workshop.run(source, target, {}).exitCode, 0);
        QCOMPARE(profileIn(format, workshop.read(target)), QByteArray());
    }
}

void tst_exporter_metadata::grayProfileStaysWithGrayPixels()
{
    const QByteArray profile = profileOfSpace("GRAY");
    const QImage gray = blocks().convertToFormat(QImage::Format_Grayscale8);
    const Workshop workshop;
    workshop.write(QStringLiteral("source.png"),
                   encodePicture(QStringLiteral("png"), gray, {profile, 0}));
    for (const QString &format :
         {QStringLiteral("jpg"), QStringLiteral("png"), QStringLiteral("tif")}) {
        const QString target = QStringLiteral("target.") + format;
        const ToolRun run = workshop.run(QStringLiteral("source.png"), target, drawnStack());
        QCOMPARE(run.errors, QByteArray());
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(profileIn(format, workshop.read(target)) == profile, qPrintable(format));
        QCOMPARE(workshop.readPicture(target).pixelFormat().colorModel(), QPixelFormat::Grayscale);
    }
}

void tst_exporter_metadata::grayProfileIsDroppedFromColours()
{
    const QImage gray = blocks().convertToFormat(QImage::Format_Grayscale8);
    const Workshop workshop;
    workshop.write(QStringLiteral("source.png"),
                   encodePicture(QStringLiteral("png"), gray, {profileOfSpace("GRAY"), 0}));
    const ToolRun run = workshop.run(QStringLiteral("source.png"), targetPng,
                                     {effect(QStringLiteral("ColorFill"))});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.wroteOneErrorLine());
    QVERIFY(run.errors.contains("target.png has no ICC profile"));
    QCOMPARE(profileIn(QStringLiteral("png"), workshop.read(targetPng)), QByteArray());
    QCOMPARE(workshop.readPicture(targetPng).pixel(9, 9), 0xffff0000);
}

void tst_exporter_metadata::profileOfOtherChannelsIsDropped()
{
    const Workshop workshop;
    workshop.write(QStringLiteral("source.jpg"),
                   encodePicture(QStringLiteral("jpg"), blocks(), {profileOfSpace("CMYK"), 0}));
    const ToolRun run =
        workshop.run(QStringLiteral("source.jpg"), QStringLiteral("target.jpg"), {});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.wroteOneErrorLine());
    QCOMPARE(profileIn(QStringLiteral("jpg"), workshop.read(QStringLiteral("target.jpg"))),
             QByteArray());
}

void tst_exporter_metadata::rgbProfileMakesGrayPixelsRgb()
{
    const QByteArray profile = QColorSpace(QColorSpace::SRgb).iccProfile();
    const QImage gray = blocks().convertToFormat(QImage::Format_Grayscale8);
    const Workshop workshop;
    workshop.write(QStringLiteral("source.jpg"),
                   encodePicture(QStringLiteral("jpg"), gray, {profile, 0}));
    QCOMPARE(workshop.run(QStringLiteral("source.jpg"), targetPng, {}).exitCode, 0);
    QVERIFY(profileIn(QStringLiteral("png"), workshop.read(targetPng)) == profile);
    constexpr int colorTypeAt = 8 + 8 + 9;
    constexpr char rgbType = 2;
    QCOMPARE(workshop.read(targetPng).at(colorTypeAt), rgbType);
}

void tst_exporter_metadata::whatBigTiffLosesIsTold_data()
{
    QTest::addColumn<int>("tag");
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<QByteArray>("lost");
    QTest::addColumn<QByteArray>("lostBesideIcc");
    const auto row = [](const char *name, int tag, const QByteArray &block, const char *lost,
                        const char *lostBesideIcc = "") {
        QTest::newRow(name) << tag << block << QByteArray(lost) << QByteArray(lostBesideIcc);
    };
    const QByteArray profile = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
    row("nothing", 0, QByteArray(), "");
    row("software", 305, QByteArray("a camera's firmware", 20), "EXIF data");
    row("EXIF directory", 34665, QByteArray(8, '\1'), "EXIF data");
    row("XMP", 700, "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>", "XMP data");
    row("IPTC", 33723, meaninglessBytes(40), "IPTC data");
    row("image resources", 34377, meaninglessBytes(40), "image resources");
    row("a profile that can be read", 34675, profile, "");
    row("a profile that cannot be read", 34675, meaninglessBytes(200), "ICC profile",
        "ICC profile");
}

void tst_exporter_metadata::whatBigTiffLosesIsTold()
{
    QFETCH(int, tag);
    QFETCH(QByteArray, block);
    QFETCH(QByteArray, lost);
    QFETCH(QByteArray, lostBesideIcc);
    const QImage image = noise(QSize(9, 7), QImage::Format_RGB32);
    const Workshop workshop;
    const auto warnings = [&workshop](const QString &target, const char *keep) {
        const ToolRun run = workshop.run(QStringLiteral("source.tif"), target, {},
                                         {QStringLiteral("--keep=") + QLatin1String(keep)});
        return run.exitCode == 0 ? run.errors : "failed: " + run.errors;
    };
    const auto expected = [&workshop](const QString &target, const QByteArray &kind) {
        return kind.isEmpty()
                   ? QByteArray()
                   : "korvel-image-exporter: warning: the target " +
                         workshop.path(target).toUtf8() + " does not have the source's " + kind +
                         ", which cannot be read from BigTIFF\n";
    };
    for (const bool isBigEndian : {false, true}) {
        QMap<quint16, QByteArray> blocks;
        if (!block.isEmpty()) {
            blocks.insert(quint16(tag), block);
        }
        workshop.write(QStringLiteral("source.tif"), encodeBigTiff(image, isBigEndian, blocks));
        for (const char *name : {"target.png", "target.tif", "target.jpg"}) {
            const QString target = QString::fromLatin1(name);
            QCOMPARE(warnings(target, "all"), expected(target, lost));
        }
        QCOMPARE(warnings(targetPng, "icc"), expected(targetPng, lostBesideIcc));
        QCOMPARE(warnings(targetPng, "none"), QByteArray());
        QCOMPARE(warnings(QStringLiteral("target.bmp"), "all"), QByteArray());
        QCOMPARE(difference(workshop.readPicture(targetPng), image), QString());
    }
}

QTEST_GUILESS_MAIN(tst_exporter_metadata)

#include "tst_exporter_metadata.moc"
