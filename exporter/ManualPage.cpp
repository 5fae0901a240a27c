#include "exporter/ManualPage.h"

#include "exporter/ExitCode.h"
#include "exporter/HelpText.h"
#include "exporter/OptionTable.h"

namespace ko::exporter
{

namespace
{

// Text that roff prints as it is.
QByteArray escaped(const QString &text)
{
    QByteArray roff = text.toLatin1();
    return roff.replace('\\', "\\e").replace('-', "\\-").replace('\'', "\\(aq");
}

// The same in lines that people can read, each with its end. What begins a line is no request.
QByteArray paragraph(const QString &text)
{
    constexpr int columns = 78;
    QByteArray roff;
    QByteArray line;
    const QList<QByteArray> words = escaped(text).split(' ');
    for (const QByteArray &word : words) {
        if (!line.isEmpty() && line.size() + 1 + word.size() > columns) {
            roff += line + '\n';
            line.clear();
        }
        line += (line.isEmpty() ? (word.startsWith('.') ? "\\&" : "") : " ") + word;
    }
    return roff + line + '\n';
}

QByteArray sentence(const QString &help)
{
    const QString text = help.left(1).toUpper() + help.mid(1);
    return paragraph(text.endsWith(QLatin1Char('.')) ? text : text + QLatin1Char('.'));
}

QByteArray optionTag(const Option &option)
{
    QByteArray name = "\\fB" + escaped(QString::fromLatin1(option.name)) + "\\fP";
    const QByteArray value = "\\fI" + escaped(QString::fromLatin1(option.placeholder)) + "\\fP";
    switch (option.value) {
    case Option::Value::None:
        break;
    case Option::Value::Required:
        return name + '=' + value;
    case Option::Value::Optional:
        return name + "[=" + value + ']';
    case Option::Value::NextArgument:
        return name + ' ' + value;
    }
    return name;
}

QByteArray options()
{
    QByteArray roff = ".SH OPTIONS\n";
    for (const OptionGroup &group : optionGroups()) {
        roff += ".SS " + escaped(QString::fromLatin1(group.title)) + '\n';
        for (const Option &option : group.options) {
            roff += ".TP\n" + optionTag(option) + '\n';
            roff += sentence(QString::fromLatin1(option.help));
            if (*option.details != '\0') {
                roff += paragraph(QString::fromLatin1(option.details));
            }
        }
    }
    return roff;
}

QByteArray example(const ProgramExample &example)
{
    constexpr int columns = 64;
    QByteArray roff = paragraph(example.purpose) + ".PP\n.nf\n.RS\n";
    const QStringList lines = commandLines(example.command, columns);
    for (const QString &line : lines) {
        roff += escaped(line) + '\n';
    }
    return roff + ".RE\n.fi\n.PP\n";
}

} // namespace

QByteArray manualPage(const QByteArray &version, const QByteArray &date)
{
    const QByteArray program = "korvel\\-image\\-exporter";
    QByteArray roff = ".TH KORVEL\\-IMAGE\\-EXPORTER 1 " + date + " \"KorvelImageFx " + version +
                      "\" \"User Commands\"\n.nh\n.ad l\n.SH NAME\n" + program +
                      " \\- apply a stack of image effects to pictures\n.SH SYNOPSIS\n";
    const QStringList calls = programCalls();
    for (int i = 0; i < calls.size(); ++i) {
        roff += (i > 0 ? ".br\n" : "");
        roff += "\\fB" + program + "\\fP " + escaped(calls.at(i)) + '\n';
    }
    roff += ".SH DESCRIPTION\n" + paragraph(programSummary());
    const QStringList notes = programNotes() + programDetails();
    for (const QString &note : notes) {
        roff += ".PP\n" + paragraph(note);
    }
    roff += options() + ".SH EXIT STATUS\n";
    for (const ExitCodeMeaning &meaning : exitCodeMeanings()) {
        roff += ".TP\n\\fB" + QByteArray::number(int(meaning.code)) + "\\fP\n" +
                sentence(QString::fromLatin1(meaning.text));
    }
    roff += ".SH EXAMPLES\n";
    const QVector<ProgramExample> examples = programExamples() + programLongExamples();
    for (const ProgramExample &entry : examples) {
        roff += example(entry);
    }
    // No paragraph begins in front of a heading.
    roff.chop(int(qstrlen(".PP\n")));
    return roff + ".SH SEE ALSO\n.BR parallel (1),\n.BR exiftool (1)\n";
}

} // namespace ko::exporter
