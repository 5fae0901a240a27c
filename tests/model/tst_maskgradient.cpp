#include "imagefx/model/MaskGradient.h"
#include "tests/support/TestMain.h"

#include <algorithm>
#include <cmath>
#include <limits>

using namespace ko::imagefx;

namespace
{

int smoothstepTexel(int x)
{
    const double t = x / 512.0;
    return int(std::floor(255.0 * t * t * (3.0 - 2.0 * t) + 0.5));
}

} // namespace

class MaskGradientTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noStopsAreOpaqueThroughout()
    {
        const MaskGradient gradient = buildMaskGradient({}, MaskGradientFill::Hermite, false);
        QVERIFY(std::all_of(gradient.begin(), gradient.end(), [](uchar b) { return b == 255; }));
    }

    void oneStopHoldsOnBothSides()
    {
        const MaskGradient gradient =
            buildMaskGradient({{0.25F, 0.5F}}, MaskGradientFill::Linear, false);
        QVERIFY(std::all_of(gradient.begin(), gradient.end(), [](uchar b) { return b == 128; }));
    }

    void linearRunsFromStopToStop()
    {
        const MaskGradient gradient =
            buildMaskGradient({{0.0F, 0.0F}, {1.0F, 1.0F}}, MaskGradientFill::Linear, false);
        for (int x = 0; x < 511; ++x) {
            QCOMPARE(int(gradient[size_t(x)]), int(std::floor(255.0 * x / 512.0 + 0.5)));
        }
        QCOMPARE(int(gradient[511]), 255);
    }

    void hermiteFollowsTheSmoothstep()
    {
        const MaskGradient gradient =
            buildMaskGradient({{0.0F, 0.0F}, {1.0F, 1.0F}}, MaskGradientFill::Hermite, false);
        for (int x = 0; x < 511; ++x) {
            QCOMPARE(int(gradient[size_t(x)]), smoothstepTexel(x));
        }
        QCOMPARE(int(gradient[511]), 255);
    }

    void constantKeepsTheLeftStop()
    {
        const MaskGradient gradient =
            buildMaskGradient({{0.0F, 0.0F}, {1.0F, 1.0F}}, MaskGradientFill::Constant, false);
        QVERIFY(std::all_of(gradient.begin(), gradient.end() - 1, [](uchar b) { return b == 0; }));
        QCOMPARE(int(gradient[511]), 255);
    }

    void cyclicEndRunsBackToTheFirstStop()
    {
        const MaskGradient gradient =
            buildMaskGradient({{0.0F, 1.0F}, {0.5F, 0.0F}}, MaskGradientFill::Linear, true);
        QCOMPARE(int(gradient[0]), 255);
        for (int x = 256; x < 511; ++x) {
            QCOMPARE(int(gradient[size_t(x)]), int(std::floor(255.0 * (x - 256) / 256.0 + 0.5)));
        }
        QCOMPARE(int(gradient[511]), 255);
    }

    void endThatIsNotCyclicKeepsTheLastStop()
    {
        const MaskGradient gradient =
            buildMaskGradient({{0.0F, 1.0F}, {0.5F, 0.0F}}, MaskGradientFill::Linear, false);
        QVERIFY(
            std::all_of(gradient.begin() + 256, gradient.end(), [](uchar b) { return b == 0; }));
    }

    void stopsAtOnePlaceMakeAHardStepInListOrder()
    {
        const QVector<MaskGradientStop> stops{{0.5F, 0.0F}, {0.5F, 1.0F}};
        const MaskGradient gradient = buildMaskGradient(stops, MaskGradientFill::Linear, false);
        QCOMPARE(int(gradient[255]), 0);
        QCOMPARE(int(gradient[256]), 255);
        const MaskGradient reversed =
            buildMaskGradient({stops.at(1), stops.at(0)}, MaskGradientFill::Linear, false);
        QCOMPARE(int(reversed[255]), 255);
        QCOMPARE(int(reversed[256]), 0);
    }

    void listOrderDoesNotMatterOtherwise()
    {
        const QVector<MaskGradientStop> stops{{0.1F, 0.2F}, {0.4F, 0.9F}, {0.8F, 0.1F}};
        const QVector<MaskGradientStop> shuffled{stops.at(2), stops.at(0), stops.at(1)};
        QVERIFY(buildMaskGradient(stops, MaskGradientFill::Hermite, true) ==
                buildMaskGradient(shuffled, MaskGradientFill::Hermite, true));
    }

    void roundingIsHalfUp()
    {
        // 0 + 255 * 256 / 512 = 127.5
        const MaskGradient gradient =
            buildMaskGradient({{0.0F, 0.0F}, {1.0F, 1.0F}}, MaskGradientFill::Linear, false);
        QCOMPARE(int(gradient[256]), 128);
    }

    void stopsBeyondTheEndsStayWithinTheTable_data()
    {
        QTest::addColumn<float>("location");
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("last");
        const float infinity = std::numeric_limits<float>::infinity();
        QTest::newRow("above 1") << 7.0F << 255 << 0;
        QTest::newRow("below 0") << -7.0F << 0 << 255;
        QTest::newRow("infinite") << infinity << 255 << 0;
        QTest::newRow("minus infinite") << -infinity << 0 << 255;
        QTest::newRow("huge") << 1.0e30F << 255 << 0;
        QTest::newRow("not a number counts as 0")
            << std::numeric_limits<float>::quiet_NaN() << 255 << 255;
    }

    // Read against a second stop of 1 at 0.5; the sanitizer run sees any write outside.
    void stopsBeyondTheEndsStayWithinTheTable()
    {
        QFETCH(float, location);
        QFETCH(int, first);
        QFETCH(int, last);
        const float value = std::isnan(location) ? 1.0F : 0.0F;
        const MaskGradient gradient =
            buildMaskGradient({{location, value}, {0.5F, 1.0F}}, MaskGradientFill::Linear, false);
        QCOMPARE(int(gradient[0]), first);
        QCOMPARE(int(gradient[511]), last);
    }

    void valuesKeepTheirLowByte()
    {
        // 2 * 255 = 510, whose low byte is 254; -1 * 255 = -255, whose low byte is 1.
        QCOMPARE(int(buildMaskGradient({{0.0F, 2.0F}}, MaskGradientFill::Linear, false)[0]), 254);
        QCOMPARE(int(buildMaskGradient({{0.0F, -1.0F}}, MaskGradientFill::Linear, false)[0]), 1);
    }

    void indexIsRoundedAndClamped()
    {
        QCOMPARE(maskGradientIndex(-1.0F), 0);
        QCOMPARE(maskGradientIndex(0.0F), 0);
        QCOMPARE(maskGradientIndex(0.5F), 256);
        QCOMPARE(maskGradientIndex(0.5F + 0.4F / 512.0F), 256);
        QCOMPARE(maskGradientIndex(0.5F + 0.6F / 512.0F), 257);
        QCOMPARE(maskGradientIndex(1.0F), 511);
        QCOMPARE(maskGradientIndex(9.0F), 511);
    }
};

KORVEL_TEST_MAIN(MaskGradientTest)

#include "tst_maskgradient.moc"
