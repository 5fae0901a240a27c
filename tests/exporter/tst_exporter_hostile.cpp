#include "ExporterRun.h"
#include "PictureFiles.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QtEndian>

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

const QString sourcePng = QStringLiteral("source.png");
const QString targetPng = QStringLiteral("target.png");
const QByteArray older("an older target");
const QStringList formats = {QStringLiteral("jpg"), QStringLiteral("png"), QStringLiteral("webp"),
                             QStringLiteral("tif")};

enum Code {
    sourceUnreadable = 4,
    sourceNotAPicture = 5,
    targetFolder = 10,
    targetWrite = 11,
};

// Far more than an export of a small picture takes, also under a sanitizer.
constexpr int soon = 20000;

QImage picture()
{
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(QColor(40, 90, 160));
    return image;
}

QByteArray littleEndian16(int value)
{
    QByteArray bytes(2, '\0');
    qToLittleEndian(quint16(value), bytes.data());
    return bytes;
}

QByteArray littleEndian32(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray entry(int tag, int type, quint32 count, quint32 value)
{
    return littleEndian16(tag) + littleEndian16(type) + littleEndian32(count) +
           littleEndian32(value);
}

const QByteArray tiffStart = QByteArray("II*\0\x08\0\0\0", 8);

// Blocks that have crashed or stalled readers.
QByteArray hostileBlock(const QString &kind)
{
    if (kind == QLatin1String("empty")) {
        return tiffStart;
    }
    if (kind == QLatin1String("more entries than bytes")) {
        return tiffStart + littleEndian16(0xffff) + entry(0x0112, 3, 1, 6);
    }
    if (kind == QLatin1String("a directory that is its own next one")) {
        return tiffStart + littleEndian16(1) + entry(0x0110, 2, 4, 0) + littleEndian32(8);
    }
    if (kind == QLatin1String("a directory inside itself")) {
        return tiffStart + littleEndian16(1) + entry(0x8769, 4, 1, 8) + littleEndian32(0);
    }
    if (kind == QLatin1String("values of 4 GB")) {
        return tiffStart + littleEndian16(3) + entry(0x0112, 3, 0xffffffff, 0xfffffff0) +
               entry(0x010f, 2, 0xffffffff, 26) + entry(0x8769, 4, 1, 0xfffffff8) +
               littleEndian32(0xfffffffe);
    }
    if (kind == QLatin1String("a thumbnail over the directory")) {
        return tiffStart + littleEndian16(1) + entry(0x010f, 2, 4, 0) + littleEndian32(26) +
               littleEndian16(2) + entry(0x0201, 4, 1, 0) + entry(0x0202, 4, 1, 56) +
               littleEndian32(0);
    }
    return QByteArray(60000, char(0xff));
}

QByteArray deepPacket()
{
    constexpr int depth = 20000;
    return "<x:xmpmeta xmlns:x='adobe:ns:meta/' xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-"
           "ns#' xmlns:a='a:'><rdf:RDF><rdf:Description rdf:about=''>" +
           QByteArray("<a:b rdf:parseType='Resource'>").repeated(depth) +
           QByteArray("</a:b>").repeated(depth) + "</rdf:Description></rdf:RDF></x:xmpmeta>";
}

QByteArray chunk(const QByteArray &type, const QByteArray &content)
{
    QByteArray length(4, '\0');
    qToBigEndian(quint32(content.size()), length.data());
    quint32 crc = ~0U;
    for (const char byte : type + content) {
        crc ^= uchar(byte);
        for (int i = 0; i < 8; ++i) {
            crc = (crc >> 1) ^ (0xedb88320U & (0U - (crc & 1)));
        }
    }
    QByteArray checksum(4, '\0');
    qToBigEndian(~crc, checksum.data());
    return length + type + content + checksum;
}

// A file system of its own with that little room; root may make one.
class SmallDisk
{
public:
    explicit SmallDisk(const QString &folder) : m_folder(QFile::encodeName(folder))
    {
        mkdir(m_folder.constData(), 0700);
        m_mounted = mount("none", m_folder.constData(), "tmpfs", 0, "size=64k") == 0;
    }
    ~SmallDisk()
    {
        if (m_mounted) {
            umount(m_folder.constData());
        }
    }

    bool isMounted() const { return m_mounted; }

private:
    Q_DISABLE_COPY(SmallDisk)

    const QByteArray m_folder;
    bool m_mounted = false;
};

} // namespace

