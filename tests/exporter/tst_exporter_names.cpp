#include "ShellRun.h"

#include <QtTest/QtTest>

namespace
{

enum Code { success = 0, sourceMissing = 3, effectsUnreadable = 6 };

struct Locale {
    const char *name;
    Environment variables;
};

// In a folder of its own, which goes in the end: Qt's temporary folder would not find its files.
QByteArray inWorkFolder(const QByteArray &script)
{
    return "set -e; mkdir work; cd work; cp ../plain.* .; trap 'rm -rf \"$PWD\"' EXIT\n" + script;
}

QVector<Locale> locales()
{
    const QString all = QStringLiteral("LC_ALL");
    return {{"C", {{all, QStringLiteral("C")}}},
            {"UTF-8", {{all, QStringLiteral("C.UTF-8")}}},
            {"POSIX", {{all, QStringLiteral("POSIX")}}}};
}

} // namespace

// Names as bash writes them in $'...', since most of them are no text.
class tst_exporter_names : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anyName_data();
    void anyName();
    void anyNameInAFolder_data();
    void anyNameInAFolder();
    void namesThatDifferInOneByteStayApart();
    void messagesHaveTheBytesOfTheName();
    void checkTakesAnyName();
    void tableBesideAStackOfAnyName();

private:
    void prepare(const Workshop &workshop) const;
};

void tst_exporter_names::prepare(const Workshop &workshop) const
{
    workshop.write(QStringLiteral("plain.png"), noise(QSize(5, 4), QImage::Format_RGB32));
    workshop.write(QStringLiteral("plain.json"), QByteArray("[]"));
}

void tst_exporter_names::anyName_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<Environment>("environment");
    const struct {
        const char *title;
        const char *name;
    } names[] = {{"blanks", " a  b "},
                 {"newline", "a\\nb\\n"},
                 {"dash", "-a"},
                 {"option", "--help"},
                 {"umlaut", "\\xc3\\xa4"},
                 {"Latin-1", "\\xe4\\xff"},
                 {"cut off", "a\\xc3"},
                 {"overlong", "\\xc0\\xaf"},
                 {"surrogate", "\\xed\\xb2\\x80"},
                 {"all high bytes", "\\x80\\x81\\x9f\\xa0\\xf5\\xfe\\xff"},
                 {"beyond the first plane", "\\xf0\\x9f\\x93\\xb7"},
                 {"decomposed", "a\\xcc\\x88"},
                 {"quotes", "\"'\\''%1%s$x`"},
                 {"colon", "file:x"},
                 {"resource", ":a"},
                 {"backslash", "a\\\\b"}};
    for (const auto &entry : names) {
        for (const Locale &locale : locales()) {
            QTest::addRow("%s in %s", entry.title, locale.name)
                << QByteArray(entry.name) << locale.variables;
        }
    }
}

// As source, target and stack, and in the name of the folder.
void tst_exporter_names::anyName()
{
    QFETCH(QByteArray, name);
    QFETCH(Environment, environment);
    const Workshop workshop;
    prepare(workshop);
    const ToolRun run = runShell(inWorkFolder("name=$'" + name + "'\n" + R"(
mkdir -- "$name"
cp plain.png "./$name/$name.png"
cp plain.json "./$name/$name.json"
$TOOL --source="./$name/$name.png" --target="$name/$name.target.png" --effects="./$name/$name.json"
cmp -- "./$name/$name.png" plain.png
[ -s "./$name/$name.target.png" ]
# Three files and no fourth, under whatever name.
files=(./*/*); [ ${#files[@]} = 3 ]
cp -- "./$name/$name.target.png" ../result.png
)"),
                                 workshop.path(QString()), environment);
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, int(success));
    QCOMPARE(difference(workshop.readPicture(QStringLiteral("result.png")),
                        workshop.readPicture(QStringLiteral("plain.png"))),
             QString());
}

void tst_exporter_names::anyNameInAFolder_data()
{
    anyName_data();
}

void tst_exporter_names::anyNameInAFolder()
{
    QFETCH(QByteArray, name);
    QFETCH(Environment, environment);
    const Workshop workshop;
    prepare(workshop);
    const ToolRun run = runShell(inWorkFolder("name=$'" + name + "'\n" + R"(
mkdir -p "in/$name/sub"
cp plain.png "in/$name/sub/$name.png"
cp plain.png "./$name.png"
$TOOL --effects=plain.json --target-dir="out" --progress=none -- in "$name.png" > /dev/null
[ -s "out/in/$name/sub/$name.png" ]
[ -s "out/$name.png" ]
)"),
                                 workshop.path(QString()), environment);
    QCOMPARE(run.exitCode, int(success));
}

void tst_exporter_names::namesThatDifferInOneByteStayApart()
{
    const Workshop workshop;
    prepare(workshop);
    workshop.write(QStringLiteral("other.png"), noise(QSize(6, 7), QImage::Format_RGB32));
    const ToolRun run = runShell(inWorkFolder(R"(mkdir in
cp plain.png $'in/\xfe.png'; cp ../other.png $'in/\xff.png'
$TOOL --effects=plain.json --target-dir=out --progress=none in > /dev/null
cp $'out/in/\xfe.png' ../first.png; cp $'out/in/\xff.png' ../second.png
)"),
                                 workshop.path(QString()));
    QCOMPARE(run.exitCode, int(success));
    QCOMPARE(workshop.readPicture(QStringLiteral("first.png")).size(), QSize(5, 4));
    QCOMPARE(workshop.readPicture(QStringLiteral("second.png")).size(), QSize(6, 7));
}

void tst_exporter_names::messagesHaveTheBytesOfTheName()
{
    const Workshop workshop;
    prepare(workshop);
    for (const Locale &locale : locales()) {
        const ToolRun run = runShell(
            R"($TOOL --source=$'n\xff\xc3\xa4\xed.png' --target=a.png --effects=plain.json)",
            workshop.path(QString()), locale.variables);
        VERIFY_FAILURE(run, sourceMissing, "the source n\xff\xc3\xa4\xed.png does not exist");
    }
}

void tst_exporter_names::checkTakesAnyName()
{
    const Workshop workshop;
    prepare(workshop);
    const ToolRun run = runShell(
        inWorkFolder(R"(set +e; echo '[1]' > $'\xff\n.json'; $TOOL --check -- $'\xff\n.json' -x)"),
        workshop.path(QString()));
    QVERIFY2(run.output.startsWith("\xff .json:1:2: $[0]: "), run.output.constData());
    VERIFY_FAILURE(run, effectsUnreadable, "the effects file -x");
}

void tst_exporter_names::tableBesideAStackOfAnyName()
{
    const Workshop workshop;
    prepare(workshop);
    workshop.write(QStringLiteral("table.png"), noise(QSize(256, 1), QImage::Format_RGB32));
    const ToolRun run = runShell(inWorkFolder(R"(
mkdir $'\xff'; cp ../table.png $'\xff/\xc3\xa4.png'
echo '[{"effectId": "ko.orvanto.imageeffect.LUT", "table": "%C3%A4.png"}]' > $'\xff/look.json'
$TOOL --check $'\xff/look.json'
$TOOL --strict --source=plain.png --target=../a.png --effects=$'\xff/look.json'
)"),
                                 workshop.path(QString()));
    QCOMPARE(run.output, QByteArray());
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, int(success));
    QVERIFY(!difference(workshop.readPicture(QStringLiteral("a.png")),
                        workshop.readPicture(QStringLiteral("plain.png")))
                 .isEmpty());
}

QTEST_GUILESS_MAIN(tst_exporter_names)
#include "tst_exporter_names.moc"
