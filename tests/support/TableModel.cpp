#include "tests/support/TableModel.h"

#include <QtCore/QByteArray>

#include <algorithm>
#include <cmath>

namespace ko::imagefx::test
{

namespace
{

constexpr const char *exposureUpText =
    "00020406080A0C0D0F1012131517191A1C1E2022232527292A2C2E2F31333436"
    "37393A3C3E3F414244454748494B4C4E4F515253555658595A5C5D5F60616364"
    "6667686A6B6D6E6F717274757778797B7C7E7F818283858688898A8C8D8E8F91"
    "929395969798999A9C9D9E9FA0A1A2A4A5A6A7A8A9AAABACADAEAFB0B1B2B3B4"
    "B5B6B7B7B8B9BABBBCBDBEBFBFC0C1C2C3C3C4C5C6C7C7C8C9CACBCCCCCDCECF"
    "CFD0D1D1D2D3D4D4D5D6D6D7D8D8D9DADADBDCDCDDDEDEDFE0E0E1E2E2E3E3E4"
    "E4E5E6E6E7E8E8E9E9EAEAEBEBECECEDEDEEEFEFF0F0F1F1F2F2F2F3F3F4F4F5"
    "F5F6F6F6F7F7F8F8F8F9F9FAFAFAFAFBFBFBFCFCFCFDFDFDFDFEFEFEFEFFFFFF";

constexpr const char *exposureDownText =
    "0001010102020304040405060607080809090A0B0B0C0C0D0E0E0F0F10101112"
    "121313141415161617171818191A1A1B1B1C1D1D1E1E1F202021222223232425"
    "2626272828292A2A2B2C2C2D2E2E2F30313132333334353636373838393A3B3B"
    "3C3D3D3E3F4040414242434444454647474849494A4B4C4C4D4E4E4F50515152"
    "535354555556575858595A5B5B5C5D5E5E5F6061626263646566676768696A6B"
    "6C6C6D6E6F707172737475767778797A7B7C7D7E7F8081828485868788898A8C"
    "8D8E8F90919394959698999A9C9D9EA0A1A2A4A5A7A8A9ABACAEAFB1B2B4B5B7"
    "B9BABCBDBFC1C2C4C6C8CACBCDCFD1D3D5D7D9DBDDE0E2E4E7EAECEFF3F6FAFF";

constexpr const char *shadowsUpText =
    "00070E161E242A2F34383B3F4246484B4D4F51535557595B5C5E5F6062636465"
    "66666768696A6B6C6D6D6E6F707172727374747576777878797A7A7B7B7C7C7D"
    "7D7D7E7E7E7F7F8080818282838384848585868787888889898A8A8B8B8C8C8C"
    "8D8D8E8E8E8F8F90909191919292929393949494959595969696969797979798"
    "98989898989999999A9B9C9C9D9E9FA0A1A2A3A3A4A5A6A7A8A9AAAAABACADAE"
    "AFAFB0B1B2B3B4B5B5B6B7B8B9BABBBBBCBDBEBFC0C0C1C2C3C4C5C6C6C7C8C9"
    "CACACBCCCDCECFCFD0D1D2D3D4D4D5D6D7D8D9DADADBDCDDDEDFDFE0E1E2E3E4"
    "E4E5E6E7E8E9EAEAEBECEDEEEFEFF0F1F2F3F4F5F5F6F7F8F9FAFAFBFCFDFEFF";

constexpr const char *shadowsDownText =
    "0000000000000001010101010101010102020202030303040404050506060707"
    "080809090A0A0B0B0C0C0D0E0E0F0F1010111212131414151616171819191A1B"
    "1C1D1E1F202122232425262728292A2B2C2D2F3031323334353638393A3B3C3E"
    "3F40414244454647494A4B4D4E4F505253545657585A5B5D5E5F616264656768"
    "6A6C6D6F70727475767778797B7C7D7E7F8081828385868788898A8B8C8E8F90"
    "91929394969798999A9B9C9D9FA0A1A2A3A4A6A7A8A9AAABADAEAFB0B1B2B3B5"
    "B6B7B8B9BABCBDBEBFC0C2C3C4C5C6C7C9CACBCCCDCED0D1D2D3D4D5D7D8D9DA"
    "DBDCDEDFE0E1E2E3E5E6E7E8E9EBECEDEEEFF0F1F3F4F5F6F7F8FAFBFCFDFEFF";

constexpr const char *highlightsUpText =
    "0001020304050608090A0B0C0D0E0F10111214151617181A1B1C1D1E20212223"
    "24252628292A2B2C2E2F3031323334363738393A3B3C3E3F4041424344454748"
    "494A4B4D4E4F5051525355565758595A5C5D5E5F60616264656667686A6B6C6D"
    "6E6F71727374757678797A7B7C7E7F8081828385868788898A8B8C8D8E909192"
    "939495969798999B9C9EA0A2A3A5A7A8AAACADAFB1B2B4B5B7B8BABCBDBEC0C2"
    "C3C4C6C7C9CACCCDCECFD1D2D3D5D6D7D8DADBDCDDDFE0E1E2E3E5E6E7E8E9EA"
    "EBECEDEEEFEFF0F1F1F2F3F3F4F4F5F5F6F6F7F7F8F8F8F9F9F9FAFAFAFBFBFB"
    "FBFCFCFCFCFCFDFDFDFDFDFDFEFEFEFEFEFEFEFEFEFEFFFFFFFFFFFFFFFFFFFF";

constexpr const char *highlightsDownText =
    "00010203040506070708090A0B0C0D0E0F0F10111213141516161718191A1B1C"
    "1C1D1E1F2020212223242526272728292A2B2C2C2D2E2F303132333334353637"
    "3839393A3B3C3D3E3F3F40414243444546464748494A4B4C4D4D4E4F50515252"
    "53545556575858595A5B5C5D5E5E5F6061626363646566676868696A6B6C6D6E"
    "6E6F70717272737474747575757575767676767777777778787879797A7A7A7B"
    "7B7B7B7C7C7D7D7D7E7E7F7F8080818182828283848485858686878787888889"
    "898A8A8B8B8C8D8D8E8F8F90919292939495969798999A9B9C9D9E9FA0A1A2A3"
    "A5A6A7A8AAABADAEB0B1B3B5B6B8BABCBEC0C3C5C7CACDD0D2D6D9DDE1E5E9EB";

int roundedHalfUp(double number)
{
    return int(std::floor(number + 0.5));
}

// The products with a table are formed in single precision, as the effect defines it.
int toned(const char *down, const char *up, int level, float strength)
{
    const float share = std::abs(strength);
    const int full = levelsOf(strength < 0.0F ? down : up)[size_t(level)];
    const double mixed = (1.0 - double(share)) * level + double(float(full) * share);
    return std::clamp(roundedHalfUp(mixed), 0, 255);
}

// A colour near the edge of a texel may fall on both sides.
FloatRange lookedUp(const ModelLevels &table, const FloatRange &channel)
{
    const auto texel = [](double coordinate) {
        return int(std::clamp(std::floor(coordinate * 256.0), 0.0, 255.0));
    };
    const int first = texel(channel.low);
    const int last = texel(channel.high);
    FloatRange range;
    for (int i = first; i <= last; ++i) {
        const FloatRange value = FloatRange::rounded(table[size_t(i)] / 255.0, channel.precision);
        range = i == first ? value : united(range, value);
    }
    return range;
}

struct HueCurve {
    int start;
    int centre;
    int end;
};
constexpr std::array<HueCurve, 8> hueCurves = {{{312, 339, 395},
                                                {338, 392, 410},
                                                {31, 51, 93},
                                                {45, 90, 175},
                                                {90, 172, 202},
                                                {134, 200, 294},
                                                {183, 294, 324},
                                                {293, 321, 340}}};

double smoothstep(double t)
{
    return t * t * (3.0 - 2.0 * t);
}

// How much of a range's value a degree gets; 0 outside. `hue` may be beyond 360.
double weightAt(const HueCurve &curve, int hue)
{
    if (hue < curve.start || hue >= curve.end) {
        return 0.0;
    }
    return hue < curve.centre
               ? smoothstep(double(hue - curve.start) / (curve.centre - curve.start))
               : 1.0 - smoothstep(double(hue - curve.centre) / (curve.end - curve.centre));
}

// Equal channels come from equal bytes, so they are equal whatever the rounding.
bool areSame(const FloatRange &a, const FloatRange &b)
{
    return a.low == b.low && a.high == b.high;
}

// In sixths of the circle, from -1 to 6; of equal maxima red counts before green, green before
// blue, and a grey has the hue 0.
FloatRange sixthsOf(const ColorRange &color)
{
    const auto byLow = [](const FloatRange &a, const FloatRange &b) { return a.low < b.low; };
    const FloatRange maximum = *std::max_element(color.begin(), color.end(), byLow);
    const FloatRange minimum = *std::min_element(color.begin(), color.end(), byLow);
    if (areSame(maximum, minimum)) {
        return 0.0;
    }
    for (size_t i = 0; i < color.size(); ++i) {
        if (areSame(color[i], maximum)) {
            const FloatRange &next = color[(i + 1) % 3];
            const FloatRange &last = color[(i + 2) % 3];
            const FloatRange apart = areSame(next, last) ? FloatRange(0.0) : next - last;
            return 2.0 * double(i) + apart / (maximum - minimum);
        }
    }
    return FloatRange::anything();
}

FloatRange hueFactor(const QVector<int> &table, const ColorRange &color)
{
    constexpr int circle = 360;
    FloatRange degrees = sixthsOf(color) / 6.0;
    degrees.precision = color[0].precision;
    degrees = degrees * 360.0 + 360.0;
    // Of a grey that is none after rounding the hue may be anything.
    const bool anywhere = !(degrees.high - degrees.low < circle);
    const int first = anywhere ? 0 : int(std::floor(degrees.low));
    const int last = anywhere ? circle - 1 : int(std::floor(degrees.high));
    FloatRange factor;
    for (int i = first; i <= last; ++i) {
        const FloatRange value =
            FloatRange::rounded(table.at((i % circle + circle) % circle) / 255.0,
                                color[0].precision) *
            2.0;
        factor = i == first ? value : united(factor, value);
    }
    return factor;
}

} // namespace

const ToneTexts toneTexts = {exposureUpText,  exposureDownText, shadowsUpText,
                             shadowsDownText, highlightsUpText, highlightsDownText};

ModelLevels levelsOf(const char *hexadecimal)
{
    const QByteArray bytes = QByteArray::fromHex(hexadecimal);
    ModelLevels levels{};
    std::transform(bytes.begin(), bytes.end(), levels.begin(),
                   [](char byte) { return int(uchar(byte)); });
    return levels;
}

ModelLevels modelToneCurve(float exposure, float darkTones, float lightTones)
{
    ModelLevels curve{};
    for (size_t i = 0; i < curve.size(); ++i) {
        const int exposed = toned(toneTexts.exposureDown, toneTexts.exposureUp, int(i), exposure);
        const int shadowed = toned(toneTexts.shadowsDown, toneTexts.shadowsUp, exposed, darkTones);
        curve[i] = toned(toneTexts.highlightsDown, toneTexts.highlightsUp, shadowed, lightTones);
    }
    return curve;
}

ModelEffect modelExposure(float exposure, float darkTones, float lightTones)
{
    const ModelLevels curve = modelToneCurve(exposure, darkTones, lightTones);
    return modelLookupTable({curve, curve, curve});
}

ModelEffect modelLookupTable(const std::array<ModelLevels, 3> &tables)
{
    return [tables](const ColorRange &source) -> ColorRange {
        return {lookedUp(tables[0], source[0]), lookedUp(tables[1], source[1]),
                lookedUp(tables[2], source[2])};
    };
}

QVector<int> modelHueTable(const QVector<double> &saturations)
{
    constexpr int circle = 360;
    QVector<int> table;
    for (int hue = 0; hue < circle; ++hue) {
        double sum = 0.0;
        for (int i = 0; i < saturations.size(); ++i) {
            const HueCurve &curve = hueCurves[size_t(i)];
            sum += saturations.at(i) * (weightAt(curve, hue) + weightAt(curve, hue + circle));
        }
        table.append(roundedHalfUp(std::clamp((sum + 1.0) / 2.0, 0.0, 1.0) * 255.0));
    }
    return table;
}

ModelEffect modelSelectiveSaturation(const QVector<double> &saturations)
{
    const QVector<int> table = modelHueTable(saturations);
    return [table](const ColorRange &source) {
        const FloatRange factor = hueFactor(table, source);
        const FloatRange luma = dot({0.2125, 0.7154, 0.0721}, source);
        ColorRange color;
        std::transform(source.begin(), source.end(), color.begin(),
                       [&](const FloatRange &channel) { return mix(luma, channel, factor); });
        return color;
    };
}

} // namespace ko::imagefx::test
