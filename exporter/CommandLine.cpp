#include "exporter/CommandLine.h"

namespace ko::exporter
{

namespace
{

Failure usage(const QString &message)
{
    return {ExitCode::Usage, message + QStringLiteral("; see --help")};
}

bool isPlatformOption(const QString &argument)
{
    return argument == QLatin1String("-platform") || argument == QLatin1String("--platform");
}

} // namespace

Outcome CommandLine::parse(const QStringList &arguments)
{
    m_help = arguments.contains(QStringLiteral("--help"));
    m_version = arguments.contains(QStringLiteral("--version"));
    if (m_help || m_version) {
        return {};
    }
    for (int i = 0; i < arguments.size(); ++i) {
        if (isPlatformOption(arguments.at(i))) {
            if (++i == arguments.size() || arguments.at(i).isEmpty()) {
                return usage(QStringLiteral("%1 needs a name").arg(arguments.at(i - 1)));
            }
            m_platform = arguments.at(i);
        } else if (Outcome failure = parseArgument(arguments.at(i))) {
            return failure;
        }
    }
    return requirePaths();
}

Outcome CommandLine::parseArgument(const QString &argument)
{
    if (argument == QLatin1String("--strict")) {
        if (m_strict) {
            return usage(QStringLiteral("--strict is given twice"));
        }
        m_strict = true;
        return {};
    }
    const int equals = argument.indexOf(QLatin1Char('='));
    const QString option = argument.left(equals);
    const bool takesPath = option == QLatin1String("--source") ||
                           option == QLatin1String("--target") ||
                           option == QLatin1String("--effects");
    if (takesPath) {
        return setPath(option, equals < 0 ? QString() : argument.mid(equals + 1));
    }
    if (argument.startsWith(QLatin1Char('-'))) {
        return usage(QStringLiteral("unknown option %1").arg(argument));
    }
    return usage(QStringLiteral("stray argument \"%1\"").arg(argument));
}

Outcome CommandLine::setPath(const QString &option, const QString &value)
{
    QString &path = option == QLatin1String("--source")   ? m_source
                    : option == QLatin1String("--target") ? m_target
                                                          : m_effects;
    if (value.isEmpty()) {
        return usage(QStringLiteral("%1 needs a path, as in %1=FILE").arg(option));
    }
    if (!path.isEmpty()) {
        return usage(QStringLiteral("%1 is given twice").arg(option));
    }
    path = value;
    return {};
}

Outcome CommandLine::requirePaths() const
{
    const struct {
        const char *option;
        const QString &path;
    } required[] = {{"--source", m_source}, {"--target", m_target}, {"--effects", m_effects}};
    for (const auto &entry : required) {
        if (entry.path.isEmpty()) {
            return usage(QStringLiteral("%1=FILE is missing").arg(QLatin1String(entry.option)));
        }
    }
    return {};
}

QString CommandLine::helpText()
{
    return QStringLiteral(
               "Usage: korvel-image-exporter --source=FILE --target=FILE --effects=FILE\n"
               "                             [--strict] [-platform NAME]\n"
               "\n"
               "Applies a stack of image effects to a picture and writes the result.\n"
               "\n"
               "  --source=FILE    the picture: JPEG, PNG, WebP, TIFF or BMP, told by its content\n"
               "  --target=FILE    where the result goes; its suffix chooses the format: jpg, "
               "jpeg,\n"
               "                   png, webp, tif, tiff or bmp, in either case. The file appears\n"
               "                   complete or not at all, and may be the source itself.\n"
               "  --effects=FILE   the stack, a JSON array of effects; an empty one copies\n"
               "  --strict         refuse a stack with anything that would be left out or read\n"
               "                   differently, instead of warning about it\n"
               "  -platform NAME   the Qt platform plug-in that provides OpenGL; without it the\n"
               "                   tool needs no display and ignores QT_QPA_PLATFORM\n"
               "  --help           print this text\n"
               "  --version        print the version\n"
               "\n"
               "The picture is turned upright as its EXIF orientation tells, and its ICC profile\n"
               "is kept where the target's format holds one; BMP does not. JPEG and WebP are\n"
               "written with quality 92. JPEG and BMP know no transparency: a translucent\n"
               "picture is laid over white. Effects compute with 8 bits a channel.\n"
               "\n"
               "Exit codes:\n") +
           exitCodeTable();
}

} // namespace ko::exporter
