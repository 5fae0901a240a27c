#include "engine/TapFinder.h"
#include "imagefx/effects/BlurKernel.h"

#include <QtTest/QTest>

#include <algorithm>
#include <cmath>

using namespace ko::imagefx;
using namespace ko::imagefx::engine;

namespace
{

// Sums of up to 33 numbers of single precision; the blur's weights have six decimals.
constexpr double weightError = 3e-6;

// What a piece should read: the offsets to one side of the centre, which is not among them. Those
// to the other side are the same.
struct Expected {
    double centre;
    QVector<int> offsets;
    QVector<double> weights;
};

QByteArray text(const std::vector<Tap> &taps)
{
    QByteArray texts;
    for (const Tap &tap : taps) {
        texts +=
            ' ' + QByteArray::number(tap.offset) + ':' + QByteArray::number(double(tap.weight));
    }
    return texts;
}

bool isTap(const Tap &tap, int offset, double weight)
{
    return tap.offset == offset && std::abs(double(tap.weight) - weight) < weightError;
}

bool areTaps(const std::vector<Tap> &taps, const Expected &expected)
{
    const int sides = expected.offsets.size();
    if (int(taps.size()) != 2 * sides + 1 || !isTap(taps.at(size_t(sides)), 0, expected.centre)) {
        return false;
    }
    for (int i = 0; i < sides; ++i) {
        const int offset = expected.offsets.at(i);
        const double weight = expected.weights.at(i);
        const auto centre = taps.begin() + sides;
        if (!isTap(*(centre + 1 + i), offset, weight) ||
            !isTap(*(centre - 1 - i), -offset, weight)) {
            return false;
        }
    }
    return true;
}

double sumOf(const std::vector<Tap> &taps)
{
    double sum = 0.0;
    for (const Tap &tap : taps) {
        sum += double(tap.weight);
    }
    return sum;
}

struct Arrangement {
    Sums sums;
    std::vector<int> first;
    std::vector<int> second;
};

Arrangement arranged(const std::vector<Tap> &taps)
{
    Arrangement made;
    arrangeTaps(taps, &made.sums, &made.first, &made.second);
    return made;
}

// The taps again, in order.
std::vector<Tap> takenApart(const Arrangement &made)
{
    std::vector<Tap> taps;
    for (size_t i = 0; i < made.first.size(); ++i) {
        taps.push_back({made.first.at(i), made.sums.weights[i]});
        if (i < made.second.size()) {
            taps.push_back({made.second.at(i), made.sums.weights[i]});
        }
    }
    std::sort(taps.begin(), taps.end(),
              [](const Tap &a, const Tap &b) { return a.offset < b.offset; });
    return taps;
}

void addConvolutions()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("first pass of blur") << int(Convolution::BlurPre);
    QTest::newRow("blur") << int(Convolution::Blur);
    QTest::newRow("first pass of sharpen") << int(Convolution::SharpenPre);
    QTest::newRow("sharpen") << int(Convolution::Sharpen);
}

const QVector<float> radii = {0.01F, 0.5F,  1.0F,  1.2F,  2.0F,  2.7F,   4.0F,   9.7F,
                              16.0F, 17.0F, 20.5F, 33.3F, 80.0F, 100.0F, 1234.5F};

} // namespace

// Which texels a blur or sharpen reads, and how much each counts.
class EngineTapsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstPassesLieAcrossTheSecond();
    void tapsOfBlurByHand_data();
    void tapsOfBlurByHand();
    void tapsOfSharpenByHand_data();
    void tapsOfSharpenByHand();
    void aTapBetweenTwoTexelsTakesTheOuter();
    void weightsAddUp_data() { addConvolutions(); }
    void weightsAddUp();
    void offsetsAscendWithTheCentreAmongThem_data() { addConvolutions(); }
    void offsetsAscendWithTheCentreAmongThem();
    void tapsOfOneWeightArePaired();
    void tapsOfDifferentWeightsStaySingle();
    void arrangingLosesNothing_data() { addConvolutions(); }
    void arrangingLosesNothing();
    void wholeWeightsAreAsFineAsTheyCanBe_data() { addConvolutions(); }
    void wholeWeightsAreAsFineAsTheyCanBe();
};

void EngineTapsTest::theFirstPassesLieAcrossTheSecond()
{
    QVERIFY(isVertical(Convolution::BlurPre));
    QVERIFY(!isVertical(Convolution::Blur));
    QVERIFY(!isVertical(Convolution::SharpenPre));
    QVERIFY(isVertical(Convolution::Sharpen));
}

