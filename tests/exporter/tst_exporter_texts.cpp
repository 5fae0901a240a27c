#include "ShellRun.h"

#include <QtCore/QRegularExpression>
#include <QtTest/QtTest>

namespace
{

const QString texts = QStringLiteral(EXPORTER_TEXTS);

QByteArray readText(const QString &name)
{
    QFile file(texts + QLatin1Char('/') + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The options of --help, as "--quality".
QStringList options()
{
    QStringList names;
    QRegularExpression form(QStringLiteral("^  (--?[a-z][a-z-]*)"),
                            QRegularExpression::MultilineOption);
    auto matches =
        form.globalMatch(QString::fromLatin1(runTool({QStringLiteral("--help")}).output));
    while (matches.hasNext()) {
        names.append(matches.next().captured(1));
    }
    return names;
}

// What bash offers for a line of these words, the last of which is being written.
QStringList bashOffers(const QStringList &words, const QString &folder)
{
    QByteArray quoted;
    for (const QString &word : words) {
        quoted += " '" + word.toUtf8() + '\'';
    }
    const ToolRun run =
        runShell("source '" + texts.toUtf8() + "/korvel-image-exporter'\n" +
                     "COMP_WORDS=(korvel-image-exporter" + quoted + ")\n" +
                     "COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n" + "_korvel_image_exporter\n" +
                     "((${#COMPREPLY[@]})) && printf '%s\\n' \"${COMPREPLY[@]}\"\n"
                     "exit 0",
                 folder);
    if (run.exitCode != 0 || !run.errors.isEmpty()) {
        return {QStringLiteral("bash failed: ") + QString::fromUtf8(run.errors)};
    }
    QStringList offers = QString::fromUtf8(run.output).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    offers.sort();
    return offers;
}

} // namespace

class tst_exporter_texts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void manualPageIsClean();
    void manualPageFitsTheTerminal();
    void manualPageHasWhatHelpHas();
    void bashOffersWhatHelpNames();
    void bashOffersWords_data();
    void bashOffersWords();
    void bashFunctionIsRegistered();
    void zshOffersWhatHelpNames();
    void zshCompletes_data();
    void zshCompletes();
};

void tst_exporter_texts::manualPageIsClean()
{
    const ToolRun run = runShell("mandoc -Tlint -Wstyle korvel-image-exporter.1", texts);
    QCOMPARE(run.output, QByteArray());
    QCOMPARE(run.errors, QByteArray());
    QCOMPARE(run.exitCode, 0);
    // What the linter passes over: an indentation without an end.
    const QByteArray page = readText(QStringLiteral("korvel-image-exporter.1"));
    QVERIFY(page.count("\n.RS\n") > 3);
    QCOMPARE(page.count("\n.RE\n"), page.count("\n.RS\n"));
}

void tst_exporter_texts::manualPageFitsTheTerminal()
{
    const ToolRun run =
        runShell("mandoc -Tascii -Owidth=78 korvel-image-exporter.1 | col -b", texts);
    const QList<QByteArray> lines = run.output.split('\n');
    QVERIFY(lines.size() > 100);
    for (const QByteArray &line : lines) {
        QVERIFY2(line.size() <= 80, line.constData());
    }
}

void tst_exporter_texts::manualPageHasWhatHelpHas()
{
    const ToolRun run =
        runShell("mandoc -Tascii -Owidth=100 korvel-image-exporter.1 | col -b", texts);
    const QStringList names = options();
    QVERIFY(names.size() > 15);
    for (const QString &name : names) {
        const QRegularExpression entry(QStringLiteral("\n +%1[=[ \n]").arg(name));
        QVERIFY2(entry.match(QString::fromLatin1(run.output)).hasMatch(), qPrintable(name));
    }
    const QByteArray help = runTool({QStringLiteral("--help")}).output;
    const QList<QByteArray> codes = help.mid(help.indexOf("Exit codes:\n") + 12).split('\n');
    QVERIFY(codes.size() > 15);
    for (const QByteArray &code : codes) {
        const QRegularExpression entry(
            QStringLiteral("\n +%1 +[A-Z-]")
                .arg(QString::fromLatin1(code.trimmed().split(' ').value(0))));
        QVERIFY2(entry.match(QString::fromLatin1(run.output)).hasMatch(), code.constData());
    }
}

void tst_exporter_texts::bashOffersWhatHelpNames()
{
    const QTemporaryDir folder;
    QStringList expected = options();
    QStringList offers = bashOffers({QStringLiteral("-")}, folder.path());
    for (QString &offer : offers) {
        offer.remove(QLatin1Char('='));
    }
    expected.sort();
    offers.sort();
    QCOMPARE(offers, expected);
}

void tst_exporter_texts::bashOffersWords_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QStringList>("offers");
    const auto row = [](const char *name, const char *words, const char *offers) {
        QTest::newRow(name) << QString::fromLatin1(words).split(QLatin1Char('|'))
                            << QString::fromLatin1(offers).split(QLatin1Char('|'),
                                                                 Qt::SkipEmptyParts);
    };
    row("an option", "--ke", "--keep=");
    row("two options", "--target", "--target-dir=|--target=");
    row("words", "--keep|=", "all|icc|none");
    row("a word", "--keep|=|i", "icc");
    row("a word, not divided", "--keep=i", "--keep=icc");
    row("files", "--effects|=|lo", "look one.json|looks");
    row("folders", "--target-dir|=", "looks");
    row("no words for a number", "--quality|=", "");
    row("names", "lo", "look one.json|looks");
    row("names behind dashes", "--target-dir|=|x|--|-", "-dash.png");
    row("no option twice", "--keep|=|all|--ke", "");
    row("no option twice, not divided", "--keep=all|--ke", "");
    row("listing", "--list-effects|=|j", "json");
}

