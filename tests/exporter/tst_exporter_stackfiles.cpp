#include "ShellRun.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QRandomGenerator>
#include <QtTest/QtTest>

namespace
{

enum Code { effectsUnreadable = 6, effectsInvalid = 7, effectsTooLarge = 15, mistakes = 16 };

const QByteArray blur(R"({"effectId":"ko.orvanto.imageeffect.Blur","radius":2})");
const QByteArray older("an older target");

// Of a process that reads a hostile stack: far below what a tree of the largest file would take.
constexpr qint64 memoryLimit = 700LL * 1024 * 1024;
constexpr qint64 timeLimit = 30000;

QByteArray repeated(const QByteArray &text, int count)
{
    return text.repeated(count);
}

QByteArray stackOf(int effects)
{
    return '[' + repeated(blur + ',', effects - 1) + blur + ']';
}

QByteArray batches(int depth)
{
    return repeated(R"([{"effectId":"ko.orvanto.imageeffect.Batch","imageEffects":)", depth) +
           "[]" + repeated("}]", depth);
}

} // namespace

class tst_exporter_stackfiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hostileStacks_data();
    void hostileStacks();
    void stacksAtTheLimit_data();
    void stacksAtTheLimit();
    void hugeSparseFile();
    void endlessFile();
    void pipes_data();
    void pipes();
    void pipeWithALateWriter();
    void pipeWithoutAWriter();
    void damagedStacksNeverCrash();
};

void tst_exporter_stackfiles::hostileStacks_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("named");
    const auto row = [](const char *name, const QByteArray &content, Code code, const char *named) {
        QTest::newRow(name) << content << int(code) << QByteArray(named);
    };
    const int deep = 10000;
    row("a hundred thousand effects", stackOf(100000), effectsTooLarge, "at most 100000 are read");
    row("one effect too many", stackOf(1001), effectsTooLarge, "1001 effects; at most 1000");
    row("one nested effect too many",
        R"([{"effectId":"ko.orvanto.imageeffect.Batch","imageEffects":)" + stackOf(1000) + "}]",
        effectsTooLarge, "1001 effects; at most 1000");
    row("arrays 10000 deep", repeated("[", deep) + repeated("]", deep), effectsTooLarge,
        "10000 levels deep; at most 32");
    row("arrays 10000 deep, open", repeated("[", deep), effectsTooLarge, "10000 levels");
    row("a million levels", repeated("[", 1000000), effectsTooLarge, "1000000 levels");
    row("batches 10000 deep", batches(deep), effectsTooLarge, "20001 levels");
    row("objects 10000 deep", '[' + repeated(R"({"a":)", deep) + '1' + repeated("}", deep) + ']',
        effectsTooLarge, "10001 levels");
    row("one level too many", batches(16), effectsTooLarge, "33 levels");
    row("a million numbers", "[" + repeated("0,", 999999) + "0]", effectsTooLarge,
        "1000000 values");
    row("closed too often", repeated("]", deep), effectsInvalid, "not valid JSON");
    row("infinite number", "[" + blur.chopped(2) + "1e999}]", effectsInvalid, "illegal number");
    row("minus infinite number", "[" + blur.chopped(2) + "-1e999}]", effectsInvalid,
        "illegal number");
    row("endless digits", "[" + repeated("9", 100000) + "]", effectsInvalid, "illegal number");
    row("open text", "[\"" + repeated("a", 1000000), effectsInvalid, "not valid JSON");
    row("text that ends in a backslash", "[\"\\", effectsInvalid, "not valid JSON");
    row("zero bytes", QByteArray(100000, '\0'), effectsInvalid, "not valid JSON");
    row("spaces up to the limit", QByteArray(64 * 1024 * 1024, ' '), effectsInvalid,
        "not valid JSON");
    row("spaces beyond it", QByteArray(64 * 1024 * 1024, ' ') + "[]", effectsTooLarge, "64 MiB");
}

void tst_exporter_stackfiles::hostileStacks()
{
    QFETCH(QByteArray, content);
    QFETCH(int, code);
    QFETCH(QByteArray, named);
    const Workshop workshop;
    workshop.write(QStringLiteral("source.png"), noise(QSize(3, 3), QImage::Format_RGB32));
    workshop.write(QStringLiteral("target.png"), older);
    workshop.write(QStringLiteral("stack.json"), content);
    QElapsedTimer timer;
    timer.start();
    const ToolRun exported = workshop.runWithEffects(
        QStringLiteral("source.png"), QStringLiteral("target.png"), QStringLiteral("stack.json"));
    VERIFY_FAILURE(exported, code, named);
    QCOMPARE(workshop.read(QStringLiteral("target.png")), older);
    const ToolRun checked =
        runTool({QStringLiteral("--check"), workshop.path(QStringLiteral("stack.json"))});
    VERIFY_FAILURE(checked, code, named);
    QVERIFY2(timer.elapsed() < timeLimit, qPrintable(QString::number(timer.elapsed())));
    QVERIFY2(largestMemoryOfChildren() < memoryLimit,
             qPrintable(QString::number(largestMemoryOfChildren())));
}

void tst_exporter_stackfiles::stacksAtTheLimit_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("effects") << stackOf(1000);
    QTest::newRow("levels") << batches(15);
    QTest::newRow("values") << "[" + blur.chopped(1) +
                                   R"(,"alphaMask":{"maskId":"ko.orvanto.alphamask.Hue",)" +
                                   R"("gradientStops":[)" +
                                   repeated(R"({"location":1,"value":1},)", 30000) +
                                   R"({"location":0,"value":0}]}}])";
    QTest::newRow("bytes") << QByteArray(64 * 1024 * 1024 - 2, ' ') + "[]";
    QTest::newRow("brackets in a text")
        << "[" + blur.chopped(1) + R"(,"name":")" + repeated("[{\\\"", 100000) + "\"}]";
}

