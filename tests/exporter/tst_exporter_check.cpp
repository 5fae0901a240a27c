#include "ShellRun.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtTest/QtTest>

namespace
{

enum Code { success = 0, effectsUnreadable = 6, effectsInvalid = 7, notExact = 8, mistakes = 16 };

const QString sourcePng = QStringLiteral("source.png");
const QString stackJson = QStringLiteral("stack.json");

ToolRun check(const QStringList &files)
{
    // Without OpenGL, and without any platform.
    return runTool(QStringList{QStringLiteral("--check"), QStringLiteral("-platform"),
                               QStringLiteral("nonsense")} +
                       files,
                   withoutGl());
}

// An export through "stack.json", without OpenGL.
ToolRun strictExport(const Workshop &workshop)
{
    workshop.write(sourcePng, noise(QSize(3, 2), QImage::Format_RGB32));
    return workshop.runWithEffects(sourcePng, QStringLiteral("target.png"), stackJson,
                                   {QStringLiteral("--strict")}, withoutGl());
}

// A stack of one effect of this kind with these members, as text.
QByteArray stackOf(const QByteArray &kind, const QByteArray &members)
{
    return R"([{"effectId":"ko.orvanto.imageeffect.)" + kind + "\"," + members + "}]";
}

QByteArray masked(const QByteArray &maskMembers)
{
    return stackOf("HSV",
                   R"("alphaMask":{"maskId":"ko.orvanto.alphamask.Hue",)" + maskMembers + '}');
}

QJsonObject catalogue()
{
    return QJsonDocument::fromJson(runTool({QStringLiteral("--list-effects=json")}).output)
        .object();
}

} // namespace

class tst_exporter_check : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyMistakeHasItsPath_data();
    void everyMistakeHasItsPath();
    void everyMistakeEndsAStrictExport_data();
    void everyMistakeEndsAStrictExport();
    void aStrictExportNamesTheFirstMistakes();
    void otherExportsAreNotStrict();
    void goodStacks_data();
    void goodStacks();
    void exampleStacksAreGood();
    void everyDefaultIsGood();
    void everyRangeIsChecked();
    void everyMistakeIsReportedInOrder();
    void placesCountCharacters_data();
    void placesCountCharacters();
    void relativeTablesAreFound();
    void effectsOptionNamesTheStack();
    void manyStacks();
    void invalidJsonHasItsPlace();
    void everyMistakeIsOneLine();
};

