#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/BrightnessContrastImageEffect.h"
#include "imagefx/effects/ChannelShiftImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/GrayScaleImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/model/DistanceAlphaMask.h"
#include "imagefx/model/EffectStackReader.h"
#include "imagefx/model/HueAlphaMask.h"
#include "imagefx/model/LuminanceAlphaMask.h"
#include "tests/support/TestMain.h"

#include <QtCore/QJsonDocument>

#include <clocale>
#include <memory>

using namespace ko::imagefx;

namespace
{

constexpr const char *effectPrefix = "ko.orvanto.imageeffect.";
constexpr const char *maskPrefix = "ko.orvanto.alphamask.";

// The effects and masks of a stack that was read: neither has another owner.
class OwnedStack
{
public:
    explicit OwnedStack(const QList<ImageEffect *> &effects) : m_effects(effects) {}
    explicit OwnedStack(ImageEffect *effect) : m_effects({effect}) {}
    ~OwnedStack()
    {
        for (ImageEffect *effect : qAsConst(m_effects)) {
            if (effect != nullptr) {
                delete effect->alphaMask();
                delete effect;
            }
        }
    }
    Q_DISABLE_COPY(OwnedStack)

    int size() const { return m_effects.size(); }
    ImageEffect *at(int index) const { return m_effects.at(index); }

private:
    QList<ImageEffect *> m_effects;
};

QJsonObject object(const char *json)
{
    QJsonParseError error;
    const auto document = QJsonDocument::fromJson(json, &error);
    Q_ASSERT(error.error == QJsonParseError::NoError);
    return document.object();
}

QString effectId(const char *kind)
{
    return QLatin1String(effectPrefix) + QLatin1String(kind);
}

} // namespace

class StackJsonTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (qgetenv("LC_ALL").startsWith("de_DE")) {
            QCOMPARE(std::localeconv()->decimal_point, ",");
        }
    }

    // Before initialize() fills the registry; so this function comes first.
    void nothingIsCreatedBeforeInitialize()
    {
        QCOMPARE(ImageEffect::createEffect(effectId("GrayScale")), nullptr);
        QCOMPARE(ImageEffect::createAlphaMask(QLatin1String(maskPrefix) + QLatin1String("Hue")),
                 nullptr);
        QCOMPARE(ImageEffect::unserialize(
                     QJsonObject{{QStringLiteral("effectId"), effectId("GrayScale")}}),
                 nullptr);
        ImageEffect::initialize();
    }

    void registryHoldsItsKinds_data()
    {
        QTest::addColumn<QString>("reports");
        const auto row = [](const char *registered, const char *reported) {
            QTest::newRow(registered) << (reported != nullptr ? effectId(reported) : QString());
        };
        row("GrayScale", "GrayScale");
        row("Blur", "Blur");
        row("Sharpen", "Sharpen");
        row("ColorFill", "ColorFill");
        row("Batch", "Batch");
        row("Exposure", "Exposure");
        row("SelectiveSaturation", "SelectiveSaturation");
        row("BrighnessContrast", "BrightnessContrast");
        row("ChannelShift", "ChannelShift");
        row("LUT", "LUT");
        row("BrightnessContrast", nullptr);
        row("HSV", nullptr);
        row("LookupTable", nullptr);
        row("grayscale", nullptr);
        row("", nullptr);
    }

    void registryHoldsItsKinds()
    {
        QFETCH(QString, reports);
        const std::unique_ptr<ImageEffect> effect(
            ImageEffect::createEffect(effectId(QTest::currentDataTag())));
        QCOMPARE(effect ? effect->effectId() : QString(), reports);
        if (effect) {
            QCOMPARE(effect->parent(), nullptr);
        }
    }

    void registryHoldsTheMasks()
    {
        for (const char *kind : {"Hue", "Distance", "Luminance"}) {
            const QString id = QLatin1String(maskPrefix) + QLatin1String(kind);
            const std::unique_ptr<AlphaMask> mask(ImageEffect::createAlphaMask(id));
            QVERIFY(mask);
            QCOMPARE(mask->maskId(), id);
        }
        QCOMPARE(ImageEffect::createAlphaMask(QStringLiteral("Hue")), nullptr);
    }

    void registryTakesNewerCreatorsAndNullOnes()
    {
        EffectRegistry registry;
        const QString id = QStringLiteral("kind");
        registry.insertEffect(id, []() -> ImageEffect * { return new GrayScaleImageEffect; });
        registry.insertEffect(id, []() -> ImageEffect * { return new HSVImageEffect; });
        const std::unique_ptr<ImageEffect> effect(registry.createEffect(id));
        QVERIFY(qobject_cast<HSVImageEffect *>(effect.get()) != nullptr);
        registry.insertEffect(id, nullptr);
        QCOMPARE(registry.createEffect(id), nullptr);
        registry.insertMask(id, nullptr);
        QCOMPARE(registry.createAlphaMask(id), nullptr);
    }

    void completeRegistryKnowsEveryReportedIdAndTheMisspeltOne()
    {
        const EffectRegistry registry = EffectRegistry::complete();
        for (const char *kind : {"Batch", "Blur", "BrightnessContrast", "BrighnessContrast",
                                 "ChannelShift", "ColorFill", "Exposure", "GrayScale", "HSV", "LUT",
                                 "SelectiveSaturation", "Sharpen"}) {
            const std::unique_ptr<ImageEffect> effect(registry.createEffect(effectId(kind)));
            QVERIFY2(effect, kind);
        }
    }

    void effectIsWrittenWithEveryPropertyButObjectName()
    {
        GrayScaleImageEffect effect;
        effect.setObjectName(QStringLiteral("hidden"));
        effect.setName(QStringLiteral("Grey"));
        effect.setAlpha(0.8F);
        effect.setBlendMode(ImageEffect::Multiply);
        const QJsonObject json = ImageEffect::serialize(&effect);
        QCOMPARE(json.keys().join(QLatin1Char(' ')),
                 QStringLiteral("alpha alphaMask blendMode blue effectId enabled green name red"));
        QCOMPARE(json.value(QLatin1String("alpha")), QJsonValue(double(0.8F)));
        QCOMPARE(json.value(QLatin1String("alphaMask")), QJsonValue(QJsonValue::Null));
        QCOMPARE(json.value(QLatin1String("blendMode")), QJsonValue(4));
        QCOMPARE(json.value(QLatin1String("effectId")), QJsonValue(effectId("GrayScale")));
        QCOMPARE(json.value(QLatin1String("enabled")), QJsonValue(true));
        QCOMPARE(json.value(QLatin1String("name")), QJsonValue(QStringLiteral("Grey")));
        QCOMPARE(json.value(QLatin1String("red")), QJsonValue(double(0.344F)));
    }

    void numbersAreWrittenWithAPointInEveryLocale()
    {
        ChannelShiftImageEffect effect;
        effect.setAlpha(0.8F);
        const QByteArray text = QJsonDocument(ImageEffect::serialize(&effect)).toJson();
        QVERIFY2(text.contains("\"alpha\": 0.800000011920929,"), text.constData());
    }

    void colourIsWrittenAsItsName()
    {
        ColorFillImageEffect effect;
        effect.setColor(QColor(1, 171, 255, 3));
        QCOMPARE(ImageEffect::serialize(&effect).value(QLatin1String("color")),
                 QJsonValue(QStringLiteral("#01abff")));
    }

    void maskIsWrittenWithItsStopsInOrder()
    {
        LuminanceAlphaMask mask;
        mask.addGradientStop(0.0F, 0.0F);
        mask.addGradientStop(1.0F, 1.0F);
        GrayScaleImageEffect effect;
        effect.setAlphaMask(&mask);
        QCOMPARE(ImageEffect::serialize(&effect).value(QLatin1String("alphaMask")).toObject(),
                 object(R"({"enabled": true, "gradientInterpolation": 2, "gradientStops":
                            [{"location": 0, "value": 0}, {"location": 1, "value": 1}],
                            "maskId": "ko.orvanto.alphamask.Luminance"})"));
    }

    void nullEffectGivesAnEmptyObject()
    {
        QVERIFY(ImageEffect::serialize(static_cast<ImageEffect *>(nullptr)).isEmpty());
        GrayScaleImageEffect effect;
        const QJsonArray array = ImageEffect::serialize({nullptr, &effect});
        QCOMPARE(array.size(), 2);
        QCOMPARE(array.at(0), QJsonValue(QJsonObject()));
    }

    void stackRoundTripsInOrderWithItsMasks()
    {
        HueAlphaMask mask;
        mask.setEnabled(false);
        mask.setGradientInterpolation(AlphaMask::LinearInterpolation);
        mask.addGradientStop(0.75F, 0.25F);
        mask.addGradientStop(0.25F, 1.0F);
        ChannelShiftImageEffect shift;
        shift.setRed(0.25F);
        shift.setName(QStringLiteral("Shift"));
        shift.setEnabled(false);
        shift.setBlendMode(ImageEffect::DarkenOnly);
        shift.setAlphaMask(&mask);
        ColorFillImageEffect fill;
        fill.setColor(Qt::darkCyan);
        const QList<ImageEffect *> effects{&shift, &fill};
        const QJsonArray written = ImageEffect::serialize(effects);
        const OwnedStack read(ImageEffect::unserialize(
            QJsonDocument::fromJson(QJsonDocument(written).toJson()).array()));
        QCOMPARE(read.size(), 2);
        QCOMPARE(ImageEffect::serialize({read.at(0), read.at(1)}), written);
        QCOMPARE(read.at(0)->parent(), nullptr);
        QCOMPARE(read.at(0)->alphaMask()->parent(), nullptr);
        const auto stops = read.at(0)->alphaMask()->gradientStopList();
        QCOMPARE(stops.size(), 2);
        QCOMPARE(stops.at(0)->parent(), read.at(0)->alphaMask());
        QCOMPARE(read.at(0)->alphaMask()->gradientInterpolation(), AlphaMask::LinearInterpolation);
    }

    void brightnessContrastAndHsvAreDroppedOnReading()
    {
        BrightnessContrastImageEffect brightness;
        HSVImageEffect hsv;
        GrayScaleImageEffect first;
        GrayScaleImageEffect last;
        const QList<ImageEffect *> effects{&first, &hsv, &brightness, &last};
        const QJsonArray written = ImageEffect::serialize(effects);
        QCOMPARE(written.size(), 4);
        const OwnedStack read(ImageEffect::unserialize(written));
        QCOMPARE(read.size(), 2);
        QCOMPARE(read.at(0)->effectId(), effectId("GrayScale"));
        QCOMPARE(read.at(1)->effectId(), effectId("GrayScale"));
    }

    void blurHsvBlurBecomesTwoBlurs()
    {
        BlurImageEffect first;
        first.setRadius(4.0F);
        HSVImageEffect hsv;
        BlurImageEffect last;
        const OwnedStack read(ImageEffect::unserialize(
            ImageEffect::serialize(QList<ImageEffect *>{&first, &hsv, &last})));
        QCOMPARE(read.size(), 2);
        QCOMPARE(qobject_cast<BlurImageEffect *>(read.at(0))->radius(), 4.0F);
        QCOMPARE(qobject_cast<BlurImageEffect *>(read.at(1))->radius(), 1.0F);
    }

    void blurIsWrittenAsItsProperties()
    {
        BlurImageEffect blur;
        blur.setRadius(4.0F);
        QCOMPARE(ImageEffect::serialize(&blur),
                 object(R"({"alpha": 1, "alphaMask": null, "blendMode": 0, "effectId":
                            "ko.orvanto.imageeffect.Blur", "enabled": true, "name": "",
                            "radius": 4})"));
    }

    void batchRoundTripsWithItsEffectsAndTheirMasks()
    {
        HueAlphaMask mask;
        mask.addGradientStop(0.25F, 1.0F);
        GrayScaleImageEffect masked;
        masked.setAlphaMask(&mask);
        HSVImageEffect dropped;
        BlurImageEffect deep;
        deep.setRadius(7.0F);
        BatchImageEffect inner;
        inner.setImageEffectList({&deep});
        BatchImageEffect batch;
        batch.setImageEffectList({&masked, &dropped, &inner});
        const QJsonObject written = ImageEffect::serialize(&batch);
        QCOMPARE(written.value(QLatin1String("imageEffects")).toArray().size(), 3);
        const OwnedStack read(ImageEffect::unserialize(written));
        const auto nested = qobject_cast<BatchImageEffect *>(read.at(0))->imageEffectList();
        const OwnedStack members(nested);
        QCOMPARE(members.size(), 2);
        QCOMPARE(members.at(0)->effectId(), effectId("GrayScale"));
        QCOMPARE(members.at(0)->alphaMask()->gradientStopList().size(), 1);
        QCOMPARE(members.at(0)->parent(), nullptr);
        const OwnedStack deepest(
            qobject_cast<BatchImageEffect *>(members.at(1))->imageEffectList());
        QCOMPARE(deepest.size(), 1);
        QCOMPARE(qobject_cast<BlurImageEffect *>(deepest.at(0))->radius(), 7.0F);
    }

    void batchOfTheWrongTypeIsEmpty()
    {
        for (const char *list : {"null", "7", "{}", "\"Blur\"", "[1, {}, null]"}) {
            const QByteArray json =
                QByteArray(R"({"effectId": "ko.orvanto.imageeffect.Batch", "imageEffects": )") +
                list + "}";
            const OwnedStack read(ImageEffect::unserialize(object(json.constData())));
            QVERIFY2(read.at(0)->isNeutral(), list);
        }
    }

    void completeReaderKeepsThemAndNamesWhatItDoesNotKnow()
    {
        const EffectRegistry registry = EffectRegistry::complete();
        EffectStackReader reader(registry);
        const QJsonArray array{object(R"({"effectId": "ko.orvanto.imageeffect.HSV", "hue": 0.5})"),
                               object(R"({"effectId": "ko.orvanto.imageeffect.Nothing"})"), 7,
                               object(R"({"effectId": "ko.orvanto.imageeffect.BrightnessContrast",
                                          "alphaMask": {"maskId": "round"}})")};
        const OwnedStack read(reader.readStack(array));
        QCOMPARE(read.size(), 2);
        QCOMPARE(qobject_cast<HSVImageEffect *>(read.at(0))->hue(), 0.5F);
        QCOMPARE(reader.unknownIds(),
                 QStringList({effectId("Nothing"), QString(), QStringLiteral("round")}));
    }

    void valuesPassThroughTheSetters()
    {
        const OwnedStack read(ImageEffect::unserialize(
            object(R"({"effectId": "ko.orvanto.imageeffect.GrayScale", "red": 7, "blendMode": 9,
                       "alpha": -2, "objectName": "seen", "nothing": [1, 2]})")));
        const auto *effect = qobject_cast<GrayScaleImageEffect *>(read.at(0));
        QVERIFY(effect != nullptr);
        QCOMPARE(effect->red(), 1.0F);
        QCOMPARE(effect->blendMode(), ImageEffect::SoftLight);
        QCOMPARE(effect->alpha(), -2.0F);
        QCOMPARE(effect->green(), 0.5F);
        QVERIFY(effect->dynamicPropertyNames().isEmpty());
    }

    void wrongTypesAreConvertedAsVariantsAre_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<float>("alpha");
        QTest::addColumn<bool>("enabled");
        QTest::addColumn<int>("blendMode");
        const auto row = [](const char *value, float alpha, bool enabled, int blendMode) {
            QTest::newRow(value) << QByteArray(R"({"effectId":"ko.orvanto.imageeffect.ColorFill",)"
                                               R"("alpha":%,"enabled":%,"blendMode":%})")
                                        .replace("%", value)
                                 << alpha << enabled << blendMode;
        };
        row("null", 0.0F, false, 0);
        row("\"abc\"", 0.0F, true, 0);
        row("\"\"", 0.0F, false, 0);
        row("\"3\"", 3.0F, true, 3);
        row("true", 1.0F, true, 1);
        row("[]", 0.0F, false, 0);
        row("{}", 0.0F, false, 0);
        row("2", 2.0F, true, 2);
        row("99", 99.0F, true, 99);
    }

    void wrongTypesAreConvertedAsVariantsAre()
    {
        QFETCH(QByteArray, json);
        const OwnedStack read(ImageEffect::unserialize(object(json.constData())));
        QTEST(read.at(0)->alpha(), "alpha");
        QTEST(read.at(0)->enabled(), "enabled");
        QTEST(int(read.at(0)->blendMode()), "blendMode");
    }

    void maskOfTheWrongTypeIsNone()
    {
        for (const char *mask : {"null", "7", "[]", "{}", "{\"maskId\": \"Hue\"}",
                                 "{\"enabled\": false}", "\"ko.orvanto.alphamask.Hue\""}) {
            const QByteArray json =
                QByteArray(R"({"effectId": "ko.orvanto.imageeffect.ColorFill", "alphaMask": )") +
                mask + "}";
            const OwnedStack read(ImageEffect::unserialize(object(json.constData())));
            QCOMPARE(read.at(0)->alphaMask(), nullptr);
        }
    }

    void stopsAreClampedAndDefaultToZero()
    {
        const OwnedStack read(ImageEffect::unserialize(object(
            R"({"effectId": "ko.orvanto.imageeffect.ColorFill", "alphaMask":
                {"maskId": "ko.orvanto.alphamask.Distance", "gradientStops":
                 [{"location": 2}, {"value": -1}, 7, {"location": 0.5, "value": 0.25}]}})")));
        const auto stops = read.at(0)->alphaMask()->gradientStopList();
        QCOMPARE(stops.size(), 4);
        QCOMPARE(stops.at(0)->location(), 1.0F);
        QCOMPARE(stops.at(0)->value(), 0.0F);
        QCOMPARE(stops.at(1)->location(), 0.0F);
        QCOMPARE(stops.at(1)->value(), 0.0F);
        QCOMPARE(stops.at(2)->value(), 0.0F);
        QCOMPARE(stops.at(3)->location(), 0.5F);
        QCOMPARE(stops.at(3)->value(), 0.25F);
    }

    void maskKeepsWhatItsJsonDoesNotName()
    {
        const OwnedStack read(ImageEffect::unserialize(
            object(R"({"effectId": "ko.orvanto.imageeffect.ColorFill", "alphaMask":
                       {"maskId": "ko.orvanto.alphamask.Luminance", "what": 1, "enabled": null}})")));
        const AlphaMask *mask = read.at(0)->alphaMask();
        QVERIFY(qobject_cast<const LuminanceAlphaMask *>(mask) != nullptr);
        QVERIFY(mask->enabled());
        QCOMPARE(mask->gradientInterpolation(), AlphaMask::HermiteInterpolation);
        QVERIFY(mask->gradientStopList().isEmpty());
    }

    void missingIdGivesNothing()
    {
        QCOMPARE(ImageEffect::unserialize(QJsonObject()), nullptr);
        QCOMPARE(ImageEffect::unserialize(object(R"({"effectId": 3})")), nullptr);
        QVERIFY(
            ImageEffect::unserialize(QJsonArray{1, QStringLiteral("x"), QJsonArray()}).isEmpty());
    }
};

KORVEL_TEST_MAIN(StackJsonTest)

#include "tst_stackjson.moc"
