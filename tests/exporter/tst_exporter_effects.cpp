#include "ExporterRun.h"

#include <QtTest/QtTest>

#include <algorithm>
#include <cmath>
#include <functional>

namespace
{

const QString sourcePng = QStringLiteral("source.png");
const QString targetPng = QStringLiteral("target.png");
const QString brightnessContrast = QStringLiteral("BrightnessContrast");
const QString colorFill = QStringLiteral("ColorFill");

// GL may round the last bit of a channel either way.
constexpr int rounding = 1;

// Not neutral, so it is drawn, and less than any rounding can show.
QJsonArray invisibleChange()
{
    return {effect(brightnessContrast, {{QStringLiteral("brightness"), 1e-6}})};
}

QJsonObject fill(const QString &color, QJsonObject properties = {})
{
    properties.insert(QStringLiteral("color"), color);
    return effect(colorFill, properties);
}

QJsonObject batch(const QJsonArray &nested, QJsonObject properties = {})
{
    properties.insert(QStringLiteral("imageEffects"), nested);
    return effect(QStringLiteral("Batch"), properties);
}

using Channel = std::function<double(double)>;

// Every colour channel, from 0 to 1 and not premultiplied, through `channel`.
QImage mapped(const QImage &image, const Channel &channel)
{
    const auto byte = [&channel](int value) {
        return int(std::lround(std::clamp(channel(value / 255.0), 0.0, 1.0) * 255.0));
    };
    QImage result(image.size(), image.format());
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb p = image.pixel(x, y);
            result.setPixel(x, y, qRgba(byte(qRed(p)), byte(qGreen(p)), byte(qBlue(p)), qAlpha(p)));
        }
    }
    return result;
}

// What eight bits leave of a colour that was multiplied by its alpha and divided again.
QImage throughPremultiplication(const QImage &image)
{
    QImage result(image.size(), image.format());
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb p = image.pixel(x, y);
            const int alpha = qAlpha(p);
            const auto channel = [alpha](int value) {
                const auto premultiplied = std::lround(value * alpha / 255.0);
                return alpha == 0 ? 0 : int(std::lround(double(premultiplied) * 255.0 / alpha));
            };
            result.setPixel(x, y,
                            qRgba(channel(qRed(p)), channel(qGreen(p)), channel(qBlue(p)), alpha));
        }
    }
    return result;
}

QImage onePixel(QRgb color)
{
    QImage image(1, 1, qAlpha(color) == 255 ? QImage::Format_RGB32 : QImage::Format_ARGB32);
    image.fill(color);
    return image;
}

// The picture that the stack makes of `image`, by way of PNG; null when the tool failed or said
// anything.
QImage exported(const QImage &image, const QJsonArray &stack)
{
    const Workshop workshop;
    workshop.write(sourcePng, image);
    const ToolRun run = workshop.run(sourcePng, targetPng, stack);
    if (run.exitCode != 0 || !run.errors.isEmpty()) {
        qWarning("exit code %d: %s", run.exitCode, run.errors.constData());
        return {};
    }
    return workshop.readPicture(targetPng);
}

} // namespace

class tst_exporter_effects : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void emptyStackCopies_data();
    void emptyStackCopies();
    void emptyStackNeedsNoOpenGl();
    void drawingKeepsEveryPixelInPlace_data();
    void drawingKeepsEveryPixelInPlace();
    void drawingATranslucentPictureRoundsOnce();
    void brightnessAndContrastUnderBothSpellings_data();
    void brightnessAndContrastUnderBothSpellings();
    void brightnessOfATranslucentPicture();
    void brighterThanAlphaIsWhite();
    void hsvIsApplied_data();
    void hsvIsApplied();
    void switchedOffEffectsAreLeftOut_data();
    void switchedOffEffectsAreLeftOut();
    void neutralEffectWithABlendModeIsDrawn();
    void neutralEffectWithoutABlendModeIsLeftOut();
    void effectsApplyInOrder();
    void aMaskLimitsItsEffect();
    void nestedEffectsApply();
    void nestedNeutralEffectWithABlendModeIsDrawn();
    void nestedSwitchedOffEffectsAreLeftOut();
    void whatCannotBeDrawnIsNamedAndLeftOut_data();
    void whatCannotBeDrawnIsNamedAndLeftOut();
    void whatCannotBeDrawnIsAnErrorWhenStrict_data();
    void whatCannotBeDrawnIsAnErrorWhenStrict();
    void strictAcceptsAnExactStack();
};