void tst_exporter_check::everyMistakeHasItsPath_data()
{
    QTest::addColumn<QByteArray>("stack");
    QTest::addColumn<QByteArray>("mistake");
    const auto row = [](const char *name, const QByteArray &stack, const char *mistake) {
        QTest::newRow(name) << stack << QByteArray(mistake);
    };
    row("no object", "[3]", "$[0]: an effect is an object, not a number");
    row("null", "[null]", "$[0]: an effect is an object, not null");
    row("no id", "[{}]", "$[0]: \"effectId\" is missing");
    row("number as id", R"([{"effectId":3}])", "$[0].effectId: a number is no id");
    row("unknown kind", R"([{"effectId":"ko.orvanto.imageeffect.Glow"}])",
        "$[0].effectId: unknown kind \"ko.orvanto.imageeffect.Glow\"");
    row("misspelt kind", R"([{"effectId":"ko.orvanto.imageeffect.Shapren"}])",
        "; did you mean \"ko.orvanto.imageeffect.Sharpen\"?");
    row("unknown key", stackOf("Blur", R"("size":3)"), "$[0].size: unknown key \"size\"");
    row("misspelt key", stackOf("Blur", R"("raduis":3)"),
        "$[0].raduis: unknown key \"raduis\"; did you mean \"radius\"?");
    row("key in another case", stackOf("Blur", R"("Radius":3)"), "; did you mean \"radius\"?");
    row("key of QObject", stackOf("Blur", R"("objectName":"a")"),
        "$[0].objectName: unknown key \"objectName\"");
    row("key that is no word", stackOf("Blur", R"("a b":3)"), "$[0][\"a b\"]: unknown key \"a b\"");
    row("key twice", stackOf("Blur", R"("radius":3,"radius":4)"),
        "$[0].radius: the key is given twice");
    row("text for number", stackOf("Blur", R"("radius":"3")"),
        "$[0].radius: a text where a number is expected");
    row("null for number", stackOf("Blur", R"("radius":null)"),
        "$[0].radius: null where a number is expected");
    row("true for number", stackOf("Blur", R"("radius":true)"),
        "$[0].radius: true where a number is expected");
    row("number for boolean", stackOf("Blur", R"("enabled":1)"),
        "$[0].enabled: a number where true or false is expected");
    row("number for text", stackOf("Blur", R"("name":1)"),
        "$[0].name: a number where a text is expected");
    row("text for enumerator", stackOf("Blur", R"("blendMode":"Screen")"),
        "$[0].blendMode: a text where the number of an enumerator is expected");
    row("array for mask", stackOf("Blur", R"("alphaMask":[])"),
        "$[0].alphaMask: an array where a mask or null is expected");
    row("object for effects", stackOf("Batch", R"("imageEffects":{})"),
        "$[0].imageEffects: an object where an array of effects is expected");
    row("too much", stackOf("Blur", R"("radius":100.5)"),
        "$[0].radius: 100.5 is out of range; it becomes 100");
    row("a little too much", stackOf("Blur", R"("radius":100.01)"),
        "$[0].radius: 100.01 is out of range; it becomes 100");
    row("too little", stackOf("Exposure", R"("darkTones":-1.01)"),
        "$[0].darkTones: -1.01 is out of range; it becomes -1");
    row("beyond any float", stackOf("BrightnessContrast", R"("contrast":1e200)"),
        "$[0].contrast: 1e200 is beyond the numbers that can be held");
    row("unknown enumerator", stackOf("Blur", R"("blendMode":16)"),
        "$[0].blendMode: 16 is no BlendMode; they are 0 to 15");
    row("negative enumerator", stackOf("Blur", R"("blendMode":-1)"), "-1 is no BlendMode");
    row("half an enumerator", stackOf("Blur", R"("blendMode":0.5)"), "0.5 is no BlendMode");
    row("huge enumerator", stackOf("Blur", R"("blendMode":4294967296)"), "is no BlendMode");
    row("no colour", stackOf("ColorFill", R"("color":"#12345g")"),
        "$[0].color: \"#12345g\" is no colour");
    row("missing table", stackOf("LUT", R"("table":"file:///nonexistent.png")"),
        "$[0].table: the table \"file:///nonexistent.png\" cannot be loaded");
    row("missing preset", stackOf("LUT", R"("table":"qrc:/imagefx/lib/lut/none.png")"),
        "cannot be loaded");
    row("table from afar", stackOf("LUT", R"("table":"https://example.org/a.png")"),
        "cannot be loaded");
    row("damaged data", stackOf("LUT", R"("table":"data:image/png;base64,AAAA")"),
        "cannot be loaded");
    row("mask without id", stackOf("Blur", R"("alphaMask":{"enabled":true})"),
        "$[0].alphaMask: \"maskId\" is missing");
    row("unknown mask", stackOf("Blur", R"("alphaMask":{"maskId":"ko.orvanto.alphamask.Hu"})"),
        "$[0].alphaMask.maskId: unknown kind \"ko.orvanto.alphamask.Hu\"; did you mean "
        "\"ko.orvanto.alphamask.Hue\"?");
    row("unknown key of a mask", masked(R"("invert":true)"),
        "$[0].alphaMask.invert: unknown key \"invert\"");
    row("unknown interpolation", masked(R"("gradientInterpolation":3)"),
        "3 is no GradientInterpolation; they are 0 to 2");
    row("stop that is a number", masked(R"("gradientStops":[0.5])"),
        "$[0].alphaMask.gradientStops[0]: a stop is an object, not a number");
    row("stop beyond 1",
        masked(R"("gradientStops":[{"location":0,"value":1},{"location":1.25,"value":1}])"),
        "$[0].alphaMask.gradientStops[1].location: 1.25 is out of range; it becomes 1");
    row("stop below 0", masked(R"("gradientStops":[{"location":0,"value":-0.5}])"),
        "$[0].alphaMask.gradientStops[0].value: -0.5 is out of range; it becomes 0");
    row("stop without a value", masked(R"("gradientStops":[{"location":0}])"),
        "$[0].alphaMask.gradientStops[0]: a stop without \"value\" has 0 there");
    row("unknown key of a stop", masked(R"("gradientStops":[{"location":0,"value":0,"at":1}])"),
        "$[0].alphaMask.gradientStops[0].at: unknown key \"at\"");
    row("in a batch",
        stackOf("Batch", R"("imageEffects":[{"effectId":"ko.orvanto.imageeffect.GrayScale"},)"
                         R"({"effectId":"ko.orvanto.imageeffect.Blur","radius":0}])"),
        "$[0].imageEffects[1].radius: 0 is out of range; it becomes 1");
}

void tst_exporter_check::everyMistakeHasItsPath()
{
    QFETCH(QByteArray, stack);
    QFETCH(QByteArray, mistake);
    const Workshop workshop;
    const QString file = workshop.write(stackJson, stack);
    const ToolRun run = check({file});
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, int(mistakes));
    QVERIFY2(run.output.startsWith(file.toUtf8() + ":1:"), run.output.constData());
    QVERIFY2(run.output.contains(mistake), run.output.constData());
    QCOMPARE(run.output.count('\n'), 1);
}

void tst_exporter_check::everyMistakeEndsAStrictExport_data()
{
    everyMistakeHasItsPath_data();
}

void tst_exporter_check::everyMistakeEndsAStrictExport()
{
    QFETCH(QByteArray, stack);
    QFETCH(QByteArray, mistake);
    const Workshop workshop;
    workshop.write(stackJson, stack);
    const ToolRun run = strictExport(workshop);
    VERIFY_FAILURE(run, notExact, mistake);
    QVERIFY2(run.errors.contains("stack.json cannot be applied as it is: $["),
             run.errors.constData());
    QVERIFY(!workshop.files().contains(QStringLiteral("target.png")));
}

void tst_exporter_check::aStrictExportNamesTheFirstMistakes()
{
    const Workshop workshop;
    workshop.write(stackJson, stackOf("Blur", R"("a":1,"radius":0,"b":2,"c":3,"enabled":1)"));
    const ToolRun run = strictExport(workshop);
    VERIFY_FAILURE(run, notExact,
                   "$[0].a: unknown key \"a\"; $[0].radius: 0 is out of range; it becomes 1; "
                   "$[0].b: unknown key \"b\"; and 2 more, which --check tells\n");
}

void tst_exporter_check::otherExportsAreNotStrict()
{
    const Workshop workshop;
    workshop.write(stackJson, stackOf("Exposure", R"("a":1,"exposure":7,"name":3)"));
    workshop.write(sourcePng, noise(QSize(3, 2), QImage::Format_RGB32));
    const ToolRun run = workshop.runWithEffects(sourcePng, QStringLiteral("target.png"), stackJson);
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, int(success));
}

void tst_exporter_check::goodStacks_data()
{
    QTest::addColumn<QByteArray>("stack");
    QTest::newRow("empty") << QByteArray("[]");
    QTest::newRow("blanks") << QByteArray(" \r\n\t[ ] \n");
    QTest::newRow("the stored spelling") << stackOf("BrighnessContrast", R"("brightness":7)");
    QTest::newRow("no mask") << stackOf("Blur", R"("alphaMask":null)");
    QTest::newRow("no table") << stackOf("LUT", R"("table":"")");
    QTest::newRow("a preset") << stackOf("LUT", R"("table":"qrc:/imagefx/lib/lut/fargo.png")");
    QTest::newRow("colour by name") << stackOf("ColorFill", R"("color":"teal")");
    QTest::newRow("at the limits") << stackOf("Blur", R"("radius":100,"blendMode":15)");
    QTest::newRow("more digits than a float has")
        << stackOf("GrayScale", R"("red":0.34399999999999997,"blue":0.1234567890123)");
    QTest::newRow("escaped key") << stackOf("Blur", R"("r\u0061dius":3)");
    QTest::newRow("a zero in another form") << stackOf("Exposure", R"("exposure":-0.0e5)");
}

void tst_exporter_check::goodStacks()
{
    QFETCH(QByteArray, stack);
    const Workshop workshop;
    const ToolRun run = check({workshop.write(stackJson, stack)});
    QCOMPARE(run.output, QByteArray());
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, int(success));
}

