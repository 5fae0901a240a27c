#include "ShellRun.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QRegularExpression>
#include <QtTest/QtTest>

namespace
{

const QString docs = QStringLiteral(DOCS_FOLDER);

QString page()
{
    QFile file(docs + QStringLiteral("/stack-format.md"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// What stands below a heading, up to the next one of any level.
QString section(const QString &heading)
{
    const QString text = page();
    const int begin = text.indexOf(QLatin1Char('\n') + heading + QLatin1Char('\n'));
    return begin < 0 ? QString()
                     : text.mid(begin + heading.size() + 2).section(QStringLiteral("\n#"), 0, 0);
}

QString json(const QJsonValue &value)
{
    return QString::fromUtf8(QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact))
        .mid(1)
        .chopped(1);
}

QString number(const QJsonValue &value)
{
    return QString::number(value.toDouble(), 'g', 7);
}

QString range(const QJsonValue &property)
{
    if (property[QLatin1String("type")] != QLatin1String("number")) {
        return {};
    }
    const QJsonValue minimum = property[QLatin1String("minimum")];
    const QJsonValue maximum = property[QLatin1String("maximum")];
    return minimum.isUndefined() && maximum.isUndefined()
               ? QStringLiteral("any")
               : number(minimum) + QStringLiteral(" to ") + number(maximum);
}

// A row of the page's tables, up to the meaning.
QString row(const QJsonValue &property)
{
    const QJsonValue neutral = property[QLatin1String("neutral")];
    const QStringList cells{
        QLatin1Char('`') + property[QLatin1String("name")].toString() + QLatin1Char('`'),
        property[QLatin1String("type")].toString(), range(property),
        QLatin1Char('`') + json(property[QLatin1String("default")]) + QLatin1Char('`'),
        neutral.isUndefined() ? QString() : QLatin1Char('`') + json(neutral) + QLatin1Char('`')};
    QString text = QStringLiteral("|");
    for (const QString &cell : cells) {
        text += cell.isEmpty() ? QStringLiteral(" |") : QStringLiteral(" %1 |").arg(cell);
    }
    return text + QLatin1Char(' ');
}

QJsonObject propertyOf(const QJsonValue &kind, const char *name)
{
    const QJsonArray properties = kind[QLatin1String("properties")].toArray();
    for (const QJsonValue &entry : properties) {
        if (entry[QLatin1String("name")] == QLatin1String(name)) {
            return entry.toObject();
        }
    }
    return {};
}

} // namespace

class tst_exporter_catalogue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everyKindIsListed();
    void numbersHaveTheirRanges_data();
    void numbersHaveTheirRanges();
    void otherTypes();
    void neutralEffects();
    void aliasesAndPresets();
    void textTellsTheSame();
    void defaultsAreWhatAnEmptyEffectHas();
    void pageHasEveryProperty_data();
    void pageHasEveryProperty();
    void pageHasEveryBlendMode();
    void pageHasEveryPreset();
    void pageHasAllKindsAndNoOthers();
    void examplesOfThePageAreGood();
    void picturesOfThePageAreSmall();

private:
    QJsonValue kind(const QString &list, const QString &id) const;
    void verifyRows(const QString &heading, const QJsonArray &properties) const;

    QJsonObject m_catalogue;
    QByteArray m_text;
};

void tst_exporter_catalogue::initTestCase()
{
    const ToolRun listed = runTool({QStringLiteral("--list-effects=json")}, withoutGl());
    QCOMPARE(listed.exitCode, 0);
    QCOMPARE(listed.errors, QByteArray());
    m_catalogue = QJsonDocument::fromJson(listed.output).object();
    const ToolRun text = runTool({QStringLiteral("--list-effects")}, withoutGl());
    QCOMPARE(text.errors, QByteArray());
    m_text = text.output;
    QCOMPARE(runTool({QStringLiteral("--list-effects=text")}).output, m_text);
}

QJsonValue tst_exporter_catalogue::kind(const QString &list, const QString &id) const
{
    const QJsonArray kinds = m_catalogue.value(list).toArray();
    for (const QJsonValue &entry : kinds) {
        const bool effects = list == QLatin1String("effects");
        const QJsonValue name =
            entry[effects ? QLatin1String("effectId") : QLatin1String("maskId")];
        if (name.toString().endsWith(QLatin1Char('.') + id)) {
            return entry;
        }
    }
    return QJsonValue::Undefined;
}

void tst_exporter_catalogue::everyKindIsListed()
{
    QStringList effects;
    const QJsonArray listed = m_catalogue.value(QLatin1String("effects")).toArray();
    for (const QJsonValue &entry : listed) {
        effects.append(entry[QLatin1String("effectId")].toString());
    }
    const QString prefix = QStringLiteral("ko.orvanto.imageeffect.");
    QStringList expected;
    for (const char *name :
         {"Batch", "Blur", "BrightnessContrast", "ChannelShift", "ColorFill", "Exposure",
          "GrayScale", "HSV", "LUT", "SelectiveSaturation", "Sharpen"}) {
        expected.append(prefix + QLatin1String(name));
    }
    QCOMPARE(effects, expected);
    QCOMPARE(m_catalogue.value(QLatin1String("masks")).toArray().size(), 3);
    for (const char *mask : {"Hue", "Distance", "Luminance"}) {
        QVERIFY2(kind(QStringLiteral("masks"), QLatin1String(mask)).isObject(), mask);
    }
}

void tst_exporter_catalogue::numbersHaveTheirRanges_data()
{
    QTest::addColumn<QString>("kindName");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<double>("standard");
    const auto add = [](const char *kindName, const char *name, const char *range,
                        double standard) {
        QTest::addRow("%s.%s", kindName, name) << QString::fromLatin1(kindName) << QByteArray(name)
                                               << QString::fromLatin1(range) << standard;
    };
    add("Blur", "radius", "1 to 100", 1);
    add("Blur", "alpha", "any", 1);
    add("BrightnessContrast", "brightness", "any", 0);
    add("BrightnessContrast", "contrast", "any", 0);
    add("ChannelShift", "green", "any", 0);
    add("Exposure", "exposure", "-1 to 1", 0);
    add("GrayScale", "red", "0 to 1", 0.344);
    add("GrayScale", "green", "0 to 1", 0.5);
    add("GrayScale", "blue", "0 to 1", 0.156);
    add("HSV", "value", "-1 to 1", 0);
    add("SelectiveSaturation", "magenta", "-1 to 1", 0);
    add("Sharpen", "strength", "any", 0.5);
    add("Sharpen", "radius", "1 to 80", 1);
}

void tst_exporter_catalogue::numbersHaveTheirRanges()
{
    QFETCH(QString, kindName);
    QFETCH(QByteArray, name);
    QFETCH(QString, expected);
    QFETCH(double, standard);
    const QJsonValue found =
        propertyOf(kind(QStringLiteral("effects"), kindName), name.constData());
    QCOMPARE(found[QLatin1String("type")].toString(), QStringLiteral("number"));
    QCOMPARE(range(found), expected);
    QCOMPARE(found[QLatin1String("default")].toDouble(), standard);
}

void tst_exporter_catalogue::otherTypes()
{
    const QJsonValue blur = kind(QStringLiteral("effects"), QStringLiteral("Blur"));
    const QJsonObject blend = propertyOf(blur, "blendMode");
    QCOMPARE(blend.value(QLatin1String("type")).toString(), QStringLiteral("enumeration"));
    const QJsonArray modes = blend.value(QLatin1String("values")).toArray();
    QCOMPARE(modes.size(), 16);
    QCOMPARE(modes.at(9)[QLatin1String("name")].toString(), QStringLiteral("SoftLight"));
    QCOMPARE(modes.at(9)[QLatin1String("value")].toInt(), 9);
    QCOMPARE(propertyOf(blur, "enabled").value(QLatin1String("default")), QJsonValue(true));
    QCOMPARE(propertyOf(blur, "alphaMask").value(QLatin1String("type")).toString(),
             QStringLiteral("mask"));
    QCOMPARE(propertyOf(kind(QStringLiteral("effects"), QStringLiteral("ColorFill")), "color")
                 .value(QLatin1String("default"))
                 .toString(),
             QStringLiteral("#ff0000"));
    QCOMPARE(propertyOf(kind(QStringLiteral("effects"), QStringLiteral("Batch")), "imageEffects")
                 .value(QLatin1String("type"))
                 .toString(),
             QStringLiteral("effects"));
    const QJsonValue hue = kind(QStringLiteral("masks"), QStringLiteral("Hue"));
    QCOMPARE(propertyOf(hue, "gradientStops").value(QLatin1String("type")).toString(),
             QStringLiteral("stops"));
    QCOMPARE(propertyOf(hue, "gradientInterpolation").value(QLatin1String("default")).toInt(), 2);
    const QJsonArray stop = m_catalogue.value(QLatin1String("stop")).toArray();
    QCOMPARE(stop.size(), 2);
    for (const QJsonValue &entry : stop) {
        QCOMPARE(range(entry), QStringLiteral("0 to 1"));
    }
}

void tst_exporter_catalogue::neutralEffects()
{
    const QStringList never{QStringLiteral("Blur"), QStringLiteral("ColorFill"),
                            QStringLiteral("GrayScale"), QStringLiteral("Sharpen")};
    const QJsonArray effects = m_catalogue.value(QLatin1String("effects")).toArray();
    for (const QJsonValue &entry : effects) {
        const QString id =
            entry[QLatin1String("effectId")].toString().section(QLatin1Char('.'), -1);
        QCOMPARE(entry[QLatin1String("neutralByDefault")].toBool(), !never.contains(id));
    }
    const auto neutral = [this](const char *id, const char *name) {
        return propertyOf(kind(QStringLiteral("effects"), QLatin1String(id)), name)
            .value(QLatin1String("neutral"));
    };
    QCOMPARE(neutral("Sharpen", "strength"), QJsonValue(0));
    QVERIFY(neutral("Sharpen", "radius").isUndefined());
    QVERIFY(neutral("Blur", "radius").isUndefined());
    QCOMPARE(neutral("HSV", "hue"), QJsonValue(0));
    QCOMPARE(neutral("LUT", "table"), QJsonValue(QString()));
    QCOMPARE(neutral("Batch", "imageEffects"), QJsonValue(QJsonArray()));
    QVERIFY(neutral("HSV", "name").isUndefined());
}

void tst_exporter_catalogue::aliasesAndPresets()
{
    QCOMPARE(kind(QStringLiteral("effects"),
                  QStringLiteral("BrightnessContrast"))[QLatin1String("aliases")],
             QJsonValue(QJsonArray{QStringLiteral("ko.orvanto.imageeffect.BrighnessContrast")}));
    const QJsonArray presets = m_catalogue.value(QLatin1String("presets")).toArray();
    QVERIFY(presets.contains(QStringLiteral("qrc:/imagefx/lib/lut/fargo.png")));
    QVERIFY(presets.size() >= 6);
}

void tst_exporter_catalogue::textTellsTheSame()
{
    const QList<QByteArray> lines = m_text.split('\n');
    for (const QByteArray &line : lines) {
        QVERIFY2(line.size() <= 80, line.constData());
    }
    const auto has = [this](const char *form) {
        return QRegularExpression(QLatin1String(form), QRegularExpression::MultilineOption)
            .match(QString::fromUtf8(m_text))
            .hasMatch();
    };
    QVERIFY(has("^ko\\.orvanto\\.imageeffect\\.Blur\n  radius +number +1 to 100 +default 1$"));
    QVERIFY(has("^  strength +number +any +default 0\\.5, neutral 0$"));
    QVERIFY(has("^  blendMode +enumeration +default 0 \\(Normal\\)$"));
    QVERIFY(has("15 DarkenOnly$"));
    QVERIFY(has("^  location +number +0 to 1 +default 0$"));
    QVERIFY(has("^  also read as ko\\.orvanto\\.imageeffect\\.BrighnessContrast$"));
    QVERIFY(has("qrc:/imagefx/lib/lut/fargo\\.png"));
    const QJsonArray effects = m_catalogue.value(QLatin1String("effects")).toArray();
    for (const QJsonValue &entry : effects) {
        QVERIFY(m_text.contains('\n' + entry[QLatin1String("effectId")].toString().toLatin1()));
    }
}

// An effect without properties draws what one with every default written out draws.
void tst_exporter_catalogue::defaultsAreWhatAnEmptyEffectHas()
{
    const Workshop workshop;
    workshop.write(QStringLiteral("source.png"), noise(QSize(17, 13), QImage::Format_RGB32));
    for (const char *id : {"GrayScale", "Sharpen", "ColorFill", "Blur"}) {
        const QJsonValue listed = kind(QStringLiteral("effects"), QLatin1String(id));
        QJsonObject properties;
        const QJsonArray all = listed[QLatin1String("properties")].toArray();
        for (const QJsonValue &entry : all) {
            properties.insert(entry[QLatin1String("name")].toString(),
                              entry[QLatin1String("default")]);
        }
        QCOMPARE(workshop
                     .run(QStringLiteral("source.png"), QStringLiteral("full.png"),
                          {effect(QLatin1String(id), properties)})
                     .exitCode,
                 0);
        QCOMPARE(workshop
                     .run(QStringLiteral("source.png"), QStringLiteral("empty.png"),
                          {effect(QLatin1String(id))})
                     .exitCode,
                 0);
        QCOMPARE(difference(workshop.readPicture(QStringLiteral("full.png")),
                            workshop.readPicture(QStringLiteral("empty.png"))),
                 QString());
    }
}

// The rows are there, and no others.
void tst_exporter_catalogue::verifyRows(const QString &heading, const QJsonArray &properties) const
{
    const QString text = section(heading);
    QVERIFY2(!text.isEmpty(), qPrintable(heading));
    for (const QJsonValue &entry : properties) {
        QVERIFY2(text.contains(QLatin1Char('\n') + row(entry)), qPrintable(row(entry)));
    }
    QCOMPARE(text.count(QStringLiteral("\n| `")), properties.size());
}

void tst_exporter_catalogue::pageHasEveryProperty_data()
{
    QTest::addColumn<QString>("heading");
    QTest::addColumn<QJsonArray>("properties");
    constexpr int commonProperties = 5;
    const QJsonArray effects = m_catalogue.value(QLatin1String("effects")).toArray();
    QJsonArray common;
    for (const QJsonValue &entry : effects) {
        QJsonArray own = entry[QLatin1String("properties")].toArray();
        common = QJsonArray();
        for (int i = 0; i < commonProperties; ++i) {
            common.append(own.takeAt(0));
        }
        const QString id =
            entry[QLatin1String("effectId")].toString().section(QLatin1Char('.'), -1);
        QTest::newRow(qPrintable(id)) << QStringLiteral("### ") + id << own;
    }
    QTest::newRow("every effect") << QStringLiteral("## Every effect") << common;
    QTest::newRow("masks") << QStringLiteral("## Masks")
                           << kind(QStringLiteral("masks"),
                                   QStringLiteral("Hue"))[QLatin1String("properties")]
                                  .toArray();
    QTest::newRow("stops") << QStringLiteral("### Stops")
                           << m_catalogue.value(QLatin1String("stop")).toArray();
}

void tst_exporter_catalogue::pageHasEveryProperty()
{
    QFETCH(QString, heading);
    QFETCH(QJsonArray, properties);
    verifyRows(heading, properties);
}

void tst_exporter_catalogue::pageHasEveryBlendMode()
{
    const QString text = section(QStringLiteral("### Blend modes"));
    const QJsonArray modes =
        propertyOf(kind(QStringLiteral("effects"), QStringLiteral("Blur")), "blendMode")
            .value(QLatin1String("values"))
            .toArray();
    QCOMPARE(modes.size(), 16);
    for (const QJsonValue &mode : modes) {
        const QString cells = QStringLiteral("| %1 | %2 |")
                                  .arg(mode[QLatin1String("value")].toInt())
                                  .arg(mode[QLatin1String("name")].toString());
        QVERIFY2(text.contains(cells), qPrintable(cells));
    }
}

void tst_exporter_catalogue::pageHasEveryPreset()
{
    const QString text = section(QStringLiteral("## Tables"));
    const QJsonArray presets = m_catalogue.value(QLatin1String("presets")).toArray();
    for (const QJsonValue &preset : presets) {
        QVERIFY2(text.contains(QStringLiteral("\n- `%1`\n").arg(preset.toString())),
                 qPrintable(preset.toString()));
    }
    QCOMPARE(text.count(QStringLiteral("\n- `qrc:")), presets.size());
}

void tst_exporter_catalogue::pageHasAllKindsAndNoOthers()
{
    QStringList named;
    QStringList listed;
    auto matches =
        QRegularExpression(QStringLiteral("ko\\.orvanto\\.[A-Za-z.]+")).globalMatch(page());
    while (matches.hasNext()) {
        named.append(matches.next().captured());
    }
    const QJsonArray effects = m_catalogue.value(QLatin1String("effects")).toArray();
    for (const QJsonValue &entry : effects) {
        listed.append(entry[QLatin1String("effectId")].toString());
        listed += entry[QLatin1String("aliases")].toVariant().toStringList();
    }
    const QJsonArray masks = m_catalogue.value(QLatin1String("masks")).toArray();
    for (const QJsonValue &entry : masks) {
        listed.append(entry[QLatin1String("maskId")].toString());
    }
    named.removeDuplicates();
    named.sort();
    listed.sort();
    QCOMPARE(named, listed);
}

void tst_exporter_catalogue::examplesOfThePageAreGood()
{
    const Workshop workshop;
    QStringList stacks;
    auto matches = QRegularExpression(QStringLiteral("\n```json\n(.*?)\n```\n"),
                                      QRegularExpression::DotMatchesEverythingOption)
                       .globalMatch(page());
    while (matches.hasNext()) {
        stacks.append(workshop.write(QStringLiteral("%1.json").arg(stacks.size()),
                                     matches.next().captured(1).toUtf8()));
    }
    QVERIFY(stacks.size() >= 15);
    const ToolRun run = runTool(QStringList{QStringLiteral("--check")} + stacks);
    QCOMPARE(run.output, QByteArray());
    QCOMPARE(run.exitCode, 0);
}

void tst_exporter_catalogue::picturesOfThePageAreSmall()
{
    QStringList named;
    auto matches = QRegularExpression(QStringLiteral("\\]\\(effects/([a-z-]+\\.jpg)\\)\n"))
                       .globalMatch(page());
    while (matches.hasNext()) {
        named.append(matches.next().captured(1));
    }
    const QDir folder(docs + QStringLiteral("/effects"));
    named.sort();
    QCOMPARE(named, folder.entryList(QDir::Files, QDir::Name));
    for (const QString &name : qAsConst(named)) {
        const QImage picture(folder.filePath(name));
        QCOMPARE(picture.width(), 480);
        QVERIFY2(QFileInfo(folder.filePath(name)).size() < 40LL * 1024, qPrintable(name));
    }
}

QTEST_GUILESS_MAIN(tst_exporter_catalogue)
#include "tst_exporter_catalogue.moc"
