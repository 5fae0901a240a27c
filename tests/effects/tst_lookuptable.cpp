#include "imagefx/effects/LookupTableImageEffect.h"
#include "imagefx/render/ImageEffectState.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TableCases.h"
#include "tests/support/TestMain.h"

#include <QtCore/QBuffer>
#include <QtCore/QTemporaryDir>
#include <QtCore/QtEndian>
#include <QtGui/QColorSpace>
#include <QtTest/QSignalSpy>

#include <random>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

// A translucent colour between two levels is cut to the lower one before it is looked up.
constexpr double lookupTolerance = 1.0;

const std::array<ModelLevels, 3> threePowers = {powerLevels(0.6), powerLevels(1.3),
                                                powerLevels(2.2)};
const QString prefix = QStringLiteral("data:image/png;base64,");

void expectMessage(const char *text)
{
    QTest::ignoreMessage(QtCriticalMsg, text);
}

// A PNG of a table with a comment that fills it up to a number of bytes.
QByteArray pngOfSize(int bytes)
{
    std::mt19937 random(3);
    const QImage plain = tableImage(threePowers);
    // Characters at random, so that compressing them hardly helps.
    QString text;
    QByteArray png;
    while (png.size() < bytes) {
        text += QChar(33 + int(random() % 90));
        QImage image = plain;
        image.setText(QStringLiteral("Comment"), text);
        png.clear();
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "png");
    }
    return png.size() == bytes ? png : QByteArray();
}

// A BMP of a table, filled up in front of its colours, so that its last byte is the last colour's.
QByteArray bmpOfSize(int bytes)
{
    QByteArray bmp;
    QBuffer buffer(&bmp);
    buffer.open(QIODevice::WriteOnly);
    tableImage(threePowers).save(&buffer, "bmp");
    const int filling = bytes - bmp.size();
    const int colors = bmp.size() - 3 * 256;
    bmp.insert(colors, QByteArray(filling, '\0'));
    constexpr int offsetField = 10;
    qToLittleEndian(colors + filling, bmp.data() + offsetField);
    return bmp;
}

QUrl urlOf(const QByteArray &png)
{
    return QUrl(prefix + QLatin1String(png.toBase64()));
}

} // namespace

class LookupTableTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void neutralIsTheIdentity();
    void pixelsByHand_data();
    void pixelsByHand();
    void alphaIsUntouched();
    void extremesDrawSomething();
    void jsonRoundTrip();
    void everyUpdateUploadsTheTable();
    void aPresetLoadsOnceAndSignalsOnce();
    void aLocalFileLoads();
    void otherPixelFormatsBecomeRgb_data();
    void otherPixelFormatsBecomeRgb();
    void otherSizesClearTheTable_data();
    void otherSizesClearTheTable();
    void whatCannotBeReadClearsTheTable_data();
    void whatCannotBeReadClearsTheTable();
    void whatIsNotSupportedKeepsTheTable_data();
    void whatIsNotSupportedKeepsTheTable();
    void anEmptyUrlIsAnUnsupportedScheme();
    void aDataUrlOf2048CharactersLoads();
    void aLongerDataUrlIsCut();
    void toDataUrlGivesBackTheSameTable();
    void toDataUrlCarriesThePixelsAlone();
    void toDataUrlOfAnythingElseIsEmpty();
    void theStateGivesItsPiece();

private:
    QUrl save(const QImage &image, const QString &name) const;

    OffscreenGl m_gl;
    QTemporaryDir m_folder;
};

void LookupTableTest::initTestCase()
{
    QVERIFY(m_gl.isValid());
    QVERIFY(m_folder.isValid());
}

QUrl LookupTableTest::save(const QImage &image, const QString &name) const
{
    const QString path = m_folder.filePath(name);
    return image.save(path) ? QUrl::fromLocalFile(path) : QUrl();
}

void LookupTableTest::neutralIsTheIdentity()
{
    LookupTableImageEffect effect;
    QVERIFY(effect.isNeutral());
    QVERIFY(effect.table().isEmpty());
    QVERIFY(effect.lut().isNull());
    KORVEL_CHECK(checkIdentity({&effect}, opaquePicture()));
    KORVEL_CHECK(
        checkPicture({&effect}, translucentPicture(), translucentPicture(), lookupTolerance));
}

