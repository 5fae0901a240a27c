#include "examples/contact-sheet/CommandLine.h"

#include "examples/contact-sheet/Error.h"

#include <QtCore/QCommandLineParser>

namespace ko::contactsheet
{

namespace
{

QString required(const QCommandLineParser &parser, const QString &option)
{
    QString value = parser.value(option);
    if (value.isEmpty()) {
        throw Error{QStringLiteral("--%1 is missing; see --help").arg(option), 2};
    }
    return value;
}

} // namespace

CommandLine CommandLine::parse(const QStringList &arguments)
{
    const QString photographs = QStringLiteral("photographs");
    const QString stacks = QStringLiteral("stacks");
    const QString target = QStringLiteral("target");
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Draws every photograph through every stack of effects and every preset lookup table."));
    const QCommandLineOption help(QStringLiteral("help"), QStringLiteral("Print this text."));
    parser.addOption(help);
    parser.addOptions({{photographs, QStringLiteral("Folder of photographs, JPEG or PNG."),
                        QStringLiteral("DIR")},
                       {stacks, QStringLiteral("Folder of stacks, JSON."), QStringLiteral("DIR")},
                       {target, QStringLiteral("The sheet, a PNG whatever its suffix."),
                        QStringLiteral("FILE")}});
    if (!parser.parse(arguments)) {
        throw Error{parser.errorText() + QStringLiteral(" See --help."), 2};
    }
    if (parser.isSet(help)) {
        parser.showHelp();
    }
    if (!parser.positionalArguments().isEmpty()) {
        throw Error{QStringLiteral("stray argument \"%1\"; see --help")
                        .arg(parser.positionalArguments().constFirst()),
                    2};
    }
    return {required(parser, photographs), required(parser, stacks), required(parser, target)};
}

} // namespace ko::contactsheet
