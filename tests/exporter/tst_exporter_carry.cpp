#include "ExporterRun.h"
#include "PictureFiles.h"

#include <exiv2/exiv2.hpp>

#include <QtCore/QtEndian>
#include <QtGui/QColorSpace>

namespace
{

const QStringList formats = {QStringLiteral("jpg"), QStringLiteral("png"), QStringLiteral("webp"),
                             QStringLiteral("tif")};
const QStringList blockFormats = formats.mid(0, 3);
constexpr QSize stored(48, 32);

template <class Number>
QByteArray littleEndian(Number value)
{
    QByteArray bytes(sizeof(Number), '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray entry(quint16 tag, quint16 type, quint32 count, quint32 value)
{
    return littleEndian(tag) + littleEndian(type) + littleEndian(count) + littleEndian(value);
}

// A maker's notes in a layout that nobody knows, with a position in the block as makers have them.
QByteArray makerNote()
{
    QByteArray note("SECRET\0\1", 8);
    for (int i = 0; i < 91; ++i) {
        note += char(i * 37);
    }
    return note;
}

QByteArray thumbnail()
{
    return QByteArray("\xff\xd8\xff", 3) + "an older picture" + QByteArray("\xff\xd9", 2);
}

struct Described {
    int orientation = 6;
    QSize size = stored;
    bool hasThumbnail = true;
};

// Three directories: that of the picture, that of the exposure, and that of the thumbnail.
QByteArray exifBlock(const Described &described)
{
    constexpr quint16 text = 2;
    constexpr quint16 shortNumber = 3;
    constexpr quint16 longNumber = 4;
    constexpr quint16 undefined = 7;
    constexpr quint32 first = 8;
    constexpr quint32 maker = first + 2 + 3 * 12 + 4;
    constexpr quint32 details = maker + 6;
    constexpr quint32 date = details + 2 + 4 * 12 + 4;
    constexpr quint32 note = date + 20;
    const QByteArray noteBytes = makerNote();
    const quint32 second = note + quint32(noteBytes.size());
    const quint32 pixels = second + 2 + 3 * 12 + 4;
    QByteArray block = "II" + littleEndian<quint16>(42) + littleEndian(first);
    block += littleEndian<quint16>(3) + entry(0x010f, text, 6, maker) +
             entry(0x0112, shortNumber, 1, quint32(described.orientation)) +
             entry(0x8769, longNumber, 1, details) +
             littleEndian(described.hasThumbnail ? second : 0) + QByteArray("Maker\0", 6);
    block += littleEndian<quint16>(4) + entry(0x9003, text, 20, date) +
             entry(0x927c, undefined, quint32(noteBytes.size()), note) +
             entry(0xa002, longNumber, 1, quint32(described.size.width())) +
             entry(0xa003, longNumber, 1, quint32(described.size.height())) +
             littleEndian<quint32>(0) + QByteArray("2024:05:06 07:08:09\0", 20) + noteBytes;
    block += littleEndian<quint16>(3) + entry(0x0103, shortNumber, 1, 6) +
             entry(0x0201, longNumber, 1, pixels) +
             entry(0x0202, longNumber, 1, quint32(thumbnail().size())) + littleEndian<quint32>(0);
    return described.hasThumbnail ? block + thumbnail() : block;
}

// Without its last part the block of `described` with a thumbnail.
QByteArray blockOfTarget(const QSize &size)
{
    QByteArray block = exifBlock({1, size, true});
    const QByteArray next = exifBlock({1, size, false}).mid(8 + 2 + 3 * 12, 4);
    return block.replace(8 + 2 + 3 * 12, 4, next).chopped(thumbnail().size());
}

QByteArray xmpPacket(int orientation, const QSize &size)
{
    return "<?xpacket begin='\xef\xbb\xbf' id='W5M0MpCehiHzreSzNTczkc9d'?>\n"
           "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
           "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>\n"
           "<rdf:Description rdf:about='' xmlns:xmp='http://ns.adobe.com/xap/1.0/'\n"
           " xmlns:tiff='http://ns.adobe.com/tiff/1.0/' "
           "xmlns:exif='http://ns.adobe.com/exif/1.0/'\n"
           " tiff:Orientation = \"" +
           QByteArray::number(orientation) +
           "\" xmp:CreatorTool='A camera'>\n<exif:PixelXDimension>" +
           QByteArray::number(size.width()) + "</exif:PixelXDimension><exif:PixelYDimension>" +
           QByteArray::number(size.height()) +
           "</exif:PixelYDimension></rdf:Description></rdf:RDF></x:xmpmeta>\n<?xpacket end='w'?>";
}

QByteArray resource(quint16 id, const QByteArray &content)
{
    QByteArray head(8, '\0');
    qToBigEndian(id, head.data());
    qToBigEndian(quint32(content.size()), head.data() + 4);
    return "8BIM" + head + content + QByteArray(content.size() % 2, '\0');
}

// A caption; a thumbnail when one is wanted; and a resource of which nobody knows anything.
QByteArray photoshop(bool hasThumbnail)
{
    const QByteArray caption = "A caption.";
    const QByteArray iptc = QByteArray("\x1c\2\x78\0", 4) + char(caption.size()) + caption;
    return resource(0x0404, iptc) +
           (hasThumbnail ? resource(0x040c, "an older picture") : QByteArray()) +
           resource(0x0fa0, "unknown");
}

QImage picture()
{
    QImage image(stored, QImage::Format_RGB32);
    image.fill(QColor(40, 90, 160));
    return image;
}

QByteArray profile()
{
    return QColorSpace(QColorSpace::AdobeRgb).iccProfile();
}

PictureFile everything()
{
    PictureFile embedded;
    embedded.iccProfile = profile();
    embedded.orientation = 6;
    embedded.exif = exifBlock({});
    embedded.xmp = xmpPacket(6, stored);
    embedded.photoshop = photoshop(true);
    return embedded;
}

// TIFF has no EXIF block but the tags, which only Exiv2 puts there.
void addExif(const QString &path, const QByteArray &block)
{
    const Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(path.toStdString());
    image->readMetadata();
    Exiv2::ExifData added;
    Exiv2::ExifParser::decode(added, reinterpret_cast<const Exiv2::byte *>(block.constData()),
                              uint32_t(block.size()));
    for (const Exiv2::Exifdatum &datum : added) {
        if (datum.groupName() != "Thumbnail" && datum.key() != "Exif.Image.Orientation") {
            image->exifData().add(datum);
        }
    }
    image->writeMetadata();
}

QString writeSource(const Workshop &workshop, const QString &format)
{
    QString name = QStringLiteral("source.") + format;
    workshop.write(name, encodePicture(format, picture(), everything()));
    if (format == QLatin1String("tif")) {
        addExif(workshop.path(name), exifBlock({}));
    }
    return name;
}

Exiv2::Image::AutoPtr readBack(const QString &path)
{
    Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(path.toStdString());
    image->readMetadata();
    return image;
}

QString exifText(const Exiv2::Image &image, const char *key)
{
    const auto datum = image.exifData().findKey(Exiv2::ExifKey(key));
    return datum == image.exifData().end() ? QStringLiteral("absent")
                                           : QString::fromStdString(datum->toString());
}

QByteArray exifBytes(const Exiv2::Image &image, const char *key)
{
    const auto datum = image.exifData().findKey(Exiv2::ExifKey(key));
    if (datum == image.exifData().end()) {
        return {};
    }
    QByteArray bytes(int(datum->size()), '\0');
    datum->copy(reinterpret_cast<Exiv2::byte *>(bytes.data()), Exiv2::littleEndian);
    return bytes;
}

QString iptcCaption(const Exiv2::Image &image)
{
    const auto datum = image.iptcData().findKey(Exiv2::IptcKey("Iptc.Application2.Caption"));
    return datum == image.iptcData().end() ? QStringLiteral("absent")
                                           : QString::fromStdString(datum->toString());
}

QString xmpText(const Exiv2::Image &image, const char *key)
{
    const auto datum = image.xmpData().findKey(Exiv2::XmpKey(key));
    return datum == image.xmpData().end() ? QStringLiteral("absent")
                                          : QString::fromStdString(datum->toString());
}

QJsonArray drawnStack()
{
    return {effect(QStringLiteral("BrightnessContrast"), {{QStringLiteral("brightness"), 0.1}})};
}

} // namespace

class tst_exporter_carry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everyPairOfFormats_data();
    void everyPairOfFormats();
    void blocksAreKeptByteForByte_data();
    void blocksAreKeptByteForByte();
    void keepIccKeepsNothingElse_data();
    void keepIccKeepsNothingElse();
    void keepNoneKeepsNothing_data();
    void keepNoneKeepsNothing();
    void aTagThatIsAbsentIsNotAdded();
    void aPacketTooLargeForJpegIsNamed();
    void commentsStayInJpeg();
    void textsStayInPng();
    void extendedXmpStaysInJpeg();
};

void tst_exporter_carry::initTestCase()
{
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    Exiv2::XmpParser::initialize();
}

void tst_exporter_carry::everyPairOfFormats_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("target");
    for (const QString &source : formats) {
        for (const QString &target : formats) {
            QTest::addRow("%s to %s", qPrintable(source), qPrintable(target)) << source << target;
        }
    }
}

