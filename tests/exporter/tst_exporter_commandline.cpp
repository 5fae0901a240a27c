#include "ShellRun.h"

#include <QtCore/QRegularExpression>
#include <QtTest/QtTest>

#include <sched.h>

namespace
{

enum Code { success = 0, usage = 2, sourceMissing = 3, targetWrite = 11 };

// A call that is right but for its source, which does not exist.
QStringList onePicture(const QStringList &more)
{
    return QStringList{QStringLiteral("--source=/nonexistent/a.png"),
                       QStringLiteral("--target=/nonexistent/b.png"),
                       QStringLiteral("--effects=/nonexistent/c.json")} +
           more;
}

QStringList manyPictures(const QStringList &more)
{
    return QStringList{QStringLiteral("--target-dir=/nonexistent/out"),
                       QStringLiteral("--effects=/nonexistent/c.json")} +
           more;
}

} // namespace

class tst_exporter_commandline : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void helpFitsTheTerminal();
    void helpNamesEveryOption();
    void shortFormsOfHelpAndVersion();
    void helpBehindTwoDashesIsAName();
    void exitCodesKeepTheirNumbers();
    void goodValues_data();
    void goodValues();
    void wrongValues_data();
    void wrongValues();
    void misspeltOptions_data();
    void misspeltOptions();
    void contradictions_data();
    void contradictions();
    void everyOptionCountsOnce();
    void threadsAreAsManyAsTheAllowedProcessors();
    void fullOutputIsTold_data();
    void fullOutputIsTold();
};

void tst_exporter_commandline::helpFitsTheTerminal()
{
    const ToolRun run = runTool({QStringLiteral("--help")});
    const QList<QByteArray> lines = run.output.split('\n');
    QVERIFY(lines.size() > 50);
    for (const QByteArray &line : lines) {
        QVERIFY2(line.size() <= 80, line.constData());
        QVERIFY2(!line.endsWith(' '), line.constData());
    }
}

void tst_exporter_commandline::helpNamesEveryOption()
{
    const ToolRun run = runTool({QStringLiteral("--help")});
    for (const char *option : {"--source=FILE",
                               "--target=FILE",
                               "--target-dir=DIR",
                               "--suffix=SUFFIX",
                               "--skip-existing",
                               "--progress=bar|json|none",
                               "--effects=FILE",
                               "--strict",
                               "--check",
                               "--list-effects[=text|json]",
                               "--format=jpg|png|webp|tif|bmp",
                               "--quality=N",
                               "--max-size=WxH",
                               "--background=COLOUR",
                               "--keep=all|icc|none",
                               "--engine=auto|gl|cpu",
                               "--threads=N",
                               "--max-pixels=N",
                               "--verbose",
                               "-platform NAME",
                               "-- ",
                               "--help",
                               "--version"}) {
        QVERIFY2(run.output.contains(QByteArray("\n  ") + option), option);
    }
}

void tst_exporter_commandline::shortFormsOfHelpAndVersion()
{
    QCOMPARE(runTool({QStringLiteral("-h")}).output, runTool({QStringLiteral("--help")}).output);
    QCOMPARE(runTool({QStringLiteral("-V")}).output,
             runTool({QStringLiteral("--nonsense"), QStringLiteral("--version")}).output);
}

void tst_exporter_commandline::helpBehindTwoDashesIsAName()
{
    const ToolRun run = runTool({QStringLiteral("--"), QStringLiteral("--help")});
    VERIFY_FAILURE(run, usage, "\"--help\"");
    QCOMPARE(run.output, QByteArray());
}

void tst_exporter_commandline::exitCodesKeepTheirNumbers()
{
    const QByteArray help = runTool({QStringLiteral("--help")}).output;
    const QList<QByteArray> table = help.mid(help.indexOf("Exit codes:\n") + 12).split('\n');
    const QList<QByteArray> beginnings{" 0  everything is done",
                                       " 2  missing, unknown",
                                       " 3  the source does not exist",
                                       " 4  the source cannot be",
                                       " 5  the source is not",
                                       " 6  the effects file is missing",
                                       " 7  the effects file is not a JSON",
                                       " 8  an effect cannot be applied",
                                       " 9  the target's suffix",
                                       "10  the target's folder",
                                       "11  the target cannot be",
                                       "12  OpenGL is not",
                                       "13  the picture is larger",
                                       "14  rendering failed",
                                       "15  the effects file is too large",
                                       "16  --check found",
                                       "17  some of the pictures",
                                       "18  two pictures",
                                       "19  there is no picture"};
    for (int i = 0; i < beginnings.size(); ++i) {
        QVERIFY2(table.value(i).startsWith("  " + beginnings.at(i)), table.value(i).constData());
    }
}