void tst_exporter_check::exampleStacksAreGood()
{
    const QDir folder(QStringLiteral(EXAMPLE_STACKS));
    QStringList stacks;
    const QStringList names = folder.entryList({QStringLiteral("*.json")});
    for (const QString &name : names) {
        stacks.append(folder.filePath(name));
    }
    QVERIFY(stacks.size() >= 6);
    const ToolRun run = check(stacks);
    QCOMPARE(run.output, QByteArray());
    QCOMPARE(run.exitCode, int(success));
}

void tst_exporter_check::everyDefaultIsGood()
{
    const Workshop workshop;
    QJsonArray stack;
    const QJsonArray effects = catalogue().value(QLatin1String("effects")).toArray();
    for (const QJsonValue &kind : effects) {
        QJsonObject effect{{QStringLiteral("effectId"), kind[QLatin1String("effectId")]}};
        const QJsonArray properties = kind[QLatin1String("properties")].toArray();
        for (const QJsonValue &property : properties) {
            effect.insert(property[QLatin1String("name")].toString(),
                          property[QLatin1String("default")]);
        }
        stack.append(effect);
    }
    QVERIFY(stack.size() >= 11);
    const ToolRun run = check({workshop.write(stackJson, stack)});
    QCOMPARE(run.output, QByteArray());
    QCOMPARE(run.exitCode, int(success));
}

