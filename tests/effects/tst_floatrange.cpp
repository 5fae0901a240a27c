#include "tests/support/FloatRange.h"
#include "tests/support/TestMain.h"

#include <algorithm>
#include <cmath>
#include <random>

using namespace ko::imagefx::test;

namespace
{

constexpr int randomSeed = 7;
constexpr int trials = 20000;

// Numbers of both signs and all sizes that colours have.
float randomNumber(std::mt19937 &random)
{
    std::uniform_real_distribution<float> number(-1.5F, 1.5F);
    std::uniform_int_distribution<int> exponent(-12, 0);
    return std::ldexp(number(random), exponent(random));
}

FloatRange single(float number)
{
    return {double(number), double(number), SinglePrecision};
}

bool holds(const FloatRange &range, float number)
{
    return range.low <= double(number) && double(number) <= range.high;
}

// No wider than the rounding of one operation in each direction.
bool isSharp(const FloatRange &range, float number)
{
    const double ulps = (range.high - range.low) / std::ldexp(std::abs(double(number)), -23);
    return number == 0.0F || ulps <= 2.0 * FloatRange::operationUlps + 1.0;
}

} // namespace

// The ranges that the pictures are held against, against the machine's own single precision.
class FloatRangeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void operationsHoldWhatSinglePrecisionGives();
    void exactResultsStayExact();
    void aRangeAroundZeroGivesUnboundedQuotients();
    void absoluteValuesKeepTheirRange();
    void aDoubtfulStepGivesBothSides();
    void equalColorsMixToThemselves();
};

void FloatRangeTest::operationsHoldWhatSinglePrecisionGives()
{
    std::mt19937 random(randomSeed);
    for (int i = 0; i < trials; ++i) {
        const float a = randomNumber(random);
        const float b = randomNumber(random);
        QVERIFY(holds(single(a) + single(b), a + b) && isSharp(single(a) + single(b), a + b));
        QVERIFY(holds(single(a) - single(b), a - b) && isSharp(single(a) - single(b), a - b));
        QVERIFY(holds(single(a) * single(b), a * b) && isSharp(single(a) * single(b), a * b));
        QVERIFY(holds(single(a) / single(b), a / b) && isSharp(single(a) / single(b), a / b));
        const float root = std::sqrt(std::abs(a));
        QVERIFY(holds(sqrt(abs(single(a))), root) && isSharp(sqrt(abs(single(a))), root));
        const FloatRange constant = FloatRange::rounded(double(a) / 3.0, SinglePrecision);
        QVERIFY(holds(constant, float(double(a) / 3.0)));
        QVERIFY(isSharp(constant, float(double(a) / 3.0)));
    }
}

void FloatRangeTest::exactResultsStayExact()
{
    const FloatRange half = single(0.5F) * single(1.0F);
    QCOMPARE(half.low, 0.5);
    QCOMPARE(half.high, 0.5);
    const FloatRange sum = FloatRange::rounded(0.75, HalfPrecision) + 1.0;
    QCOMPARE(sum.low, 1.75);
    QCOMPARE(sum.high, 1.75);
    const FloatRange beyondHalf = FloatRange::rounded(1.0 + 0x1p-11, HalfPrecision);
    QVERIFY(beyondHalf.low <= 1.0 && beyondHalf.high >= 1.0 + 0x1p-10);
}

void FloatRangeTest::aRangeAroundZeroGivesUnboundedQuotients()
{
    const FloatRange around(-1e-7, 1e-7, SinglePrecision);
    QVERIFY(std::isinf((1.0 / around).low) && std::isinf((1.0 / around).high));
    const FloatRange product = (1.0 / around) * 0.0; // 0 or NaN
    QVERIFY(std::isinf(product.low) && std::isinf(product.high));
}

void FloatRangeTest::absoluteValuesKeepTheirRange()
{
    for (const double sign : {1.0, -1.0}) {
        const double ends[] = {sign * 0.25, sign * 0.5};
        const FloatRange range =
            abs({std::min(ends[0], ends[1]), std::max(ends[0], ends[1]), SinglePrecision});
        QCOMPARE(range.low, 0.25);
        QCOMPARE(range.high, 0.5);
    }
    QCOMPARE(abs({-0.25, 0.5, SinglePrecision}).low, 0.0);
    QCOMPARE(abs({-0.75, 0.5, SinglePrecision}).high, 0.75);
}

void FloatRangeTest::aDoubtfulStepGivesBothSides()
{
    QCOMPARE(select(0.49, 0.5, 1.0, 2.0).high, 1.0);
    QCOMPARE(select(0.5, 0.5, 1.0, 2.0).low, 2.0);
    const FloatRange doubtful = select({0.49, 0.51, SinglePrecision}, 0.5, 1.0, 2.0);
    QCOMPARE(doubtful.low, 1.0);
    QCOMPARE(doubtful.high, 2.0);
}

void FloatRangeTest::equalColorsMixToThemselves()
{
    const FloatRange anyShare(0.0, 1.0, SinglePrecision);
    QCOMPARE(mix(0.5, 0.5, anyShare).low, 0.5);
    QCOMPARE(mix(0.5, 0.5, anyShare).high, 0.5);
    QCOMPARE(mix(0.25, 0.75, 0.5).low, 0.5);
}

KORVEL_TEST_MAIN(FloatRangeTest)
#include "tst_floatrange.moc"
