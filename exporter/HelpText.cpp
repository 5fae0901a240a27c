#include "exporter/HelpText.h"

#include "exporter/ExitCode.h"
#include "exporter/OptionTable.h"

#include <QtCore/QVector>

namespace ko::exporter
{

namespace
{

constexpr int columns = 80;
constexpr int optionIndent = 2;
constexpr int helpIndent = 20;
constexpr int exampleIndent = 4;

QString blanks(int count)
{
    return QString(count, QLatin1Char(' '));
}

// Words in lines of at most 80 columns; the first line begins where `prefix` ends.
QString wrapped(const QString &prefix, int indent, const QString &text)
{
    QString result;
    QString line = prefix;
    bool empty = true;
    const QStringList words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &word : words) {
        if (!empty && line.size() + 1 + word.size() > columns) {
            result += line + QLatin1Char('\n');
            line = blanks(indent);
            empty = true;
        }
        line += (empty ? QString() : QStringLiteral(" ")) + word;
        empty = false;
    }
    return result + line + QLatin1Char('\n');
}

QString optionText(const Option &option)
{
    const QString name = blanks(optionIndent) + option.usage();
    const bool fits = name.size() + 2 <= helpIndent;
    const QString prefix =
        fits ? name.leftJustified(helpIndent) : name + QLatin1Char('\n') + blanks(helpIndent);
    const int lineBreak = prefix.lastIndexOf(QLatin1Char('\n')) + 1;
    return prefix.left(lineBreak) +
           wrapped(prefix.mid(lineBreak), helpIndent, QString::fromLatin1(option.help));
}

} // namespace

QString programSummary()
{
    return QStringLiteral("Applies a stack of image effects to pictures and writes the results.");
}

QStringList programCalls()
{
    return {
        QStringLiteral("--source=FILE --target=FILE --effects=FILE [OPTION]..."),
        QStringLiteral("--target-dir=DIR --effects=FILE [OPTION]... FILE-OR-FOLDER..."),
        QStringLiteral("--check STACK..."),
        QStringLiteral("--list-effects[=json]"),
    };
}

QStringList programNotes()
{
    return {
        QStringLiteral("Every picture is turned upright as its EXIF orientation tells. Its "
                       "metadata and its colour profile go into the target where the format holds "
                       "them; BMP does not. Effects compute with 8 bits a channel."),
        QStringLiteral("A target appears complete or not at all, and an older one stays until "
                       "then, whatever ends the program. Names may have any bytes."),
    };
}

QVector<ProgramExample> programExamples()
{
    return {
        {QStringLiteral("One picture:"),
         QStringLiteral("korvel-image-exporter --source=in.jpg --target=out.jpg "
                        "--effects=look.json")},
        {QStringLiteral("A folder, as JPEG files for the web:"),
         QStringLiteral("korvel-image-exporter --effects=look.json --target-dir=web --suffix=jpg "
                        "--max-size=1920x1920 holiday")},
        {QStringLiteral("Is the stack right?"),
         QStringLiteral("korvel-image-exporter --check look.json")},
    };
}

QStringList programDetails()
{
    return {
        QStringLiteral("The stack is what the library writes, and may be written by hand: a JSON "
                       "array of objects, each with its effectId and the properties that differ "
                       "from their defaults. --list-effects prints them all, --check tells what is "
                       "wrong with a stack."),
        QStringLiteral("With --target-dir a picture that is named becomes a target of the same "
                       "name, and a folder that is named is searched through, its folders being "
                       "made again below the target folder. The pictures go through one process, "
                       "each on one processor core from its reading to its writing; where OpenGL "
                       "draws, through one context of it, while reading and decoding, drawing, and "
                       "encoding and writing overlap. The number of pictures in memory is bounded "
                       "either way. Ctrl-C ends "
                       "the run within one picture, and --skip-existing goes on with it later."),
        QStringLiteral("Errors are one line each on standard error and begin with the program's "
                       "name. A message that names a limit names the option that changes it, too."),
    };
}

QVector<ProgramExample> programLongExamples()
{
    return {
        {QStringLiteral("Go on with a run that was interrupted:"),
         QStringLiteral("korvel-image-exporter --effects=look.json --target-dir=web --suffix=jpg "
                        "--skip-existing holiday")},
        {QStringLiteral("Names that begin with a dash:"),
         QStringLiteral("korvel-image-exporter --effects=look.json --target-dir=out -- -1.jpg")},
        {QStringLiteral("What can an effect do?"),
         QStringLiteral("korvel-image-exporter --list-effects | less")},
    };
}

QStringList commandLines(const QString &command, int columns)
{
    QStringList lines;
    QString line;
    const QStringList words = command.split(QLatin1Char(' '));
    for (const QString &word : words) {
        if (line.size() + word.size() + int(qstrlen("  \\")) > columns) {
            lines.append(line + QStringLiteral(" \\"));
            line = blanks(3);
        }
        line += (line.isEmpty() ? QString() : QStringLiteral(" ")) + word;
    }
    return lines << line;
}

QString helpText()
{
    QString text;
    const QString program = QStringLiteral("korvel-image-exporter ");
    QString prefix = QStringLiteral("Usage: ");
    const QStringList calls = programCalls();
    for (const QString &call : calls) {
        text += wrapped(prefix + program, prefix.size() + program.size(), call);
        prefix = blanks(prefix.size());
    }
    text += QLatin1Char('\n') + wrapped(QString(), 0, programSummary());
    for (const OptionGroup &group : optionGroups()) {
        text += QStringLiteral("\n%1:\n").arg(QLatin1String(group.title));
        for (const Option &option : group.options) {
            text += optionText(option);
        }
    }
    text += QStringLiteral("\nExamples:\n");
    const QVector<ProgramExample> examples = programExamples();
    for (const ProgramExample &example : examples) {
        text += QStringLiteral("  %1\n").arg(example.purpose);
        const QStringList lines = commandLines(example.command, columns - exampleIndent);
        for (const QString &line : lines) {
            text += blanks(exampleIndent) + line + QLatin1Char('\n');
        }
    }
    const QStringList notes = programNotes();
    for (const QString &note : notes) {
        text += QLatin1Char('\n') + wrapped(QString(), 0, note);
    }
    return text + QStringLiteral("\nExit codes:\n") + exitCodeTable();
}

} // namespace ko::exporter
