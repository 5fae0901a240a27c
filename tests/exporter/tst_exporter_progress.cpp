#include "FolderWorkshop.h"

#include <QtCore/QRegularExpression>
#include <QtTest/QtTest>

#include <array>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr int timeLimit = 60000;

// The tool with a terminal of its own.
class TerminalRun
{
public:
    TerminalRun(const QStringList &arguments, int columns, const char *kind = "xterm")
    {
        std::vector<QByteArray> texts{toolPath().toLocal8Bit()};
        for (const QString &argument : arguments) {
            texts.push_back(argument.toLocal8Bit());
        }
        std::vector<char *> argv;
        argv.reserve(texts.size() + 1);
        for (QByteArray &text : texts) {
            argv.push_back(text.data());
        }
        argv.push_back(nullptr);
        winsize size = {24, static_cast<unsigned short>(columns), 0, 0};
        m_process = forkpty(&m_terminal, nullptr, nullptr, &size);
        if (m_process == 0) {
            setenv("TERM", kind, 1);
            execv(argv[0], argv.data());
            _exit(127);
        }
    }
    ~TerminalRun() { close(m_terminal); }

    void resize(int columns)
    {
        winsize size = {24, static_cast<unsigned short>(columns), 0, 0};
        ioctl(m_terminal, TIOCSWINSZ, &size);
    }
    // What came until the text, and with it; all that came when it did not.
    QByteArray readUntil(const char *text)
    {
        QByteArray came;
        while (!came.contains(text) && readMore(&came)) {
        }
        return came;
    }
    QByteArray readAll()
    {
        QByteArray came;
        while (readMore(&came)) {
        }
        return came;
    }
    int exitCode()
    {
        int status = 0;
        waitpid(m_process, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    Q_DISABLE_COPY(TerminalRun)

    bool readMore(QByteArray *came)
    {
        pollfd source{m_terminal, POLLIN, 0};
        std::array<char, 4096> block{};
        if (poll(&source, 1, timeLimit) <= 0) {
            return false;
        }
        const ssize_t count = read(m_terminal, block.data(), block.size());
        came->append(block.data(), int(std::max<ssize_t>(count, 0)));
        return count > 0;
    }

    int m_terminal = -1;
    pid_t m_process = -1;
};

// The texts that stood on the screen one after the other, each with what cleared the rest of its
// line, as far as a bar is concerned.
QList<QByteArray> drawn(const QByteArray &output)
{
    QList<QByteArray> texts;
    for (QByteArray part : output.split('\r')) {
        if (part.endsWith("\x1b[K")) {
            part.chop(3);
            if (!part.isEmpty()) {
                texts.append(part);
            }
        }
    }
    return texts;
}

// What a terminal shows in the end: each line with what was written over it last.
QList<QByteArray> shown(const QByteArray &output)
{
    QList<QByteArray> lines;
    for (const QByteArray &line : output.split('\n')) {
        QByteArray screen;
        for (QByteArray part : line.split('\r')) {
            const bool clears = part.contains("\x1b[K");
            part.replace("\x1b[K", "");
            screen = clears ? part : part + screen.mid(part.size());
        }
        if (!screen.isEmpty()) {
            lines.append(screen);
        }
    }
    return lines;
}

} // namespace

class tst_exporter_progress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_workshop = std::make_unique<FolderWorkshop>();
        for (int i = 0; i < 12; ++i) {
            m_workshop->picture(QStringLiteral("photos/%1.png").arg(i));
        }
    }
    void cleanup() { m_workshop.reset(); }

    void theBarFitsTheTerminal_data();
    void theBarFitsTheTerminal();
    void theBarTellsCountsRateAndTimeLeft();
    void theBarIsDrawnOverItself();
    void theBarFollowsTheTerminalsWidth();
    void errorsStandOnLinesOfTheirOwn();
    void theLastLineTellsTheResult();
    void thereIsNoBarWhereNoneIsWanted_data();
    void thereIsNoBarWhereNoneIsWanted();
    void aBarMayBeForced();

private:
    std::unique_ptr<FolderWorkshop> m_workshop;
};

void tst_exporter_progress::theBarFitsTheTerminal_data()
{
    QTest::addColumn<int>("columns");
    for (const int columns : {1, 2, 9, 12, 20, 33, 40, 80, 300}) {
        QTest::newRow(qPrintable(QString::number(columns))) << columns;
    }
}

void tst_exporter_progress::theBarFitsTheTerminal()
{
    QFETCH(int, columns);
    TerminalRun run(FolderWorkshop::arguments({QStringLiteral("photos/")}), columns);
    const QList<QByteArray> texts = drawn(run.readAll());
    QCOMPARE(run.exitCode(), 0);
    QVERIFY(columns < 2 || !texts.isEmpty());
    for (const QByteArray &text : texts) {
        QVERIFY2(text.size() < columns, text.constData());
    }
    const bool counts = columns >= 9;
    QCOMPARE(!texts.isEmpty() && texts.last().contains("12 of 12"), counts);
    QCOMPARE(!texts.isEmpty() && texts.last().startsWith('['), columns >= 40);
}