void tst_exporter_commandline::goodValues_data()
{
    QTest::addColumn<QString>("option");
    for (const char *option : {"--strict",
                               "--verbose",
                               "--quality=1",
                               "--quality=100",
                               "--max-size=1x1",
                               "--max-size=4000X3000",
                               "--format=jpg",
                               "--format=png",
                               "--format=webp",
                               "--format=tif",
                               "--format=bmp",
                               "--background=white",
                               "--background=#102030",
                               "--background=#fff",
                               "--keep=all",
                               "--keep=icc",
                               "--keep=none",
                               "--engine=auto",
                               "--engine=gl",
                               "--engine=cpu",
                               "--threads=1",
                               "--threads=256",
                               "--max-pixels=1",
                               "--max-pixels=1000000000000",
                               "--"}) {
        QTest::newRow(option) << QString::fromLatin1(option);
    }
}

// The call gets as far as the missing source.
void tst_exporter_commandline::goodValues()
{
    QFETCH(QString, option);
    const ToolRun run = runTool(onePicture({option}), withoutGl());
    VERIFY_FAILURE(run, sourceMissing, "/nonexistent/a.png");
}

void tst_exporter_commandline::wrongValues_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QByteArray>("wanted");
    const auto row = [](const char *option, const char *wanted) {
        QTest::newRow(option) << QString::fromUtf8(option) << QByteArray(wanted);
    };
    for (const char *option :
         {"--quality=0", "--quality=101", "--quality=-1", "--quality=+5", "--quality=1.5",
          "--quality=high", "--quality= 5", "--quality=99999999999999999999", "--quality=\u0663"}) {
        row(option, "from 1 to 100");
    }
    for (const char *option :
         {"--max-size=100", "--max-size=0x5", "--max-size=5x0", "--max-size=x", "--max-size=5x",
          "--max-size=x5", "--max-size=5x-5", "--max-size=5x5x5", "--max-size=5000000x5"}) {
        row(option, "1920x1080");
    }
    for (const char *option : {"--max-pixels=0", "--max-pixels=1e6", "--max-pixels=many"}) {
        row(option, "from 1 to");
    }
    for (const char *option : {"--threads=0", "--threads=257", "--threads=two"}) {
        row(option, "from 1 to 256");
    }
    for (const char *option : {"--background=nonsense", "--background=transparent",
                               "--background=#80ff0000", "--background=#12"}) {
        row(option, "#RRGGBB");
    }
    row("--keep=some", "all, icc, none");
    row("--keep=ALL", "did you mean all?");
    row("--format=gif", "jpg, png, webp, tif, bmp");
    row("--format=jpeg", "did you mean jpg?");
    row("--progress=dots", "bar, json, none");
    row("--list-effects=xml", "text, json");
    row("--list-effects=", "--list-effects");
    row("--suffix=gif", "jpg");
    row("--suffix=a/b.jpg", "jpg");
    row("--verbose=yes", "takes no value");
    row("--skip-existing=", "takes no value");
    row("--quality", "needs a value, as in --quality=N");
    row("--target-dir=", "needs a value");
    row("--effects", "needs a path");
}

void tst_exporter_commandline::wrongValues()
{
    QFETCH(QString, option);
    QFETCH(QByteArray, wanted);
    const ToolRun run = runTool({option, QStringLiteral("x.png")}, withoutGl());
    VERIFY_FAILURE(run, usage, wanted);
    QVERIFY2(run.errors.contains(option.section(QLatin1Char('='), 0, 0).toUtf8()),
             run.errors.constData());
}

void tst_exporter_commandline::misspeltOptions_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QByteArray>("meant");
    const auto row = [](const char *option, const char *meant) {
        QTest::newRow(option) << QString::fromLatin1(option) << QByteArray(meant);
    };
    row("--qualtiy=3", "--quality");
    row("--Quality=3", "--quality");
    row("--effect=look.json", "--effects");
    row("--targetdir=x", "--target-dir");
    row("--target_dir=x", "--target-dir");
    row("--sour=x", "--source");
    row("--list", "--list-effects");
    row("--helb", "--help");
    row("-platfrom", "-platform");
    row("--maxsize=3x3", "--max-size");
    row("--skip-existings", "--skip-existing");
    row("--background-color=red", "--background");
}

void tst_exporter_commandline::misspeltOptions()
{
    QFETCH(QString, option);
    QFETCH(QByteArray, meant);
    const ToolRun run = runTool({option}, withoutGl());
    VERIFY_FAILURE(run, usage, "unknown option " + option.toLatin1());
    QVERIFY2(run.errors.endsWith("; did you mean " + meant + "?\n"), run.errors.constData());
    const ToolRun far = runTool({QStringLiteral("--zzzzzz")}, withoutGl());
    QVERIFY2(far.errors.endsWith("--zzzzzz; see --help\n"), far.errors.constData());
}

