#include "imagefx/effects/HueTable.h"
#include "imagefx/effects/SelectiveSaturationImageEffect.h"
#include "imagefx/render/ImageEffectState.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TableModel.h"
#include "tests/support/TestMain.h"

#include <QtTest/QSignalSpy>

#include <cmath>
#include <random>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr std::array<const char *, 8> properties = {"red",  "orange", "yellow", "green",
                                                    "aqua", "blue",   "purple", "magenta"};

int byteAt(const QImage &table, int hue)
{
    return table.constScanLine(0)[hue];
}

HueTable tableOf(int index, float value)
{
    HueSaturations saturations{};
    saturations.at(size_t(index)) = value;
    return buildHueTable(saturations);
}

} // namespace

class SelectiveSaturationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void neutralIsNearlyTheIdentity();
    void withoutValuesEveryByteIs128();
    void redFallsAcrossTheEndOfTheCircle();
    void everyRangeReachesItsValueAtItsCentreAlone_data();
    void everyRangeReachesItsValueAtItsCentreAlone();
    void overlappingRangesAddUpAndAreCut();
    void tablesMatchTheModel();
    void pixelsByHand_data();
    void pixelsByHand();
    void greysStayGreyWhateverTheTable();
    void negativeHuesWrapAround();
    void alphaIsUntouched();
    void extremesDrawSomething();
    void settersClampStoreAndSignal();
    void onlyZeroIsNeutral();
    void jsonRoundTrip();
    void theTableFollowsTheSignal();
    void theStateGivesItsPiece();

private:
    OffscreenGl m_gl;
};

void SelectiveSaturationTest::initTestCase()
{
    QVERIFY(m_gl.isValid());
}

// 128 of 255 is a factor of 256 / 255 on the distance from grey.
void SelectiveSaturationTest::neutralIsNearlyTheIdentity()
{
    constexpr double oneLevelAtMost = 1.0;
    SelectiveSaturationImageEffect effect;
    QVERIFY(effect.isNeutral());
    for (const QImage &source : {opaquePicture(), translucentPicture()}) {
        KORVEL_CHECK(checkPicture({&effect}, source, source, oneLevelAtMost));
    }
}

void SelectiveSaturationTest::withoutValuesEveryByteIs128()
{
    for (const uchar byte : buildHueTable({})) {
        QCOMPARE(int(byte), 128);
    }
    const SelectiveSaturationImageEffect effect;
    QCOMPARE(effect.table().size(), QSize(360, 1));
    QCOMPARE(effect.table().format(), QImage::Format_Grayscale8);
    for (int hue = 0; hue < 360; ++hue) {
        QCOMPARE(byteAt(effect.table(), hue), 128);
    }
}

void SelectiveSaturationTest::redFallsAcrossTheEndOfTheCircle()
{
    const HueTable table = tableOf(0, 1.0F);
    QCOMPARE(int(table.at(312)), 128);
    QCOMPARE(int(table.at(339)), 255);
    QCOMPARE(int(table.at(35)), 128);
    for (size_t hue = 313; hue < 339; ++hue) {
        QVERIFY(table.at(hue) >= table.at(hue - 1));
    }
    for (int hue = 340; hue < 360 + 35; ++hue) {
        QVERIFY(table.at(size_t(hue % 360)) <= table.at(size_t((hue - 1) % 360)));
    }
    // At 0 degrees 21 of the 56 that it falls: 1 - 0.375^2 (3 - 0.75) = 0.68359, so 214.66.
    QCOMPARE(int(table.at(0)), 215);
    // Half way, at 367 degrees, 0.5: 191.25.
    QCOMPARE(int(table.at(7)), 191);
    for (size_t hue = 35; hue <= 312; ++hue) {
        QCOMPARE(int(table.at(hue)), 128);
    }
}

void SelectiveSaturationTest::everyRangeReachesItsValueAtItsCentreAlone_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("centre");
    QTest::addColumn<int>("end");
    QTest::newRow("red") << 312 << 339 << 395;
    QTest::newRow("orange") << 338 << 392 << 410;
    QTest::newRow("yellow") << 31 << 51 << 93;
    QTest::newRow("green") << 45 << 90 << 175;
    QTest::newRow("aqua") << 90 << 172 << 202;
    QTest::newRow("blue") << 134 << 200 << 294;
    QTest::newRow("purple") << 183 << 294 << 324;
    QTest::newRow("magenta") << 293 << 321 << 340;
}