// On every number: its limits are good, and what is a little beyond them is not.
void tst_exporter_check::everyRangeIsChecked()
{
    struct Limit {
        const char *name;
        double beyond;
    };
    const Workshop workshop;
    QJsonArray good;
    QJsonArray bad;
    const QJsonArray effects = catalogue().value(QLatin1String("effects")).toArray();
    for (const QJsonValue &kind : effects) {
        const QJsonArray properties = kind[QLatin1String("properties")].toArray();
        for (const QJsonValue &property : properties) {
            for (const Limit &limit : {Limit{"minimum", -0.125}, Limit{"maximum", 0.125}}) {
                const QJsonValue number = property[QLatin1String(limit.name)];
                if (number.isDouble()) {
                    const QString name = property[QLatin1String("name")].toString();
                    const QJsonValue id = kind[QLatin1String("effectId")];
                    good.append(QJsonObject{{QStringLiteral("effectId"), id}, {name, number}});
                    bad.append(QJsonObject{{QStringLiteral("effectId"), id},
                                           {name, number.toDouble() + limit.beyond}});
                }
            }
        }
    }
    QVERIFY(good.size() >= 2 * 19);
    QCOMPARE(check({workshop.write(QStringLiteral("good.json"), good)}).output, QByteArray());
    const ToolRun run = check({workshop.write(QStringLiteral("bad.json"), bad)});
    QCOMPARE(run.output.count(" is out of range; it becomes "), bad.size());
    QCOMPARE(run.output.count('\n'), bad.size());
}

void tst_exporter_check::everyMistakeIsReportedInOrder()
{
    const Workshop workshop;
    const QString file =
        workshop.write(stackJson, QByteArray("[\n"
                                             "  {\"effectId\": \"ko.orvanto.imageeffect.Blur\",\n"
                                             "   \"radius\": 500,\n"
                                             "   \"radios\": 1},\n"
                                             "  17\n"
                                             "]\n"));
    const ToolRun run = check({file});
    const QByteArray name = file.toUtf8();
    QCOMPARE(run.output,
             name + ":3:14: $[0].radius: 500 is out of range; it becomes 100\n" + name +
                 ":4:4: $[0].radios: unknown key \"radios\"; did you mean \"radius\"?\n" + name +
                 ":5:3: $[1]: an effect is an object, not a number\n");
    QCOMPARE(run.exitCode, int(mistakes));
}

void tst_exporter_check::placesCountCharacters_data()
{
    QTest::addColumn<QByteArray>("stack");
    QTest::addColumn<QByteArray>("place");
    const QByteArray bad = R"({"effectId":"ko.orvanto.imageeffect.Blur","name":"%","radius":0})";
    const auto named = [&](const char *name) {
        return '[' + QByteArray(bad).replace('%', name) + ']';
    };
    QTest::newRow("one byte each") << named("abc") << QByteArray(":1:66: ");
    QTest::newRow("umlauts") << named("\u00e4\u00f6\u00fc") << QByteArray(":1:66: ");
    QTest::newRow("beyond the first plane") << named("\U0001f4f7bc") << QByteArray(":1:66: ");
    QTest::newRow("escaped quote") << named("\\\"c") << QByteArray(":1:66: ");
    QTest::newRow("brackets") << named("]},") << QByteArray(":1:66: ");
    QTest::newRow("Windows lines") << "\r\n\r\n" + named("abc") << QByteArray(":3:66: ");
    QTest::newRow("byte order mark") << "\xef\xbb\xbf" + named("abc") << QByteArray(":1:66: ");
}