class tst_exporter_hostile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blocksThatCannotBeRead_data();
    void blocksThatCannotBeRead();
    void packetsOfAnyDepth_data();
    void packetsOfAnyDepth();
    void propertiesWithoutEnd();
    void bombsInChunks();
    void truncatedResources();
    void aPipeIsNoSource();
    void aPipeIsNoTarget();
    void anEmptySource();
    void aWrongSuffixDoesNotMatter();
    void anyBytesMayStandInAName_data();
    void anyBytesMayStandInAName();
    void aNameMayBeginWithADash();
    void aFullDisk();
    void aDamagedScanIsTold();
    void everyPrefixIsAnError();
};

void tst_exporter_hostile::blocksThatCannotBeRead_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("kind");
    for (const QString &source : formats.mid(0, 3)) {
        for (const char *kind :
             {"empty", "more entries than bytes", "a directory that is its own next one",
              "a directory inside itself", "values of 4 GB", "a thumbnail over the directory",
              "no block at all"}) {
            QTest::addRow("%s, %s", qPrintable(source), kind)
                << source << QString(QLatin1String(kind));
        }
    }
}

void tst_exporter_hostile::blocksThatCannotBeRead()
{
    QFETCH(QString, source);
    QFETCH(QString, kind);
    const Workshop workshop;
    const QString name = QStringLiteral("source.") + source;
    PictureFile embedded;
    embedded.exif = hostileBlock(kind);
    workshop.write(name, encodePicture(source, picture(), embedded));
    for (const QString &target : formats) {
        QElapsedTimer timer;
        timer.start();
        const ToolRun run = workshop.run(name, QStringLiteral("target.") + target, {});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(run.errors.isEmpty() || run.wroteOneErrorLine());
        QVERIFY(timer.elapsed() < soon);
        QCOMPARE(workshop.readPicture(QStringLiteral("target.") + target).size(), picture().size());
    }
}

void tst_exporter_hostile::packetsOfAnyDepth_data()
{
    QTest::addColumn<QString>("source");
    for (const QString &source : formats.mid(1)) {
        QTest::addRow("%s", qPrintable(source)) << source;
    }
}

void tst_exporter_hostile::packetsOfAnyDepth()
{
    QFETCH(QString, source);
    const Workshop workshop;
    const QString name = QStringLiteral("source.") + source;
    PictureFile embedded;
    embedded.xmp = deepPacket();
    workshop.write(name, encodePicture(source, picture(), embedded));
    for (const QString &target : formats.mid(1)) {
        QElapsedTimer timer;
        timer.start();
        const ToolRun run = workshop.run(name, QStringLiteral("target.") + target, {});
        QCOMPARE(run.errors, QByteArray());
        QCOMPARE(run.exitCode, 0);
        QVERIFY(timer.elapsed() < soon);
        QCOMPARE(workshop.read(QStringLiteral("target.") + target).count(deepPacket()), 1);
    }
}

void tst_exporter_hostile::propertiesWithoutEnd()
{
    PictureFile embedded;
    embedded.xmp = QByteArray("tiff:Orientation=\"65\"<xmp:Thumbnails>").repeated(200000) +
                   QByteArray("<xmp:Thumbnails></xmp:Thumbnails>").repeated(200000);
    const Workshop workshop;
    workshop.write(sourcePng, encodePicture(QStringLiteral("png"), picture(), embedded));
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(workshop.run(sourcePng, targetPng, {}).exitCode, 0);
    QVERIFY(timer.elapsed() < soon);
}