void tst_exporter_carry::everyPairOfFormats()
{
    QFETCH(QString, source);
    QFETCH(QString, target);
    const bool hasIptc = source != QLatin1String("webp") && target != QLatin1String("webp");
    const bool losesIptc = source != QLatin1String("webp") && target == QLatin1String("webp");
    const Workshop workshop;
    const QString name = QStringLiteral("target.") + target;
    const ToolRun run = workshop.run(writeSource(workshop, source), name, drawnStack());
    QCOMPARE(run.exitCode, 0);
    if (losesIptc) {
        QVERIFY(run.wroteOneErrorLine());
        QVERIFY2(run.errors.contains("target.webp cannot hold the source's IPTC data"),
                 run.errors.constData());
    } else {
        QCOMPARE(run.errors, QByteArray());
    }

    const QImage result = workshop.readPicture(name);
    QCOMPARE(result.size(), stored.transposed());
    QVERIFY(profileIn(target, workshop.read(name)) == profile());
    const Exiv2::Image::AutoPtr image = readBack(workshop.path(name));
    QCOMPARE(exifText(*image, "Exif.Image.Make"), QStringLiteral("Maker"));
    QCOMPARE(exifText(*image, "Exif.Photo.DateTimeOriginal"),
             QStringLiteral("2024:05:06 07:08:09"));
    QCOMPARE(exifBytes(*image, "Exif.Photo.MakerNote"), makerNote());
    QCOMPARE(exifText(*image, "Exif.Photo.PixelXDimension"), QString::number(stored.height()));
    QCOMPARE(exifText(*image, "Exif.Photo.PixelYDimension"), QString::number(stored.width()));
    const QString orientation = exifText(*image, "Exif.Image.Orientation");
    QVERIFY2(orientation == QLatin1String("1") || orientation == QLatin1String("absent"),
             qPrintable(orientation));
    QCOMPARE(exifText(*image, "Exif.Thumbnail.JPEGInterchangeFormat"), QStringLiteral("absent"));
    QVERIFY(!workshop.read(name).contains("an older picture"));
    QCOMPARE(xmpText(*image, "Xmp.xmp.CreatorTool"), QStringLiteral("A camera"));
    QCOMPARE(xmpText(*image, "Xmp.tiff.Orientation"), QStringLiteral("1"));
    QCOMPARE(xmpText(*image, "Xmp.exif.PixelXDimension"), QString::number(stored.height()));
    QCOMPARE(iptcCaption(*image), QLatin1String(hasIptc ? "A caption." : "absent"));
}