void LookupTableTest::pixelsByHand_data()
{
    QTest::addColumn<QVector<int>>("source");
    QTest::addColumn<QVector<int>>("expected");
    // The table: red i / 2, green 255 - i, blue 7 up to level 3 and 247 from there on.
    QTest::newRow("each channel has its own table")
        << QVector<int>{100, 100, 100, 255} << QVector<int>{50, 155, 247, 255};
    QTest::newRow("black") << QVector<int>{0, 0, 0, 255} << QVector<int>{0, 255, 7, 255};
    QTest::newRow("white") << QVector<int>{255, 255, 255, 255} << QVector<int>{127, 0, 247, 255};
    QTest::newRow("nothing between two entries")
        << QVector<int>{3, 4, 4, 255} << QVector<int>{1, 251, 247, 255};
    // 51 of 102 is 128 of 256: red 64, green 127, blue 247 at 0.4 of them.
    QTest::newRow("translucent") << QVector<int>{51, 51, 51, 102} << QVector<int>{26, 51, 99, 102};
}

void LookupTableTest::pixelsByHand()
{
    QFETCH(QVector<int>, source);
    std::array<ModelLevels, 3> tables{};
    for (int i = 0; i < 256; ++i) {
        tables[0][size_t(i)] = i / 2;
        tables[1][size_t(i)] = 255 - i;
        tables[2][size_t(i)] = i < 4 ? 7 : 247;
    }
    const std::unique_ptr<ImageEffect> effect = lookupTable(QString(), tables).create();
    QVERIFY(!effect->isNeutral());
    QTEST(rendered(effect.get(), source), "expected");
}

void LookupTableTest::alphaIsUntouched()
{
    const std::unique_ptr<ImageEffect> effect = lookupTable(QString(), threePowers).create();
    KORVEL_CHECK(checkAlphaUntouched(effect.get()));
}

void LookupTableTest::extremesDrawSomething()
{
    ModelLevels white{};
    white.fill(255);
    const std::unique_ptr<ImageEffect> effect =
        lookupTable(QString(), {white, white, white}).create();
    KORVEL_CHECK(checkAlphaUntouched(effect.get()));
    QCOMPARE(rendered(effect.get(), {0, 0, 0, 255}), QVector<int>({255, 255, 255, 255}));
    // More than white, un-premultiplied, takes the last entry.
    const std::unique_ptr<ImageEffect> powers = lookupTable(QString(), threePowers).create();
    QCOMPARE(rendered(powers.get(), {255, 255, 255, 128}), QVector<int>({128, 128, 128, 128}));
}

void LookupTableTest::jsonRoundTrip()
{
    const std::unique_ptr<ImageEffect> effect = lookupTable(QString(), threePowers).create();
    KORVEL_CHECK(checkJsonRoundTrip(effect.get()));
    LookupTableImageEffect empty;
    expectMessage("Unsupported url scheme ");
    empty.setTable(QUrl(QStringLiteral("relative.png")));
    expectMessage("Unsupported url scheme ");
    KORVEL_CHECK(checkJsonRoundTrip(&empty));
}

void LookupTableTest::everyUpdateUploadsTheTable()
{
    LookupTableImageEffect effect;
    const QVector<int> grey = {128, 128, 128, 255};
    QCOMPARE(rendered(&effect, grey), grey);
    effect.setTable(dataUrl(tableImage(threePowers)));
    const QVector<int> graded = {threePowers[0][128], threePowers[1][128], threePowers[2][128],
                                 255};
    QCOMPARE(rendered(&effect, grey), graded);
    expectMessage("Invalid image dimensions 0x0");
    effect.setTable(QUrl(QStringLiteral("qrc:/nothing.png")));
    QCOMPARE(rendered(&effect, grey), grey);
}

void LookupTableTest::aPresetLoadsOnceAndSignalsOnce()
{
    LookupTableImageEffect effect;
    const QVariant url = QUrl(QStringLiteral("qrc:/imagefx/lib/lut/fargo.png"));
    bool isLoaded = false;
    connect(&effect, &LookupTableImageEffect::tableChanged, this,
            [&] { isLoaded = !effect.lut().isNull(); });
    KORVEL_CHECK(checkSetter(&effect, "table", url, url));
    QVERIFY(isLoaded);
    QCOMPARE(effect.lut().size(), QSize(256, 1));
    QCOMPARE(effect.lut().format(), QImage::Format_RGB888);
    QVERIFY(!effect.isNeutral());
}

void LookupTableTest::aLocalFileLoads()
{
    LookupTableImageEffect effect;
    const QImage table = tableImage(threePowers);
    const QVariant url = save(table, QStringLiteral("table.png"));
    KORVEL_CHECK(checkSetter(&effect, "table", url, url));
    QCOMPARE(effect.lut(), table);
    // The format is told from the file, not from its name.
    QVERIFY(table.save(m_folder.filePath(QStringLiteral("table.txt")), "bmp"));
    effect.setTable(QUrl::fromLocalFile(m_folder.filePath(QStringLiteral("table.txt"))));
    QCOMPARE(effect.lut(), table);
}