// Each of the chunks gives 100 MB of zeros from 100 KB.
void tst_exporter_hostile::bombsInChunks()
{
    const QByteArray bomb = qCompress(QByteArray(100 << 20, '\0')).mid(4);
    const QByteArray file = encodePicture(QStringLiteral("png"), picture(), {});
    constexpr int headerEnd = 8 + 25;
    QByteArray chunks;
    for (int i = 0; i < 200; ++i) {
        chunks += chunk("zTXt", QByteArray("Raw profile type iptc\0\0", 23) + bomb);
        chunks += chunk("iTXt", QByteArray("XML:com.adobe.xmp\0\1\0\0\0", 22) + bomb);
    }
    const Workshop workshop;
    workshop.write(sourcePng, file.left(headerEnd) + chunks + file.mid(headerEnd));
    QElapsedTimer timer;
    timer.start();
    const ToolRun run = workshop.run(sourcePng, targetPng, {});
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(timer.elapsed() < soon, QByteArray::number(timer.elapsed()).constData());
    QVERIFY(workshop.read(targetPng).size() < 1000000);
}

void tst_exporter_hostile::truncatedResources()
{
    const QByteArray whole =
        QByteArray("8BIM\4\4\0\0\0\0\0\6", 12) + QByteArray("\x1c\2\x78\0\1A", 6);
    const Workshop workshop;
    for (int size = 1; size <= whole.size(); ++size) {
        for (const QString &source : {QStringLiteral("jpg"), QStringLiteral("png")}) {
            PictureFile embedded;
            embedded.photoshop = whole.left(size);
            const QString name = QStringLiteral("source.") + source;
            workshop.write(name, encodePicture(source, picture(), embedded));
            QCOMPARE(workshop.run(name, QStringLiteral("target.tif"), {}).exitCode, 0);
        }
    }
}

void tst_exporter_hostile::aPipeIsNoSource()
{
    const Workshop workshop;
    workshop.write(targetPng, older);
    QCOMPARE(mkfifo(QFile::encodeName(workshop.path(sourcePng)).constData(), 0600), 0);
    VERIFY_FAILURE(workshop.run(sourcePng, targetPng, {}), sourceUnreadable, "it is not a file");
    QCOMPARE(workshop.read(targetPng), older);
}

void tst_exporter_hostile::aPipeIsNoTarget()
{
    const Workshop workshop;
    workshop.write(sourcePng, picture());
    QCOMPARE(mkfifo(QFile::encodeName(workshop.path(targetPng)).constData(), 0600), 0);
    VERIFY_FAILURE(workshop.run(sourcePng, targetPng, {}), targetWrite, "is not a file");
}

void tst_exporter_hostile::anEmptySource()
{
    const Workshop workshop;
    workshop.write(sourcePng, QByteArray());
    VERIFY_FAILURE(workshop.run(sourcePng, targetPng, {}), sourceNotAPicture, "it is empty");
}

void tst_exporter_hostile::aWrongSuffixDoesNotMatter()
{
    const Workshop workshop;
    for (const QString &format : formats) {
        workshop.write(QStringLiteral("source.bmp"), encodePicture(format, picture(), {}));
        QCOMPARE(workshop.run(QStringLiteral("source.bmp"), targetPng, {}).exitCode, 0);
        QCOMPARE(difference(workshop.readPicture(targetPng), picture(), 2), QString());
    }
}

void tst_exporter_hostile::anyBytesMayStandInAName_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("blanks") << QByteArray(" a  b ");
    QTest::newRow("a line break") << QByteArray("a\nb");
    QTest::newRow("Latin 1") << QByteArray("caf\xe9");
    QTest::newRow("half a letter") << QByteArray("\xe2\x82");
    QTest::newRow("percent signs") << QByteArray("%1 %n 100%");
}