void tst_exporter_effects::emptyStackCopies_data()
{
    QTest::addColumn<QImage>("image");
    for (const int width : {1, 2, 3, 97}) {
        QTest::addRow("opaque, %d wide", width)
            << noise(QSize(width, 5), QImage::Format_RGB32, quint32(width));
        QTest::addRow("translucent, %d wide", width)
            << noise(QSize(width, 5), QImage::Format_ARGB32, quint32(width));
    }
    QTest::newRow("gray") << noise(QSize(97, 3), QImage::Format_Grayscale8);
    QTest::newRow("palette")
        << noise(QSize(9, 3), QImage::Format_RGB32).convertToFormat(QImage::Format_Indexed8);
}

void tst_exporter_effects::emptyStackCopies()
{
    QFETCH(QImage, image);
    QCOMPARE(difference(exported(image, {}), image), QString());
}

void tst_exporter_effects::emptyStackNeedsNoOpenGl()
{
    const Workshop workshop;
    const QImage image = noise(QSize(5, 5), QImage::Format_RGB32);
    workshop.write(sourcePng, image);
    QCOMPARE(workshop.run(sourcePng, targetPng, {}, {}, withoutGl()).exitCode, 0);
    QCOMPARE(difference(workshop.readPicture(targetPng), image), QString());
}

void tst_exporter_effects::drawingKeepsEveryPixelInPlace_data()
{
    QTest::addColumn<QImage>("image");
    for (const int width : {1, 2, 3, 97}) {
        QTest::addRow("%d x 61", width)
            << noise(QSize(width, 61), QImage::Format_RGB32, quint32(width));
        QTest::addRow("61 x %d", width)
            << noise(QSize(61, width), QImage::Format_RGB32, quint32(width));
    }
    QTest::newRow("gray") << noise(QSize(97, 3), QImage::Format_Grayscale8);
}

void tst_exporter_effects::drawingKeepsEveryPixelInPlace()
{
    QFETCH(QImage, image);
    QCOMPARE(difference(exported(image, invisibleChange()), image), QString());
}

void tst_exporter_effects::drawingATranslucentPictureRoundsOnce()
{
    const QImage image = noise(QSize(97, 61), QImage::Format_ARGB32);
    QCOMPARE(difference(exported(image, invisibleChange()), throughPremultiplication(image)),
             QString());
}

void tst_exporter_effects::brightnessAndContrastUnderBothSpellings_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("as the class reports it") << brightnessContrast;
    QTest::newRow("as stored stacks have it") << QStringLiteral("BrighnessContrast");
}

void tst_exporter_effects::brightnessAndContrastUnderBothSpellings()
{
    QFETCH(QString, kind);
    const QImage image = noise(QSize(97, 31), QImage::Format_RGB32);
    const double f = 259.047619 / 255.0;
    const double factor = f * (0.25 + 1.0) / (f - 0.25);
    const QImage expected =
        mapped(image, [factor](double c) { return factor * (c - 0.125 - 0.5) + 0.5; });
    const QJsonArray stack = {
        effect(kind, {{QStringLiteral("brightness"), -0.125}, {QStringLiteral("contrast"), 0.25}})};
    QCOMPARE(difference(exported(image, stack), expected, rounding), QString());
}

void tst_exporter_effects::brightnessOfATranslucentPicture()
{
    const QRgb source = qRgba(100, 40, 200, 128);
    const QJsonArray stack = {effect(brightnessContrast, {{QStringLiteral("brightness"), -0.1}})};
    // 0.1 is 25.5 of 255; at half alpha eight bits hold every second step.
    QCOMPARE(difference(exported(onePixel(source), stack), onePixel(qRgba(74, 14, 174, 128)), 2),
             QString());
}

void tst_exporter_effects::brighterThanAlphaIsWhite()
{
    const QJsonArray stack = {effect(brightnessContrast, {{QStringLiteral("brightness"), 0.9}})};
    QCOMPARE(difference(exported(onePixel(qRgba(250, 128, 60, 100)), stack),
                        onePixel(qRgba(255, 255, 255, 100))),
             QString());
}