void tst_exporter_check::placesCountCharacters()
{
    QFETCH(QByteArray, stack);
    QFETCH(QByteArray, place);
    const Workshop workshop;
    const ToolRun run = check({workshop.write(stackJson, stack)});
    QVERIFY2(run.output.contains(stackJson.toUtf8() + place), run.output.constData());
    QCOMPARE(run.output.count('\n'), 1);
}

void tst_exporter_check::relativeTablesAreFound()
{
    const Workshop workshop;
    QVERIFY(QDir().mkpath(workshop.path(QStringLiteral("looks/tables"))));
    workshop.write(QStringLiteral("looks/tables/warm one.png"),
                   noise(QSize(256, 1), QImage::Format_RGB32));
    workshop.write(QStringLiteral("looks/tables/wide.png"),
                   noise(QSize(257, 1), QImage::Format_RGB32));
    const auto run = [&](const char *table) {
        return check({workshop.write(QStringLiteral("looks/stack.json"),
                                     stackOf("LUT", "\"table\":\"" + QByteArray(table) + '"'))});
    };
    for (const char *good : {"tables/warm%20one.png", "./tables/warm%20one.png",
                             "file:tables/warm%20one.png", "../looks/tables/warm%20one.png"}) {
        QCOMPARE(run(good).output, QByteArray());
    }
    for (const char *bad : {"warm%20one.png", "tables/wide.png", "tables", "tables/none.png"}) {
        QVERIFY2(run(bad).output.contains("cannot be loaded"), bad);
    }
}

void tst_exporter_check::effectsOptionNamesTheStack()
{
    const Workshop workshop;
    const QString file = workshop.write(stackJson, QByteArray("[1]"));
    const ToolRun run =
        runTool({QStringLiteral("--effects=") + file, QStringLiteral("--check")}, withoutGl());
    QCOMPARE(run.output, check({file}).output);
    QCOMPARE(run.exitCode, int(mistakes));
}

void tst_exporter_check::manyStacks()
{
    const Workshop workshop;
    const QString good = workshop.write(QStringLiteral("good.json"), QByteArray("[]"));
    const QString bad = workshop.write(QStringLiteral("bad.json"), QByteArray("[1]"));
    const QString none = workshop.path(QStringLiteral("none.json"));
    const ToolRun two = check({bad, good});
    QCOMPARE(two.exitCode, int(mistakes));
    QCOMPARE(two.output.count('\n'), 1);
    // The rest goes on.
    const ToolRun three = check({none, bad, good});
    VERIFY_FAILURE(three, effectsUnreadable, "none.json");
    QCOMPARE(three.output, two.output);
    QCOMPARE(check({bad, none}).exitCode, int(effectsUnreadable));
}

void tst_exporter_check::invalidJsonHasItsPlace()
{
    const Workshop workshop;
    const ToolRun run = check({workshop.write(stackJson, QByteArray("[\n  {\"a\" 1}\n]"))});
    VERIFY_FAILURE(run, effectsInvalid, "stack.json:2:");
    QVERIFY2(run.errors.contains("is not valid JSON"), run.errors.constData());
}

void tst_exporter_check::everyMistakeIsOneLine()
{
    const Workshop workshop;
    const ToolRun run = check({workshop.write(
        QStringLiteral("line\nbreak.json"),
        QByteArray(
            R"([{"effectId":"a\nb\u001b[31m"},{"effectId":"ko.orvanto.imageeffect.Blur","a\nb":1}])"))});
    QCOMPARE(run.output.count('\n'), 2);
    QVERIFY(!run.output.contains('\x1b'));
    QVERIFY(run.output.contains("line break.json:1:"));
}

QTEST_GUILESS_MAIN(tst_exporter_check)
#include "tst_exporter_check.moc"