void LookupTableTest::otherPixelFormatsBecomeRgb_data()
{
    QTest::addColumn<int>("format");
    QTest::newRow("RGBA") << int(QImage::Format_RGBA8888);
    QTest::newRow("indexed") << int(QImage::Format_Indexed8);
    QTest::newRow("grey") << int(QImage::Format_Grayscale8);
}

void LookupTableTest::otherPixelFormatsBecomeRgb()
{
    QFETCH(int, format);
    const ModelLevels power = powerLevels(0.6);
    const QImage grey = tableImage({power, power, power});
    QImage other = grey.convertToFormat(QImage::Format(format));
    if (format == QImage::Format_RGBA8888) {
        for (int x = 0; x < 256; ++x) {
            other.scanLine(0)[4 * x + 3] = uchar(255 - x);
        }
    }
    LookupTableImageEffect effect;
    effect.setTable(save(other, QStringLiteral("other.png")));
    QCOMPARE(effect.lut().format(), QImage::Format_RGB888);
    QCOMPARE(effect.lut(), grey);
    LookupTableImageEffect inlined;
    inlined.setTable(inlined.toDataUrl(effect.table()));
    QCOMPARE(inlined.lut(), grey);
}

void LookupTableTest::otherSizesClearTheTable_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("two rows") << QSize(256, 2) << QByteArray("Invalid image dimensions 256x2");
    QTest::newRow("too narrow") << QSize(255, 1) << QByteArray("Invalid image dimensions 255x1");
    QTest::newRow("on its side") << QSize(1, 256) << QByteArray("Invalid image dimensions 1x256");
}

void LookupTableTest::otherSizesClearTheTable()
{
    QFETCH(QSize, size);
    QFETCH(QByteArray, message);
    QImage image(size, QImage::Format_RGB888);
    image.fill(Qt::red);
    const QUrl url = save(image, QStringLiteral("size.png"));
    LookupTableImageEffect effect;
    effect.setTable(dataUrl(tableImage(threePowers)));
    const QSignalSpy changed(&effect, &LookupTableImageEffect::tableChanged);
    const QSignalSpy updates(&effect, &ImageEffect::updateRequired);
    expectMessage(message.constData());
    effect.setTable(url);
    QVERIFY(effect.lut().isNull());
    QVERIFY(effect.isNeutral());
    QCOMPARE(effect.table(), url);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(updates.count(), 1);
}

void LookupTableTest::whatCannotBeReadClearsTheTable_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::newRow("no such file") << QUrl::fromLocalFile(QStringLiteral("/nothing/table.png"));
    QTest::newRow("no such resource") << QUrl(QStringLiteral("qrc:/imagefx/lib/lut/none.png"));
    QTest::newRow("not a picture") << QUrl(prefix + QStringLiteral("AAAA"));
    QTest::newRow("nothing behind the prefix") << QUrl(prefix);
}

void LookupTableTest::whatCannotBeReadClearsTheTable()
{
    QFETCH(QUrl, url);
    LookupTableImageEffect effect;
    effect.setTable(dataUrl(tableImage(threePowers)));
    QVERIFY(!effect.isNeutral());
    expectMessage("Invalid image dimensions 0x0");
    effect.setTable(url);
    QVERIFY(effect.isNeutral());
}

void LookupTableTest::whatIsNotSupportedKeepsTheTable_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("http") << QUrl(QStringLiteral("http://example.com/table.png"))
                          << QByteArray("Unsupported url scheme http");
    QTest::newRow("image") << QUrl(QStringLiteral("image://table/1"))
                           << QByteArray("Unsupported url scheme image");
    QTest::newRow("no scheme") << QUrl(QStringLiteral("table.png"))
                               << QByteArray("Unsupported url scheme ");
    QTest::newRow("JPEG") << QUrl(QStringLiteral("data:image/jpeg;base64,/9j/4A=="))
                          << QByteArray("Unsupported data URL");
    QTest::newRow("prefix in capitals")
        << QUrl(QStringLiteral("data:image/PNG;base64,AAAA")) << QByteArray("Unsupported data URL");
    QTest::newRow("without base64")
        << QUrl(QStringLiteral("data:image/png,AAAA")) << QByteArray("Unsupported data URL");
}

void LookupTableTest::whatIsNotSupportedKeepsTheTable()
{
    QFETCH(QUrl, url);
    QFETCH(QByteArray, message);
    LookupTableImageEffect effect;
    effect.setTable(dataUrl(tableImage(threePowers)));
    const QSignalSpy changed(&effect, &LookupTableImageEffect::tableChanged);
    const QSignalSpy updates(&effect, &ImageEffect::updateRequired);
    expectMessage(message.constData());
    effect.setTable(url);
    QCOMPARE(effect.lut(), tableImage(threePowers));
    QCOMPARE(effect.table(), url);
    QVERIFY(!effect.isNeutral());
    QCOMPARE(changed.count(), 1);
    QCOMPARE(updates.count(), 1);
    effect.setTable(url);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(updates.count(), 1);
}