void tst_exporter_effects::hsvIsApplied_data()
{
    QTest::addColumn<QJsonObject>("properties");
    QTest::addColumn<QRgb>("source");
    QTest::addColumn<QRgb>("expected");
    const auto one = [](const char *key, double value) {
        return QJsonObject{{QLatin1String(key), value}};
    };
    // 0.2125 * 200 + 0.7154 * 100 + 0.0721 * 50 = 117.6
    QTest::newRow("no saturation is luma")
        << one("saturation", -1.0) << qRgb(200, 100, 50) << qRgb(118, 118, 118);
    QTest::newRow("half a turn of red is cyan")
        << one("hue", 1.0) << qRgb(255, 0, 0) << qRgb(0, 255, 255);
    QTest::newRow("a third of a turn of red is green")
        << one("hue", 2.0 / 3.0) << qRgb(255, 0, 0) << qRgb(0, 255, 0);
    QTest::newRow("value goes half way to white")
        << one("value", 0.5) << qRgb(255, 101, 1) << qRgb(255, 178, 128);
    QTest::newRow("value goes half way to black")
        << one("value", -0.5) << qRgb(254, 100, 0) << qRgb(127, 50, 0);
}

void tst_exporter_effects::hsvIsApplied()
{
    QFETCH(QJsonObject, properties);
    QFETCH(QRgb, source);
    QFETCH(QRgb, expected);
    QCOMPARE(difference(exported(onePixel(source), {effect(QStringLiteral("HSV"), properties)}),
                        onePixel(expected), rounding),
             QString());
}

void tst_exporter_effects::switchedOffEffectsAreLeftOut_data()
{
    QTest::addColumn<QJsonObject>("properties");
    QTest::newRow("disabled") << QJsonObject{{QStringLiteral("enabled"), false}};
    QTest::newRow("alpha 0") << QJsonObject{{QStringLiteral("alpha"), 0.0}};
    QTest::newRow("disabled, with a blend mode")
        << QJsonObject{{QStringLiteral("enabled"), false}, {QStringLiteral("blendMode"), 4}};
}

void tst_exporter_effects::switchedOffEffectsAreLeftOut()
{
    QFETCH(QJsonObject, properties);
    const QImage image = noise(QSize(13, 7), QImage::Format_ARGB32);
    QCOMPARE(difference(exported(image, {fill(QStringLiteral("#00ff00"), properties)}), image),
             QString());
}

void tst_exporter_effects::neutralEffectWithABlendModeIsDrawn()
{
    const QImage image = noise(QSize(13, 7), QImage::Format_RGB32);
    const QImage squared = mapped(image, [](double c) { return c * c; });
    const QJsonArray stack = {effect(brightnessContrast, {{QStringLiteral("blendMode"), 4}})};
    QCOMPARE(difference(exported(image, stack), squared, rounding), QString());
}

// Drawn, it would round the colours of faint pixels.
void tst_exporter_effects::neutralEffectWithoutABlendModeIsLeftOut()
{
    const QImage image = noise(QSize(13, 7), QImage::Format_ARGB32);
    QCOMPARE(difference(exported(image, {effect(brightnessContrast)}), image), QString());
}

void tst_exporter_effects::effectsApplyInOrder()
{
    const QJsonObject half = effect(QStringLiteral("HSV"), {{QStringLiteral("value"), -0.5}});
    const QJsonObject red = fill(QStringLiteral("#ff0000"));
    const QImage image = onePixel(qRgb(1, 2, 3));
    QCOMPARE(difference(exported(image, {half, red}), onePixel(qRgb(255, 0, 0))), QString());
    QCOMPARE(difference(exported(image, {red, half}), onePixel(qRgb(128, 0, 0)), rounding),
             QString());
    QCOMPARE(difference(exported(image, {red, half, half}), onePixel(qRgb(64, 0, 0)), rounding),
             QString());
}