void tst_exporter_commandline::contradictions_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("named");
    const auto row = [](const char *name, const QStringList &arguments, const char *named) {
        QTest::newRow(name) << arguments << QByteArray(named);
    };
    const QString picture = QStringLiteral("a.png");
    row("source and folder", manyPictures({QStringLiteral("--source=a.png"), picture}),
        "--source and --target-dir");
    row("target and folder", manyPictures({QStringLiteral("--target=a.png"), picture}),
        "--target and --target-dir");
    row("no pictures", manyPictures({}), "names of pictures or folders are missing");
    row("no pictures behind dashes", manyPictures({QStringLiteral("--")}),
        "names of pictures or folders are missing");
    row("an empty picture", manyPictures({picture, QString()}), "\"\"");
    row("no effects", {QStringLiteral("--target-dir=x"), picture}, "--effects=FILE is missing");
    row("no folder", {QStringLiteral("--effects=x"), picture}, "--target-dir=DIR is missing");
    for (const char *option : {"--suffix=jpg", "--skip-existing", "--progress=json"}) {
        row(option, onePicture({QLatin1String(option)}), "needs --target-dir=DIR");
    }
    row("nothing to check", {QStringLiteral("--check")}, "--check needs");
    row("two kinds of checks",
        {QStringLiteral("--check"), QStringLiteral("--effects=x"), QStringLiteral("y")},
        "not both");
    row("listing with a name", {QStringLiteral("--list-effects"), picture}, "stray argument");
}

void tst_exporter_commandline::contradictions()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, named);
    const ToolRun run = runTool(arguments, withoutGl());
    VERIFY_FAILURE(run, usage, named);
    QCOMPARE(run.output, QByteArray());
}

void tst_exporter_commandline::everyOptionCountsOnce()
{
    for (const char *option :
         {"--strict", "--verbose", "--quality=3", "--max-size=3x3", "--format=jpg",
          "--background=red", "--keep=all", "--max-pixels=3", "--check", "--list-effects"}) {
        const QString argument = QLatin1String(option);
        const ToolRun run = runTool(onePicture({argument, argument}), withoutGl());
        VERIFY_FAILURE(run, usage,
                       argument.section(QLatin1Char('='), 0, 0).toLatin1() + " is given twice");
    }
}

void tst_exporter_commandline::threadsAreAsManyAsTheAllowedProcessors()
{
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    QCOMPARE(sched_getaffinity(0, sizeof allowed, &allowed), 0);
    QByteArrayList processors;
    for (int processor = 0; processor < CPU_SETSIZE; ++processor) {
        if (CPU_ISSET(processor, &allowed)) {
            processors.append(QByteArray::number(processor));
        }
    }
    const Workshop workshop;
    workshop.write(QStringLiteral("source.png"), noise(QSize(3, 3), QImage::Format_RGB32));
    workshop.write(
        QStringLiteral("stack.json"),
        QJsonArray{effect(QStringLiteral("HSV"), {{QStringLiteral("saturation"), 0.4}})});
    const auto note = [&workshop](const QByteArray &allowedOnes, const char *option) {
        const QByteArray call = "exec taskset -c " + allowedOnes +
                                " \"$TOOL\" --source=source.png --target=target.png "
                                "--effects=stack.json --engine=cpu --verbose ";
        return runShell(call + option, workshop.path(QString())).errors;
    };
    // The last one as well: its number is not how many there are.
    for (const QByteArray &one : {processors.constFirst(), processors.constLast()}) {
        const QByteArray text = note(one, "");
        QVERIFY2(text.endsWith(" and 1 thread a picture\n"), text.constData());
        const QByteArray chosen = note(one, "--threads=3");
        QVERIFY2(chosen.endsWith(" and up to 3 threads a picture\n"), chosen.constData());
    }
    if (processors.size() > 1) {
        const QByteArray text = note(processors.mid(0, 2).join(','), "");
        QVERIFY2(text.endsWith(" and up to 2 threads a picture\n"), text.constData());
    }
}

void tst_exporter_commandline::fullOutputIsTold_data()
{
    QTest::addColumn<QByteArray>("arguments");
    QTest::newRow("help") << QByteArray("--help");
    QTest::newRow("effects") << QByteArray("--list-effects");
    QTest::newRow("check") << QByteArray("--check <(echo '[1]')");
}

void tst_exporter_commandline::fullOutputIsTold()
{
    QFETCH(QByteArray, arguments);
    const QTemporaryDir folder;
    const ToolRun run = runShell("$TOOL " + arguments + " > /dev/full", folder.path());
    VERIFY_FAILURE(run, targetWrite, "standard output");
}

QTEST_GUILESS_MAIN(tst_exporter_commandline)
#include "tst_exporter_commandline.moc"