void SelectiveSaturationTest::everyRangeReachesItsValueAtItsCentreAlone()
{
    QFETCH(int, start);
    QFETCH(int, centre);
    QFETCH(int, end);
    SelectiveSaturationImageEffect effect;
    effect.setProperty(QTest::currentDataTag(), 1.0F);
    const QImage up = effect.table();
    effect.setProperty(QTest::currentDataTag(), -1.0F);
    const QImage down = effect.table();
    QCOMPARE(byteAt(up, centre % 360), 255);
    QCOMPARE(byteAt(down, centre % 360), 0);
    for (int hue = end; hue <= start + 360; ++hue) {
        QCOMPARE(byteAt(up, hue % 360), 128);
        QCOMPARE(byteAt(down, hue % 360), 128);
    }
    // A smoothstep is far from its ends after a quarter of the way, 0.15625 of it.
    const int quarterUp = start + (centre - start + 3) / 4;
    const int quarterDown = end - (end - centre + 3) / 4;
    QVERIFY(byteAt(up, quarterUp % 360) >= 147);
    QVERIFY(byteAt(up, quarterDown % 360) >= 147);
    QVERIFY(byteAt(down, quarterUp % 360) <= 108);
}

// At 70 degrees the fall of yellow and the rise of green are 0.57 + 0.58.
void SelectiveSaturationTest::overlappingRangesAddUpAndAreCut()
{
    HueSaturations saturations{};
    saturations.at(2) = 1.0F;
    saturations.at(3) = 1.0F;
    const HueTable both = buildHueTable(saturations);
    QCOMPARE(int(both.at(70)), 255);
    QCOMPARE(int(both.at(90)), 255);
    const HueTable yellow = tableOf(2, 0.25F);
    const HueTable green = tableOf(3, 0.25F);
    saturations.at(2) = 0.25F;
    saturations.at(3) = 0.25F;
    const HueTable gentle = buildHueTable(saturations);
    for (size_t hue = 45; hue < 93; ++hue) {
        QVERIFY(std::abs(gentle.at(hue) + 127.5 - yellow.at(hue) - green.at(hue)) <= 1.5);
    }
    saturations.at(3) = -0.25F;
    const HueTable opposed = buildHueTable(saturations);
    QVERIFY(opposed.at(51) > 128 && opposed.at(90) < 128);
}

void SelectiveSaturationTest::tablesMatchTheModel()
{
    // A sum in single precision may round to the other side of a middle.
    constexpr int otherSide = 1;
    constexpr int mostOtherSides = 360 * 50 / 1000;
    constexpr int trials = 50;
    constexpr int randomSeed = 11;
    std::mt19937 random(randomSeed);
    std::uniform_real_distribution<float> value(-1.0F, 1.0F);
    int different = 0;
    for (int i = 0; i < trials; ++i) {
        HueSaturations saturations;
        QVector<double> wide;
        for (float &saturation : saturations) {
            saturation = value(random);
            wide.append(double(saturation));
        }
        const HueTable table = buildHueTable(saturations);
        const QVector<int> expected = modelHueTable(wide);
        for (int hue = 0; hue < 360; ++hue) {
            const int off = std::abs(int(table.at(size_t(hue))) - expected.at(hue));
            QVERIFY(off <= otherSide);
            different += off;
        }
    }
    QVERIFY2(different <= mostOtherSides, QByteArray::number(different).constData());
}

void SelectiveSaturationTest::pixelsByHand_data()
{
    QTest::addColumn<QByteArray>("property");
    QTest::addColumn<float>("value");
    QTest::addColumn<QVector<int>>("source");
    QTest::addColumn<QVector<int>>("expected");
    // Hue 51: (200, 173, 20) has the luma 0.2125 * 200 + 0.7154 * 173 + 0.0721 * 20 = 167.71.
    QTest::newRow("a range at -1 is the luma")
        << QByteArray("yellow") << -1.0F << QVector<int>{200, 173, 20, 255}
        << QVector<int>{168, 168, 168, 255};
    // Hue 90; luma 112.51: twice the distance from it.
    QTest::newRow("a range at 1 doubles the distance from the luma")
        << QByteArray("green") << 1.0F << QVector<int>{99, 120, 78, 255}
        << QVector<int>{85, 127, 43, 255};
    // Hue 200.3 is outside of red's range: only the 256 / 255 of every colour.
    QTest::newRow("other hues stay")
        << QByteArray("red") << -1.0F << QVector<int>{90, 117, 131, 255}
        << QVector<int>{90, 117, 131, 255};
}

void SelectiveSaturationTest::pixelsByHand()
{
    QFETCH(QByteArray, property);
    QFETCH(float, value);
    QFETCH(QVector<int>, source);
    SelectiveSaturationImageEffect effect;
    effect.setProperty(property.constData(), value);
    QTEST(rendered(&effect, source), "expected");
}