void tst_exporter_progress::theBarTellsCountsRateAndTimeLeft()
{
    m_workshop->write(QStringLiteral("photos/0.png"), "a bad file");
    TerminalRun run(FolderWorkshop::arguments({QStringLiteral("photos/")}), 100);
    const QList<QByteArray> texts = drawn(run.readAll());
    QCOMPARE(run.exitCode(), 17);
    const QRegularExpression form(QStringLiteral(
        "^\\[(#*)(-*)\\] (\\d+) of 12(, 1 failed)?(, [0-9.]+/s, \\d+:\\d\\d left)?$"));
    int before = -1;
    for (const QByteArray &text : texts) {
        const QRegularExpressionMatch match = form.match(QString::fromLatin1(text));
        QVERIFY2(match.hasMatch(), text.constData());
        const int over = match.captured(3).toInt() + (match.captured(4).isEmpty() ? 0 : 1);
        QCOMPARE(match.capturedLength(1) + match.capturedLength(2), 38);
        QCOMPARE(match.capturedLength(1), 38 * over / 12);
        QVERIFY(over >= before);
        before = over;
    }
    QCOMPARE(before, 12);
    QVERIFY(texts.last().contains("11 of 12, 1 failed"));
    QVERIFY(texts.last().endsWith("0:00 left"));
}

void tst_exporter_progress::theBarIsDrawnOverItself()
{
    TerminalRun run(FolderWorkshop::arguments({QStringLiteral("photos/")}), 80);
    const QByteArray output = run.readAll();
    // Never cleared between one state and the next, which would flicker.
    QCOMPARE(output.count("\r\x1b[K"), 1);
    QCOMPARE(output.count('\n'), 1);
}

void tst_exporter_progress::theBarFollowsTheTerminalsWidth()
{
    for (int i = 0; i < 30; ++i) {
        m_workshop->picture(QStringLiteral("photos/large%1.png").arg(i), QSize(500, 400));
    }
    TerminalRun run(
        FolderWorkshop::arguments({QStringLiteral("--threads=1"), QStringLiteral("photos/")}), 100);
    QVERIFY(run.readUntil(" left\x1b[K").contains('['));
    run.resize(30);
    // What was under way was for the former width.
    run.readUntil("\r");
    run.readUntil("\r");
    run.readUntil("\r");
    const QList<QByteArray> texts = drawn(run.readAll());
    QCOMPARE(run.exitCode(), 0);
    QVERIFY(texts.size() > 2);
    for (const QByteArray &text : texts.mid(1)) {
        QVERIFY2(text.size() < 30, text.constData());
    }
}

void tst_exporter_progress::errorsStandOnLinesOfTheirOwn()
{
    m_workshop->write(QStringLiteral("photos/3.png"), "a bad file");
    m_workshop->write(QStringLiteral("photos/7.png"), "a bad file");
    TerminalRun run(FolderWorkshop::arguments({QStringLiteral("photos/")}), 200);
    const QList<QByteArray> lines = shown(run.readAll());
    QCOMPARE(run.exitCode(), 17);
    QCOMPARE(lines.size(), 3);
    for (const QByteArray &line : lines) {
        QVERIFY2(line.startsWith("korvel-image-exporter: "), line.constData());
        QVERIFY2(!line.contains(" left") && !line.contains('#'), line.constData());
    }
    QVERIFY(lines.at(2).endsWith("10 of 12 pictures exported, 2 failed"));
}

void tst_exporter_progress::theLastLineTellsTheResult()
{
    const QStringList arguments =
        FolderWorkshop::arguments({QStringLiteral("--skip-existing"), QStringLiteral("photos/")});
    TerminalRun first(arguments, 80);
    QCOMPARE(shown(first.readAll()),
             QList<QByteArray>{"korvel-image-exporter: 12 of 12 pictures exported"});
    QCOMPARE(first.exitCode(), 0);
    TerminalRun second(arguments, 80);
    QCOMPARE(shown(second.readAll()),
             QList<QByteArray>{"korvel-image-exporter: 0 of 12 pictures exported, 12 skipped as "
                               "their targets exist"});
    QCOMPARE(second.exitCode(), 0);
}

void tst_exporter_progress::thereIsNoBarWhereNoneIsWanted_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QByteArray>("terminal");
    QTest::newRow("no cursor") << QString() << QByteArray("dumb");
    QTest::newRow("none") << QStringLiteral("--progress=none") << QByteArray("xterm");
    QTest::newRow("for programs") << QStringLiteral("--progress=json") << QByteArray("xterm");
}

void tst_exporter_progress::thereIsNoBarWhereNoneIsWanted()
{
    QFETCH(QString, option);
    QFETCH(QByteArray, terminal);
    QStringList arguments = FolderWorkshop::arguments({QStringLiteral("photos/")});
    if (!option.isEmpty()) {
        arguments.append(option);
    }
    TerminalRun run(arguments, 80, terminal.constData());
    const QByteArray output = run.readAll();
    QCOMPARE(run.exitCode(), 0);
    QVERIFY2(!output.contains('\x1b') && !output.contains("12 of 12"), output.constData());
    QCOMPARE(output.isEmpty(), !option.endsWith(QLatin1String("json")));
}

void tst_exporter_progress::aBarMayBeForced()
{
    const ToolRun run =
        FolderWorkshop::run({QStringLiteral("--progress=bar"), QStringLiteral("photos/")});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(drawn(run.errors).last().contains("12 of 12"));
}

QTEST_GUILESS_MAIN(tst_exporter_progress)

#include "tst_exporter_progress.moc"