void tst_exporter_stackfiles::stacksAtTheLimit()
{
    QFETCH(QByteArray, content);
    const Workshop workshop;
    workshop.write(QStringLiteral("source.png"), noise(QSize(3, 3), QImage::Format_RGB32));
    workshop.write(QStringLiteral("stack.json"), content);
    QElapsedTimer timer;
    timer.start();
    const ToolRun run =
        workshop.runWithEffects(QStringLiteral("source.png"), QStringLiteral("target.png"),
                                QStringLiteral("stack.json"), {QStringLiteral("--strict")});
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(workshop.readPicture(QStringLiteral("target.png")).size(), QSize(3, 3));
    const ToolRun checked =
        runTool({QStringLiteral("--check"), workshop.path(QStringLiteral("stack.json"))});
    QCOMPARE(checked.output, QByteArray());
    QCOMPARE(checked.exitCode, 0);
    QVERIFY2(timer.elapsed() < timeLimit, qPrintable(QString::number(timer.elapsed())));
    QVERIFY2(largestMemoryOfChildren() < memoryLimit,
             qPrintable(QString::number(largestMemoryOfChildren())));
}

void tst_exporter_stackfiles::hugeSparseFile()
{
    const Workshop workshop;
    QFile file(workshop.write(QStringLiteral("huge.json"), QByteArray("[]")));
    QVERIFY(file.resize(2LL * 1024 * 1024 * 1024));
    QElapsedTimer timer;
    timer.start();
    VERIFY_FAILURE(runTool({QStringLiteral("--check"), file.fileName()}), effectsTooLarge,
                   "larger than 64 MiB");
    // It is not read at all.
    QVERIFY2(timer.elapsed() < timeLimit / 3, qPrintable(QString::number(timer.elapsed())));
}

void tst_exporter_stackfiles::endlessFile()
{
    VERIFY_FAILURE(runTool({QStringLiteral("--check"), QStringLiteral("/dev/zero")}),
                   effectsTooLarge, "larger than 64 MiB");
    QVERIFY(largestMemoryOfChildren() < memoryLimit);
}

void tst_exporter_stackfiles::pipes_data()
{
    QTest::addColumn<QByteArray>("writer");
    QTest::newRow("at once") << QByteArray("echo '[1]'");
    QTest::newRow("late") << QByteArray("sleep 1; echo '[1]'");
    QTest::newRow("in parts") << QByteArray("echo '['; sleep 1; echo '1]'");
}

// As in `--effects=<(jq ... look.json)`.
void tst_exporter_stackfiles::pipes()
{
    QFETCH(QByteArray, writer);
    const QTemporaryDir folder;
    const ToolRun run = runShell("$TOOL --check <(" + writer + ")", folder.path());
    QCOMPARE(run.errors, QByteArray());
    QVERIFY2(run.output.contains("$[0]: an effect is an object, not a number"),
             run.output.constData());
    QCOMPARE(run.exitCode, int(mistakes));
}

void tst_exporter_stackfiles::pipeWithALateWriter()
{
    const QTemporaryDir folder;
    const ToolRun run =
        runShell("mkfifo pipe; (sleep 1; echo '[1]' > pipe) & $TOOL --check pipe", folder.path());
    QVERIFY2(run.output.contains("$[0]: "), run.errors.constData());
    QCOMPARE(run.exitCode, int(mistakes));
}

void tst_exporter_stackfiles::pipeWithoutAWriter()
{
    const QTemporaryDir folder;
    const ToolRun run = runShell("mkfifo pipe && $TOOL --check pipe", folder.path());
    VERIFY_FAILURE(run, effectsInvalid, "pipe");
}

// Whatever a stack holds, the answer is a code of the program's own.
void tst_exporter_stackfiles::damagedStacksNeverCrash()
{
    const QByteArray whole =
        R"([{"effectId":"ko.orvanto.imageeffect.Batch","imageEffects":[)" + blur +
        R"(,{"effectId":"ko.orvanto.imageeffect.LUT","table":"qrc:/imagefx/lib/lut/fargo.png"}],)"
        R"("alphaMask":{"maskId":"ko.orvanto.alphamask.Hue","gradientInterpolation":1,)"
        R"("gradientStops":[{"location":0.5,"value":1}]}},)"
        R"({"effectId":"ko.orvanto.imageeffect.ColorFill","color":"#102030","blendMode":3}])";
    QRandomGenerator random(11);
    const Workshop workshop;
    QStringList arguments{QStringLiteral("--check")};
    for (int i = 0; i < 400; ++i) {
        QByteArray damaged = whole;
        const int changes = random.bounded(1, 4);
        for (int k = 0; k < changes; ++k) {
            const int at = random.bounded(damaged.size());
            switch (random.bounded(4)) {
            case 0:
                damaged[at] = char(random.bounded(256));
                break;
            case 1:
                damaged[at] = "[]{},:\"\\0-e"[random.bounded(11)];
                break;
            case 2:
                damaged.remove(at, random.bounded(1, 20));
                break;
            default:
                damaged.insert(at, damaged.mid(random.bounded(damaged.size()), 30));
            }
        }
        arguments.append(workshop.write(QStringLiteral("%1.json").arg(i), damaged));
    }
    const ToolRun run = runTool(arguments);
    QCOMPARE(run.exitCode, int(effectsInvalid));
    QVERIFY(run.errors.count("not valid JSON") > 100);
    QVERIFY(run.output.count('\n') > 50);
    QCOMPARE(run.errors.count('\n'), run.errors.count("korvel-image-exporter: "));
}

QTEST_GUILESS_MAIN(tst_exporter_stackfiles)
#include "tst_exporter_stackfiles.moc"