// Whatever the factor, a grey is its own luma.
void SelectiveSaturationTest::greysStayGreyWhateverTheTable()
{
    SelectiveSaturationImageEffect effect;
    effect.setOrange(1.0F);
    effect.setRed(1.0F);
    for (const int level : {0, 1, 77, 128, 254, 255}) {
        const QVector<int> grey = {level, level, level, 255};
        QCOMPARE(rendered(&effect, grey), grey);
    }
    QCOMPARE(rendered(&effect, {60, 60, 60, 100}), QVector<int>({60, 60, 60, 100}));
}

// (200, 20, 83) is at -21 degrees: 339, the centre of red.
void SelectiveSaturationTest::negativeHuesWrapAround()
{
    SelectiveSaturationImageEffect effect;
    effect.setRed(-1.0F);
    const QVector<int> result = rendered(&effect, {200, 20, 83, 255});
    QCOMPARE(result, QVector<int>({63, 63, 63, 255}));
}

void SelectiveSaturationTest::alphaIsUntouched()
{
    SelectiveSaturationImageEffect effect;
    effect.setRed(0.5F);
    effect.setBlue(-0.5F);
    KORVEL_CHECK(checkAlphaUntouched(&effect));
}

void SelectiveSaturationTest::extremesDrawSomething()
{
    SelectiveSaturationImageEffect effect;
    for (const float value : {1.0F, -1.0F}) {
        for (const char *property : properties) {
            effect.setProperty(property, value);
        }
        KORVEL_CHECK(checkAlphaUntouched(&effect));
    }
    QCOMPARE(rendered(&effect, {0, 0, 0, 255}), QVector<int>({0, 0, 0, 255}));
    QCOMPARE(rendered(&effect, {255, 255, 255, 255}), QVector<int>({255, 255, 255, 255}));
}

void SelectiveSaturationTest::settersClampStoreAndSignal()
{
    SelectiveSaturationImageEffect effect;
    for (const char *property : properties) {
        QCOMPARE(effect.property(property), QVariant(0.0F));
        KORVEL_CHECK(checkIgnored(&effect, property, -0.0F));
        KORVEL_CHECK(checkSetter(&effect, property, 0.5F, 0.5F));
        KORVEL_CHECK(checkIgnored(&effect, property, 0.500001F));
        KORVEL_CHECK(checkSetter(&effect, property, 2.0F, 1.0F));
        KORVEL_CHECK(checkIgnored(&effect, property, 7.0F));
        KORVEL_CHECK(checkSetter(&effect, property, -5.0F, -1.0F));
        KORVEL_CHECK(checkIgnored(&effect, property, -1.5F));
    }
}

void SelectiveSaturationTest::onlyZeroIsNeutral()
{
    for (const char *property : properties) {
        SelectiveSaturationImageEffect effect;
        effect.setProperty(property, 0.000001F);
        QVERIFY(!effect.isNeutral());
        effect.setProperty(property, -0.0F);
        QVERIFY(effect.isNeutral());
    }
}

void SelectiveSaturationTest::jsonRoundTrip()
{
    SelectiveSaturationImageEffect effect;
    float value = -0.85F;
    for (const char *property : properties) {
        effect.setProperty(property, value);
        value += 0.21F;
    }
    KORVEL_CHECK(checkJsonRoundTrip(&effect));
}

// First the property's own signal, then the table, then whoever else waits for an update.
void SelectiveSaturationTest::theTableFollowsTheSignal()
{
    SelectiveSaturationImageEffect effect;
    QVector<int> seen;
    connect(&effect, &SelectiveSaturationImageEffect::yellowChanged, this,
            [&] { seen.append(byteAt(effect.table(), 51)); });
    connect(&effect, &ImageEffect::updateRequired, this,
            [&] { seen.append(byteAt(effect.table(), 51)); });
    effect.setYellow(-1.0F);
    QCOMPARE(seen, QVector<int>({128, 0}));
    const QImage before = effect.table();
    effect.setYellow(1.0F);
    QCOMPARE(byteAt(before, 51), 0);
    QCOMPARE(byteAt(effect.table(), 51), 255);
    const QVector<int> green = {78, 120, 79, 255};
    QCOMPARE(rendered(&effect, green), green);
    effect.setGreen(-1.0F);
    QVERIFY(rendered(&effect, green) != green);
}

void SelectiveSaturationTest::theStateGivesItsPiece()
{
    SelectiveSaturationImageEffect effect;
    const QString id = QStringLiteral("ko.orvanto.imageeffect.SelectiveSaturation");
    QCOMPARE(effect.effectId(), id);
    QCOMPARE(effect.currentState()->effectId(), id);
    QVERIFY(!shaderPieceOf(&effect).isEmpty());
    QCOMPARE(shaderPieceOf(&effect),
             ImageEffect::readShader(QStringLiteral("fx_selectivesaturation.frag")));
}

KORVEL_TEST_MAIN(SelectiveSaturationTest)
#include "tst_selectivesaturation.moc"