// N taps on each side, N whole pixels of the radius from 1 to 16, at i / (N + 1) of it.
void EngineTapsTest::tapsOfBlurByHand_data()
{
    QTest::addColumn<float>("radius");
    QTest::addColumn<QVector<int>>("places"); // the texel of each tap of one side
    // 0.15, 0.4: within the centre's texel.
    QTest::newRow("0.3") << 0.3F << QVector<int>{0};
    QTest::newRow("0.8") << 0.8F << QVector<int>{0};
    // 0.6
    QTest::newRow("1.2") << 1.2F << QVector<int>{1};
    // 0.667, 1.333: both in the next texel.
    QTest::newRow("2") << 2.0F << QVector<int>{1, 1};
    // 0.8, 1.6, 2.4, 3.2
    QTest::newRow("4") << 4.0F << QVector<int>{1, 2, 2, 3};
    // i 16/17: 0.94, 1.88, ..., 7.53, 8.47, ..., 15.06
    QTest::newRow("16") << 16.0F
                        << QVector<int>{1, 2, 3, 4, 5, 6, 7, 8, 8, 9, 10, 11, 12, 13, 14, 15};
    // i 20.5/17 = i 1.20588: 1.2, 2.4, 3.6, 4.8, 6.03, 7.2, 8.4, 9.6, 10.9, 12.06, ..., 19.3
    QTest::newRow("20.5") << 20.5F
                          << QVector<int>{1, 2, 4, 5, 6, 7, 8, 10, 11, 12, 13, 14, 16, 17, 18, 19};
    // i 100/17 = i 5.88235
    QTest::newRow("100") << 100.0F << QVector<int>{6,  12, 18, 24, 29, 35, 41, 47,
                                                   53, 59, 65, 71, 76, 82, 88, 94};
}

void EngineTapsTest::tapsOfBlurByHand()
{
    QFETCH(float, radius);
    QFETCH(QVector<int>, places);
    const QVector<float> weights = blurWeights(places.size());
    Expected expected{double(weights.at(0)), {}, {}};
    for (int i = 0; i < places.size(); ++i) {
        const double weight = double(weights.at(i + 1));
        if (places.at(i) == 0) {
            expected.centre += 2.0 * weight;
        } else if (expected.offsets.isEmpty() || expected.offsets.last() != places.at(i)) {
            expected.offsets.append(places.at(i));
            expected.weights.append(weight);
        } else {
            expected.weights.last() += weight;
        }
    }
    for (const auto kind : {Convolution::BlurPre, Convolution::Blur}) {
        const std::vector<Tap> taps = findTaps(kind, radius);
        QVERIFY2(areTaps(taps, expected), text(taps).constData());
    }
}

// N taps on each side, N whole pixels of the radius from 1 to 16, at i / N of it, all of one
// weight.
void EngineTapsTest::tapsOfSharpenByHand_data()
{
    QTest::addColumn<float>("radius");
    QTest::addColumn<int>("taps");
    QTest::addColumn<double>("centre"); // how many taps read it
    QTest::addColumn<QVector<int>>("offsets");
    QTest::addColumn<QVector<double>>("counts"); // how many taps read each
    using Counts = QVector<double>;
    QTest::newRow("0.25") << 0.25F << 1 << 3.0 << QVector<int>() << Counts();
    QTest::newRow("1") << 1.0F << 1 << 1.0 << QVector<int>{1} << Counts{1.0};
    // 1.35, 2.7
    QTest::newRow("2.7") << 2.7F << 2 << 1.0 << QVector<int>{1, 3} << Counts{1.0, 1.0};
    QTest::newRow("16") << 16.0F << 16 << 1.0
                        << QVector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}
                        << Counts(16, 1.0);
    QTest::newRow("80") << 80.0F << 16 << 1.0 << QVector<int>{5,  10, 15, 20, 25, 30, 35, 40,
                                                              45, 50, 55, 60, 65, 70, 75, 80}
                        << Counts(16, 1.0);
}

void EngineTapsTest::tapsOfSharpenByHand()
{
    QFETCH(float, radius);
    QFETCH(int, taps);
    QFETCH(double, centre);
    QFETCH(QVector<int>, offsets);
    QFETCH(QVector<double>, counts);
    const double one = 1.0 / (2 * taps + 1);
    Expected expected{centre * one, offsets, counts};
    for (double &weight : expected.weights) {
        weight *= one;
    }
    for (const auto kind : {Convolution::SharpenPre, Convolution::Sharpen}) {
        const std::vector<Tap> found = findTaps(kind, radius);
        QVERIFY2(areTaps(found, expected), text(found).constData());
    }
}