void tst_exporter_effects::aMaskLimitsItsEffect()
{
    const auto stop = [](double location, double value) {
        return QJsonObject{{QStringLiteral("location"), location},
                           {QStringLiteral("value"), value}};
    };
    const QJsonObject mask = {
        {QStringLiteral("maskId"), QStringLiteral("ko.orvanto.alphamask.Luminance")},
        {QStringLiteral("gradientInterpolation"), 1},
        {QStringLiteral("gradientStops"), QJsonArray{stop(0.0, 0.0), stop(1.0, 1.0)}}};
    const QJsonArray stack = {
        fill(QStringLiteral("#0000ff"), {{QStringLiteral("alphaMask"), mask}})};
    QImage image(2, 1, QImage::Format_RGB32);
    image.setPixel(0, 0, qRgb(0, 0, 0));
    image.setPixel(1, 0, qRgb(255, 255, 255));
    QImage expected = image;
    expected.setPixel(1, 0, qRgb(0, 0, 255));
    // The gradient has 512 texels: its ends lie half a texel inside.
    QCOMPARE(difference(exported(image, stack), expected, rounding), QString());
}

void tst_exporter_effects::nestedEffectsApply()
{
    const QJsonObject half = effect(QStringLiteral("HSV"), {{QStringLiteral("value"), -0.5}});
    const QJsonArray stack = {
        batch({fill(QStringLiteral("#0000ff")), batch({half})}, {{QStringLiteral("alpha"), 0.5}})};
    // Half way from (200, 100, 50) to (0, 0, 128).
    QCOMPARE(difference(exported(onePixel(qRgb(200, 100, 50)), stack), onePixel(qRgb(100, 50, 89)),
                        rounding),
             QString());
}

void tst_exporter_effects::nestedNeutralEffectWithABlendModeIsDrawn()
{
    const QImage image = noise(QSize(13, 7), QImage::Format_RGB32);
    const QImage squared = mapped(image, [](double c) { return c * c; });
    const QJsonObject multiply = effect(brightnessContrast, {{QStringLiteral("blendMode"), 4}});
    QCOMPARE(difference(exported(image, {batch({batch({multiply})})}), squared, rounding),
             QString());
}

void tst_exporter_effects::nestedSwitchedOffEffectsAreLeftOut()
{
    const QImage image = noise(QSize(13, 7), QImage::Format_RGB32);
    const QJsonObject off = fill(QStringLiteral("#0000ff"), {{QStringLiteral("enabled"), false}});
    QCOMPARE(difference(exported(image, {batch({off})}), image), QString());
}

void tst_exporter_effects::whatCannotBeDrawnIsNamedAndLeftOut_data()
{
    QTest::addColumn<QJsonValue>("element");
    QTest::addColumn<QByteArray>("named");
    const QString green = QStringLiteral("#00ff00");
    QTest::newRow("an unknown id") << QJsonValue(effect(QStringLiteral("Nonsense")))
                                   << QByteArray("\"ko.orvanto.imageeffect.Nonsense\"");
    QTest::newRow("no id") << QJsonValue(QJsonObject{{QStringLiteral("alpha"), 1}})
                           << QByteArray("has no id");
    QTest::newRow("blend mode 16") << QJsonValue(fill(green, {{QStringLiteral("blendMode"), 16}}))
                                   << QByteArray("element [1] has an unknown blend mode");
    QTest::newRow("blend mode -1") << QJsonValue(fill(green, {{QStringLiteral("blendMode"), -1}}))
                                   << QByteArray("element [1] has an unknown blend mode");
    QTest::newRow("a number") << QJsonValue(7) << QByteArray("element [1] is not an object");
    QTest::newRow("an array") << QJsonValue(QJsonArray{1}) << QByteArray("element [1] is not");
    QTest::newRow("a lookup table that is missing")
        << QJsonValue(effect(QStringLiteral("LUT"), {{QStringLiteral("table"),
                                                      QStringLiteral("file:///nonexistent.png")}}))
        << QByteArray("file:///nonexistent.png");
    QTest::newRow("a nested unknown id") << QJsonValue(batch({effect(QStringLiteral("Nonsense"))}))
                                         << QByteArray("\"ko.orvanto.imageeffect.Nonsense\"");
    QTest::newRow("a nested blend mode 16")
        << QJsonValue(batch({batch({fill(green, {{QStringLiteral("blendMode"), 16}})})}))
        << QByteArray("element [1].imageEffects[0].imageEffects[0] has an unknown blend mode");
    QTest::newRow("a nested number")
        << QJsonValue(batch({3})) << QByteArray("element [1].imageEffects[0] is not");
    QTest::newRow("null") << QJsonValue() << QByteArray("element [1] is not an object");
}