void tst_exporter_texts::bashOffersWords()
{
    QFETCH(QStringList, words);
    QFETCH(QStringList, offers);
    const Workshop workshop;
    workshop.write(QStringLiteral("look one.json"), QByteArray());
    workshop.write(QStringLiteral("-dash.png"), QByteArray());
    QVERIFY(QDir().mkpath(workshop.path(QStringLiteral("looks"))));
    QCOMPARE(bashOffers(words, workshop.path(QString())), offers);
}

void tst_exporter_texts::bashFunctionIsRegistered()
{
    const ToolRun run =
        runShell("source ./korvel-image-exporter && complete -p korvel-image-exporter", texts);
    QCOMPARE(run.output, QByteArray("complete -F _korvel_image_exporter korvel-image-exporter\n"));
}

void tst_exporter_texts::zshOffersWhatHelpNames()
{
    const QByteArray script = readText(QStringLiteral("_korvel-image-exporter"));
    QVERIFY(script.startsWith("#compdef korvel-image-exporter\n"));
    const QStringList names = options();
    for (const QString &name : names) {
        const QRegularExpression entry(QStringLiteral("\n    '%1(=-)?\\[").arg(name));
        QVERIFY2(entry.match(QString::fromLatin1(script)).hasMatch(), qPrintable(name));
    }
}

void tst_exporter_texts::zshCompletes_data()
{
    QTest::addColumn<QByteArray>("typed");
    QTest::addColumn<QByteArray>("completed");
    QTest::newRow("an option") << QByteArray("--ke") << QByteArray("--keep=");
    QTest::newRow("a word") << QByteArray("--keep=ic") << QByteArray("--keep=icc");
    QTest::newRow("a flag") << QByteArray("--skip") << QByteArray("--skip-existing");
    QTest::newRow("a file") << QByteArray("--effects=lo") << QByteArray("--effects=look.json");
    QTest::newRow("a name") << QByteArray("lo") << QByteArray("look.json");
}

// In a real shell on a terminal of its own: a line, the Tab key, and what the line is then.
void tst_exporter_texts::zshCompletes()
{
    QFETCH(QByteArray, typed);
    QFETCH(QByteArray, completed);
    const Workshop workshop;
    workshop.write(QStringLiteral("look.json"), QByteArray());
    workshop.write(QStringLiteral("driver.zsh"), QByteArray(R"(
zmodload zsh/zpty
zpty shell zsh -f -i
zpty -w shell "fpath=($TEXTS \$fpath); autoload -U compinit; compinit -u -D; stty -echo
bindkey '^I' complete-word; zle -N show; bindkey '^X' show
show() { print -r -- \"<line:\$BUFFER>\"; BUFFER=; zle accept-line }; echo read'y'"
zpty -r shell answer '*ready*'
zpty -w -n shell "korvel-image-exporter $TYPED"$'\t\x18'
zpty -r shell answer '*<line:*>*'
print -r -- "$answer"
zpty -d shell
)"));
    const ToolRun run = runShell("timeout 20 zsh -f driver.zsh", workshop.path(QString()),
                                 {{QStringLiteral("TEXTS"), texts},
                                  {QStringLiteral("TYPED"), QString::fromLatin1(typed)},
                                  {QStringLiteral("TERM"), QStringLiteral("dumb")}});
    const QRegularExpression printed(QStringLiteral("<line:korvel-image-exporter ([^ >]*) ?>"));
    const auto match = printed.match(QString::fromUtf8(run.output));
    QVERIFY2(match.hasMatch(), run.output.constData());
    QCOMPARE(match.captured(1).toUtf8(), completed);
}

QTEST_GUILESS_MAIN(tst_exporter_texts)
#include "tst_exporter_texts.moc"
