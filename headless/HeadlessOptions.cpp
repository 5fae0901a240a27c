#include "HeadlessOptions.h"

#include <QtCore/QDebug>
#include <QtCore/QRegularExpression>

static bool parseDisplay(const QString &value, HeadlessOptions *options)
{
    if (value == QLatin1String("device"))
        options->display = HeadlessOptions::Display::Device;
    else if (value == QLatin1String("surfaceless"))
        options->display = HeadlessOptions::Display::Surfaceless;
    else if (value == QLatin1String("default"))
        options->display = HeadlessOptions::Display::Default;
    else
        return false;
    return true;
}

static bool parseSize(const QString &value, HeadlessOptions *options)
{
    static const QRegularExpression pattern(QStringLiteral("\\A([0-9]{1,5})x([0-9]{1,5})\\z"));
    const QRegularExpressionMatch match = pattern.match(value);
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    const int largest = 32768;
    if (size.isEmpty() || size.width() > largest || size.height() > largest)
        return false;
    options->screenSize = size;
    return true;
}

HeadlessOptions HeadlessOptions::parse(const QStringList &arguments)
{
    HeadlessOptions options;
    for (const QString &argument : arguments) {
        const QString key = argument.section(QLatin1Char('='), 0, 0);
        const QString value = argument.section(QLatin1Char('='), 1);
        const bool understood =
            (key == QLatin1String("display") && parseDisplay(value, &options)) ||
            (key == QLatin1String("size") && parseSize(value, &options));
        if (understood)
            continue;
        options.valid = false;
        qWarning("headless: the platform argument \"%s\" is not understood; there are "
                 "display=device, display=surfaceless, display=default and size=WIDTHxHEIGHT. "
                 "OpenGL stays unavailable.",
                 qUtf8Printable(argument));
    }
    return options;
}