void tst_exporter_effects::whatCannotBeDrawnIsNamedAndLeftOut()
{
    QFETCH(QJsonValue, element);
    QFETCH(QByteArray, named);
    const QJsonObject half = effect(QStringLiteral("HSV"), {{QStringLiteral("value"), -0.5}});
    const Workshop workshop;
    workshop.write(sourcePng, onePixel(qRgb(200, 100, 50)));
    const ToolRun run = workshop.run(sourcePng, targetPng, {half, element, half});
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.wroteOneErrorLine(), run.errors.constData());
    QVERIFY2(run.errors.contains(named), run.errors.constData());
    QVERIFY(run.errors.contains("warning: "));
    QVERIFY(run.errors.contains("stack.json"));
    QCOMPARE(difference(workshop.readPicture(targetPng), onePixel(qRgb(50, 25, 13)), rounding),
             QString());
}

void tst_exporter_effects::whatCannotBeDrawnIsAnErrorWhenStrict_data()
{
    QTest::addColumn<QJsonValue>("element");
    QTest::addColumn<QByteArray>("named");
    const QString green = QStringLiteral("#00ff00");
    QTest::newRow("an unknown id")
        << QJsonValue(effect(QStringLiteral("Nonsense")))
        << QByteArray("$[1].effectId: unknown kind \"ko.orvanto.imageeffect.Nonsense\"");
    QTest::newRow("no id") << QJsonValue(QJsonObject{{QStringLiteral("alpha"), 1}})
                           << QByteArray("$[1]: \"effectId\" is missing");
    QTest::newRow("blend mode 16") << QJsonValue(fill(green, {{QStringLiteral("blendMode"), 16}}))
                                   << QByteArray("$[1].blendMode: 16 is no BlendMode");
    QTest::newRow("null") << QJsonValue() << QByteArray("$[1]: an effect is an object, not null");
    QTest::newRow("a lookup table that is missing")
        << QJsonValue(effect(QStringLiteral("LUT"), {{QStringLiteral("table"),
                                                      QStringLiteral("file:///nonexistent.png")}}))
        << QByteArray("$[1].table: the table \"file:///nonexistent.png\" cannot be loaded");
    QTest::newRow("a nested blend mode 16")
        << QJsonValue(batch({batch({fill(green, {{QStringLiteral("blendMode"), 16}})})}))
        << QByteArray("$[1].imageEffects[0].imageEffects[0].blendMode: 16 is no BlendMode");
}

void tst_exporter_effects::whatCannotBeDrawnIsAnErrorWhenStrict()
{
    QFETCH(QJsonValue, element);
    QFETCH(QByteArray, named);
    const Workshop workshop;
    workshop.write(sourcePng, onePixel(qRgb(200, 100, 50)));
    workshop.write(targetPng, QByteArray("older"));
    const ToolRun run =
        workshop.run(sourcePng, targetPng, {fill(QStringLiteral("#ff0000")), element},
                     {QStringLiteral("--strict")});
    QCOMPARE(run.exitCode, 8);
    QVERIFY2(run.wroteOneErrorLine(), run.errors.constData());
    QVERIFY2(run.errors.contains(named), run.errors.constData());
    QVERIFY(run.errors.contains("stack.json"));
    QCOMPARE(workshop.read(targetPng), QByteArray("older"));
}

void tst_exporter_effects::strictAcceptsAnExactStack()
{
    const Workshop workshop;
    workshop.write(sourcePng, onePixel(qRgb(200, 100, 50)));
    const ToolRun run =
        workshop.run(sourcePng, targetPng,
                     {fill(QStringLiteral("#ff0000"), {{QStringLiteral("blendMode"), 15}}),
                      effect(QStringLiteral("HSV")), effect(QStringLiteral("BrighnessContrast"))},
                     {QStringLiteral("--strict")});
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, 0);
}

QTEST_GUILESS_MAIN(tst_exporter_effects)

#include "tst_exporter_effects.moc"