// Qt in this test would not find such names, so the system's own functions do.
void tst_exporter_hostile::anyBytesMayStandInAName()
{
    QFETCH(QByteArray, name);
    const Workshop workshop;
    const QByteArray folder = QFile::encodeName(workshop.path(QString())) + '/';
    const QByteArray source = folder + name + ".png";
    const QByteArray target = folder + name + "-target.png";
    workshop.write(sourcePng, picture());
    workshop.write(QStringLiteral("stack.json"), QJsonArray());
    QCOMPARE(rename(QByteArray(folder + "source.png").constData(), source.constData()), 0);
    const QByteArray script = "exec \"$1\" --source=\"$2\" --target=\"$3\" --effects=\"$4\"";
    workshop.write(QStringLiteral("run.sh"), "set -- '" + toolPath().toLocal8Bit() + "' '" +
                                                 source + "' '" + target + "' '" + folder +
                                                 "stack.json'\n" + script);
    QProcess process;
    process.start(QStringLiteral("sh"), {workshop.path(QStringLiteral("run.sh"))});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.readAllStandardError(), QByteArray());
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(rename(target.constData(), QByteArray(folder + "target.png").constData()), 0);
    QCOMPARE(difference(workshop.readPicture(targetPng), picture()), QString());
}

void tst_exporter_hostile::aNameMayBeginWithADash()
{
    const Workshop workshop;
    workshop.write(QStringLiteral("--strict.png"), picture());
    workshop.write(QStringLiteral("-stack.json"), QJsonArray());
    QProcess process;
    process.setWorkingDirectory(workshop.path(QString()));
    process.start(toolPath(),
                  {QStringLiteral("--source=--strict.png"), QStringLiteral("--target=-target.png"),
                   QStringLiteral("--effects=-stack.json")});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(difference(workshop.readPicture(QStringLiteral("-target.png")), picture()), QString());
}

void tst_exporter_hostile::aFullDisk()
{
    const Workshop workshop;
    const SmallDisk disk(workshop.path(QStringLiteral("disk")));
    if (!disk.isMounted()) {
        QSKIP("only root may mount a small disk");
    }
    workshop.write(sourcePng, noise(QSize(300, 300), QImage::Format_RGB32));
    workshop.write(QStringLiteral("disk/target.png"), older);
    for (const QJsonArray &stack : {QJsonArray(), QJsonArray{effect(QStringLiteral("Blur"))}}) {
        const ToolRun run = workshop.run(sourcePng, QStringLiteral("disk/target.png"), stack);
        VERIFY_FAILURE(run, targetWrite, "No space left on device");
        QCOMPARE(workshop.read(QStringLiteral("disk/target.png")), older);
        QCOMPARE(QDir(workshop.path(QStringLiteral("disk"))).entryList(QDir::Files | QDir::Hidden),
                 QStringList{targetPng});
    }
}

void tst_exporter_hostile::aDamagedScanIsTold()
{
    const Workshop workshop;
    const QString name = QStringLiteral("source.jpg");
    QByteArray file =
        encodePicture(QStringLiteral("jpg"), noise(QSize(90, 70), QImage::Format_RGB32), {});
    const int scan = file.indexOf("\xff\xda") + 200;
    file.replace(scan, 400, QByteArray("\xff\0", 2).repeated(200));
    workshop.write(name, file);
    const ToolRun run = workshop.run(name, targetPng, {});
    QVERIFY(run.wroteOneErrorLine());
    QVERIFY2(run.errors.contains("warning: the source ") && run.errors.contains("may be damaged"),
             run.errors.constData());
    QCOMPARE(run.exitCode, 0);
}

void tst_exporter_hostile::everyPrefixIsAnError()
{
    PictureFile embedded;
    embedded.orientation = 6;
    const Workshop workshop;
    workshop.write(targetPng, older);
    for (const QString &format : formats) {
        const QString name = QStringLiteral("source.") + format;
        const QByteArray file = encodePicture(format, picture(), embedded);
        for (int size = 1; size < file.size() - 40; size += qMax(1, file.size() / 40)) {
            workshop.write(name, file.left(size));
            const ToolRun run = workshop.run(name, targetPng, {});
            VERIFY_FAILURE(run, sourceNotAPicture, name.toUtf8());
            QCOMPARE(workshop.read(targetPng), older);
        }
    }
}

QTEST_GUILESS_MAIN(tst_exporter_hostile)

#include "tst_exporter_hostile.moc"