void LookupTableTest::anEmptyUrlIsAnUnsupportedScheme()
{
    LookupTableImageEffect effect;
    effect.setTable(dataUrl(tableImage(threePowers)));
    expectMessage("Unsupported url scheme ");
    effect.setTable(QUrl());
    QCOMPARE(effect.table(), QUrl());
    QVERIFY(!effect.isNeutral());
}

void LookupTableTest::aDataUrlOf2048CharactersLoads()
{
    const QByteArray png = pngOfSize(2048 / 4 * 3);
    QCOMPARE(png.toBase64().size(), 2048);
    LookupTableImageEffect effect;
    effect.setTable(urlOf(png));
    QCOMPARE(effect.lut(), tableImage(threePowers));
    // The format is told from the bytes. Of this one every single byte counts.
    const QByteArray bmp = bmpOfSize(2048 / 4 * 3);
    QCOMPARE(bmp.toBase64().size(), 2048);
    effect.setTable(urlOf(bmp));
    QCOMPARE(effect.lut(), tableImage(threePowers));
}

void LookupTableTest::aLongerDataUrlIsCut()
{
    const QByteArray png = pngOfSize(3000);
    QVERIFY(!QImage::fromData(png).isNull());
    LookupTableImageEffect effect;
    effect.setTable(dataUrl(tableImage(threePowers)));
    expectMessage("Invalid image dimensions 0x0");
    effect.setTable(urlOf(png));
    QVERIFY(effect.isNeutral());
    QCOMPARE(effect.table(), urlOf(png));
    // What stands behind the 2048 characters does not count.
    LookupTableImageEffect padded;
    padded.setTable(QUrl(urlOf(pngOfSize(2048 / 4 * 3)).toString() + QStringLiteral("AAAA")));
    QCOMPARE(padded.lut(), tableImage(threePowers));
}

void LookupTableTest::toDataUrlGivesBackTheSameTable()
{
    const QImage table = tableImage(threePowers);
    const QUrl file = save(table, QStringLiteral("table.png"));
    LookupTableImageEffect effect;
    const QSignalSpy changed(&effect, &LookupTableImageEffect::tableChanged);
    QUrl url;
    QVERIFY(QMetaObject::invokeMethod(&effect, "toDataUrl", Q_RETURN_ARG(QUrl, url),
                                      Q_ARG(QUrl, file)));
    QVERIFY(url.toString().startsWith(prefix));
    QVERIFY(effect.isNeutral());
    QCOMPARE(changed.count(), 0);
    effect.setTable(url);
    QCOMPARE(effect.lut(), table);
}

void LookupTableTest::toDataUrlCarriesThePixelsAlone()
{
    const LookupTableImageEffect effect;
    const QImage plain = tableImage(threePowers);
    QImage laden = plain;
    laden.setColorSpace(QColorSpace(QColorSpace::AdobeRgb));
    laden.setText(QStringLiteral("Comment"), QString(3000, QLatin1Char('x')));
    QCOMPARE(effect.toDataUrl(save(laden, QStringLiteral("laden.png"))),
             effect.toDataUrl(save(plain, QStringLiteral("plain.png"))));
}

void LookupTableTest::toDataUrlOfAnythingElseIsEmpty()
{
    const LookupTableImageEffect effect;
    QImage twoRows(256, 2, QImage::Format_RGB888);
    twoRows.fill(Qt::red);
    QCOMPARE(effect.toDataUrl(save(twoRows, QStringLiteral("two.png"))), QUrl());
    QCOMPARE(effect.toDataUrl(QUrl::fromLocalFile(QStringLiteral("/nothing.png"))), QUrl());
    QCOMPARE(effect.toDataUrl(QUrl(QStringLiteral("qrc:/imagefx/lib/lut/fargo.png"))), QUrl());
    QCOMPARE(effect.toDataUrl(dataUrl(tableImage(threePowers))), QUrl());
    QCOMPARE(effect.toDataUrl(QUrl()), QUrl());
}

void LookupTableTest::theStateGivesItsPiece()
{
    LookupTableImageEffect effect;
    const QString id = QStringLiteral("ko.orvanto.imageeffect.LUT");
    QCOMPARE(effect.effectId(), id);
    QCOMPARE(effect.currentState()->effectId(), id);
    QVERIFY(!shaderPieceOf(&effect).isEmpty());
    QCOMPARE(shaderPieceOf(&effect), ImageEffect::readShader(QStringLiteral("fx_lut.frag")));
}

KORVEL_TEST_MAIN(LookupTableTest)
#include "tst_lookuptable.moc"