void tst_exporter_carry::blocksAreKeptByteForByte_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("target");
    for (const QString &source : blockFormats) {
        for (const QString &target : blockFormats) {
            QTest::addRow("%s to %s", qPrintable(source), qPrintable(target)) << source << target;
        }
    }
}

void tst_exporter_carry::blocksAreKeptByteForByte()
{
    QFETCH(QString, source);
    QFETCH(QString, target);
    const Workshop workshop;
    const QString name = QStringLiteral("target.") + target;
    QCOMPARE(workshop.run(writeSource(workshop, source), name, {}).exitCode, 0);
    const QByteArray file = workshop.read(name);
    const QByteArray block = blockOfTarget(stored.transposed());
    QCOMPARE(file.count(block), 1);
    QVERIFY(!file.contains(block + thumbnail().left(1) + thumbnail().mid(1, 1)));
    if (target == QLatin1String("webp")) {
        constexpr int flagsAt = 20;
        constexpr char profileExifAndXmp = 0x20 | 0x08 | 0x04;
        QCOMPARE(file.at(flagsAt), profileExifAndXmp);
    }
    QCOMPARE(file.count(xmpPacket(1, stored.transposed())), 1);
    if (source == QLatin1String("jpg") && target == QLatin1String("jpg")) {
        QCOMPARE(file.count(QByteArray("Photoshop 3.0\0", 14) + photoshop(false)), 1);
    }
}

void tst_exporter_carry::keepIccKeepsNothingElse_data()
{
    everyPairOfFormats_data();
}

void tst_exporter_carry::keepIccKeepsNothingElse()
{
    QFETCH(QString, source);
    QFETCH(QString, target);
    const Workshop workshop;
    const QString name = QStringLiteral("target.") + target;
    const ToolRun run =
        workshop.run(writeSource(workshop, source), name, {}, {QStringLiteral("--keep=icc")});
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(workshop.readPicture(name).size(), stored.transposed());
    QVERIFY(profileIn(target, workshop.read(name)) == profile());
    const Exiv2::Image::AutoPtr image = readBack(workshop.path(name));
    QCOMPARE(exifText(*image, "Exif.Image.Make"), QStringLiteral("absent"));
    QVERIFY(image->xmpData().empty());
    QVERIFY(image->iptcData().empty());
}

void tst_exporter_carry::keepNoneKeepsNothing_data()
{
    everyPairOfFormats_data();
}