// The taps of radius 1 are half a pixel away.
void EngineTapsTest::aTapBetweenTwoTexelsTakesTheOuter()
{
    for (const auto kind : {Convolution::BlurPre, Convolution::Blur}) {
        const std::vector<Tap> taps = findTaps(kind, 1.0F);
        QVERIFY2(areTaps(taps, {0.667243, {1}, {0.166379}}), text(taps).constData());
    }
    for (const auto kind : {Convolution::SharpenPre, Convolution::Sharpen}) {
        const std::vector<Tap> taps = findTaps(kind, 1.5F);
        QVERIFY2(areTaps(taps, {1.0 / 3.0, {2}, {1.0 / 3.0}}), text(taps).constData());
    }
}

void EngineTapsTest::weightsAddUp()
{
    QFETCH(int, kind);
    for (const float radius : radii) {
        const std::vector<Tap> taps = findTaps(Convolution(kind), radius);
        QVERIFY2(std::abs(sumOf(taps) - 1.0) < weightError, text(taps).constData());
    }
}

void EngineTapsTest::offsetsAscendWithTheCentreAmongThem()
{
    QFETCH(int, kind);
    for (const float radius : radii) {
        const std::vector<Tap> taps = findTaps(Convolution(kind), radius);
        QVERIFY(int(taps.size()) <= mostTaps);
        int centres = 0;
        for (size_t i = 0; i < taps.size(); ++i) {
            centres += taps.at(i).offset == 0 ? 1 : 0;
            QVERIFY2(i == 0 || taps.at(i - 1).offset < taps.at(i).offset, text(taps).constData());
        }
        QCOMPARE(centres, 1);
    }
}

void EngineTapsTest::tapsOfOneWeightArePaired()
{
    const Arrangement made = arranged(findTaps(Convolution::Blur, 4.0F));
    QCOMPARE(made.sums.pairs, 3);
    QCOMPARE(made.sums.singles, 1);
    QCOMPARE(made.first, std::vector<int>({1, 2, 3, 0}));
    QCOMPARE(made.second, std::vector<int>({-1, -2, -3}));
    const Arrangement centre = arranged(findTaps(Convolution::Sharpen, 0.25F));
    QCOMPARE(centre.sums.pairs, 0);
    QCOMPARE(centre.sums.singles, 1);
    QCOMPARE(centre.first, std::vector<int>({0}));
    QVERIFY(centre.second.empty());
}

void EngineTapsTest::tapsOfDifferentWeightsStaySingle()
{
    const Arrangement made =
        arranged({{-3, 0.1F}, {-1, 0.2F}, {0, 0.3F}, {1, 0.1F}, {3, 0.1F}, {4, 0.2F}});
    QCOMPARE(made.sums.pairs, 1);
    QCOMPARE(made.first.front(), 3);
    QCOMPARE(made.second, std::vector<int>({-3}));
    QCOMPARE(made.sums.singles, 4);
    QCOMPARE(made.first.size(), size_t(5));
}

void EngineTapsTest::arrangingLosesNothing()
{
    QFETCH(int, kind);
    for (const float radius : radii) {
        const std::vector<Tap> taps = findTaps(Convolution(kind), radius);
        const Arrangement made = arranged(taps);
        QCOMPARE(int(made.first.size()), made.sums.pairs + made.sums.singles);
        QCOMPARE(int(made.second.size()), made.sums.pairs);
        const std::vector<Tap> again = takenApart(made);
        QVERIFY2(std::equal(taps.begin(), taps.end(), again.begin(), again.end(),
                            [](const Tap &a, const Tap &b) {
                                return a.offset == b.offset && a.weight == b.weight;
                            }),
                 text(again).constData());
    }
}

// As large as 16 bits with a sign allow, and a sum of the brightest levels within 32 bits.
void EngineTapsTest::wholeWeightsAreAsFineAsTheyCanBe()
{
    QFETCH(int, kind);
    constexpr int heaviest = 32767;
    constexpr double finest = 8388608.0; // 2^23: times 255 it is below 2^31
    for (const float radius : radii) {
        const Sums sums = arranged(findTaps(Convolution(kind), radius)).sums;
        const int taps = sums.pairs + sums.singles;
        double one = 0.0;
        int largest = 0;
        for (int i = 0; i < taps; ++i) {
            one += (i < sums.pairs ? 2.0 : 1.0) * sums.weights16[i];
            largest = std::max(largest, int(sums.weights16[i]));
        }
        QVERIFY(largest == heaviest || one > 0.99 * finest);
        QVERIFY(255.0 * one < 2147483648.0);
        QVERIFY(std::abs(double(sums.scale16) * 255.0 * one - 1.0) < weightError);
        for (int i = 0; i < taps; ++i) {
            // Each is rounded once, and so is each that the total adds up.
            const double exact = double(sums.weights[i]) * one;
            QVERIFY(std::abs(sums.weights16[i] - exact) <= 1.0);
        }
    }
}

QTEST_APPLESS_MAIN(EngineTapsTest)
#include "tst_engine_taps.moc"