void tst_exporter_carry::keepNoneKeepsNothing()
{
    QFETCH(QString, source);
    QFETCH(QString, target);
    const Workshop workshop;
    const QString name = QStringLiteral("target.") + target;
    const ToolRun run =
        workshop.run(writeSource(workshop, source), name, {}, {QStringLiteral("--keep=none")});
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(workshop.readPicture(name).size(), stored.transposed());
    QCOMPARE(profileIn(target, workshop.read(name)), QByteArray());
    const QByteArray file = workshop.read(name);
    for (const char *trace : {"Maker", "A camera", "A caption."}) {
        QVERIFY2(!file.contains(trace), trace);
    }
}

void tst_exporter_carry::aTagThatIsAbsentIsNotAdded()
{
    const QByteArray block = QByteArray("II*\0\x08\0\0\0\1\0\x0f\1\2\0\4\0\0\0abc\0\0\0\0\0", 26);
    const Workshop workshop;
    PictureFile embedded;
    embedded.exif = block;
    workshop.write(QStringLiteral("source.png"),
                   encodePicture(QStringLiteral("png"), picture(), embedded));
    QCOMPARE(workshop.run(QStringLiteral("source.png"), QStringLiteral("target.png"), {}).exitCode,
             0);
    QCOMPARE(workshop.read(QStringLiteral("target.png")).count("eXIf" + block), 1);
}

void tst_exporter_carry::aPacketTooLargeForJpegIsNamed()
{
    PictureFile embedded;
    embedded.xmp = xmpPacket(1, stored) + QByteArray(70000, ' ');
    const Workshop workshop;
    workshop.write(QStringLiteral("source.png"),
                   encodePicture(QStringLiteral("png"), picture(), embedded));
    const ToolRun run =
        workshop.run(QStringLiteral("source.png"), QStringLiteral("target.jpg"), {});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.wroteOneErrorLine());
    QVERIFY2(run.errors.contains("target.jpg cannot hold the source's XMP data"),
             run.errors.constData());
    QCOMPARE(workshop.readPicture(QStringLiteral("target.jpg")).size(), stored);
}

void tst_exporter_carry::commentsStayInJpeg()
{
    const Workshop workshop;
    QByteArray file = encodePicture(QStringLiteral("jpg"), picture(), {});
    workshop.write(QStringLiteral("source.jpg"),
                   file.insert(2, QByteArray("\xff\xfe\0\7words", 9)));
    QCOMPARE(workshop.run(QStringLiteral("source.jpg"), QStringLiteral("target.jpg"), drawnStack())
                 .exitCode,
             0);
    QCOMPARE(workshop.read(QStringLiteral("target.jpg")).count(QByteArray("\xff\xfe\0\7words", 9)),
             1);
}

void tst_exporter_carry::textsStayInPng()
{
    const Workshop workshop;
    QImage image = picture();
    image.setText(QStringLiteral("Title"), QStringLiteral("A title"));
    workshop.write(QStringLiteral("source.png"), image);
    for (const QJsonArray &stack : {QJsonArray(), drawnStack()}) {
        QCOMPARE(workshop.run(QStringLiteral("source.png"), QStringLiteral("target.png"), stack)
                     .exitCode,
                 0);
        QCOMPARE(workshop.readPicture(QStringLiteral("target.png")).text(QStringLiteral("Title")),
                 QStringLiteral("A title"));
        QCOMPARE(workshop
                     .run(QStringLiteral("source.png"), QStringLiteral("target.png"), stack,
                          {QStringLiteral("--keep=icc")})
                     .exitCode,
                 0);
        QCOMPARE(workshop.readPicture(QStringLiteral("target.png")).textKeys(), QStringList());
    }
}

void tst_exporter_carry::extendedXmpStaysInJpeg()
{
    const QByteArray part = QByteArray("http://ns.adobe.com/xmp/extension/\0", 35) +
                            QByteArray(32, 'A') + QByteArray("\0\0\0\5\0\0\0\0<a/>\n", 13);
    PictureFile embedded;
    embedded.xmp = xmpPacket(1, stored);
    QByteArray file = encodePicture(QStringLiteral("jpg"), picture(), embedded);
    const QByteArray segment = QByteArray("\xff\xe1\0", 3) + char(part.size() + 2) + part;
    const Workshop workshop;
    workshop.write(QStringLiteral("source.jpg"), file.insert(2, segment));
    QCOMPARE(workshop.run(QStringLiteral("source.jpg"), QStringLiteral("target.jpg"), {}).errors,
             QByteArray());
    QCOMPARE(workshop.read(QStringLiteral("target.jpg")).count(segment), 1);
    const ToolRun run =
        workshop.run(QStringLiteral("source.jpg"), QStringLiteral("target.png"), {});
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.errors.contains("second part of its XMP data"), run.errors.constData());
}

QTEST_GUILESS_MAIN(tst_exporter_carry)

#include "tst_exporter_carry.moc"
