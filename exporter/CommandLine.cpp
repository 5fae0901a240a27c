#include "exporter/CommandLine.h"

#include "exporter/HelpText.h"
#include "exporter/OptionTable.h"
#include "exporter/PictureFormat.h"

#include "engine/ThreadPool.h"

#include <array>

namespace ko::exporter
{

namespace
{

constexpr int mostThreads = 256;
constexpr int longestSide = 1000000;
constexpr qint64 mostPixels = Q_INT64_C(1000000000000);

Failure usage(const QString &message)
{
    return {ExitCode::Usage, message + QStringLiteral("; see --help")};
}

Failure unsuitable(const QString &option, const QString &value, const QString &wanted)
{
    return usage(QStringLiteral("%1=%2 is not possible: %3").arg(option, value.left(100), wanted));
}

// A mistake with what was probably meant; nothing is guessed when nothing is near.
Failure misspelt(const QString &message, const QString &meant)
{
    return meant.isEmpty() ? usage(message)
                           : Failure{ExitCode::Usage,
                                     message + QStringLiteral("; did you mean %1?").arg(meant)};
}

bool isPlatformOption(const QString &argument)
{
    return argument == QLatin1String("-platform") || argument == QLatin1String("--platform");
}

bool contains(const QStringList &arguments, const char *option, const char *shortOption)
{
    const QStringList options = arguments.mid(0, arguments.indexOf(QStringLiteral("--")));
    return options.contains(QLatin1String(option)) || options.contains(QLatin1String(shortOption));
}

// Qt takes a name that begins with a colon for a resource.
QString localPath(const QString &path)
{
    return path.startsWith(QLatin1Char(':')) ? QStringLiteral("./") + path : path;
}

// Plain decimal digits, in any locale.
bool readNumber(const QString &text, qint64 least, qint64 most, qint64 *number)
{
    for (const QChar c : text) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9')) {
            return false;
        }
    }
    bool ok = false;
    *number = text.toLongLong(&ok);
    return ok && *number >= least && *number <= most;
}

} // namespace

Outcome CommandLine::parse(const QStringList &arguments)
{
    if (contains(arguments, "--help", "-h")) {
        m_task = Task::Help;
        return {};
    }
    if (contains(arguments, "--version", "-V")) {
        m_task = Task::Version;
        return {};
    }
    if (Outcome failure = parseOptions(arguments)) {
        return failure;
    }
    return checkTask();
}

Outcome CommandLine::parseOptions(const QStringList &arguments)
{
    for (int i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (argument == QLatin1String("--")) {
            for (const QString &input : arguments.mid(i + 1)) {
                m_inputs.append(localPath(input));
            }
            break;
        }
        if (isPlatformOption(argument)) {
            if (++i == arguments.size() || arguments.at(i).isEmpty()) {
                return usage(QStringLiteral("%1 needs a name").arg(arguments.at(i - 1)));
            }
            m_platform = arguments.at(i);
            m_platformGiven = true;
        } else if (!argument.startsWith(QLatin1Char('-'))) {
            m_inputs.append(localPath(argument));
        } else if (Outcome failure = parseOption(argument)) {
            return failure;
        }
    }
    return {};
}

Outcome CommandLine::parseOption(const QString &argument)
{
    const int equals = argument.indexOf(QLatin1Char('='));
    const QString name = argument.left(equals);
    const QString value = equals < 0 ? QString() : argument.mid(equals + 1);
    const Option *option = findOption(name);
    if (option == nullptr) {
        return misspelt(QStringLiteral("unknown option %1").arg(argument), nearestOption(name));
    }
    if (option->value == Option::Value::None && equals >= 0) {
        return usage(QStringLiteral("%1: %2 takes no value").arg(argument, name));
    }
    const bool optional = option->value == Option::Value::Optional && equals < 0;
    if (option->value != Option::Value::None && !optional && value.isEmpty()) {
        const bool path = option->kind == Option::Kind::File;
        return usage(QStringLiteral("%1 needs a %2, as in %3")
                         .arg(name, path ? QStringLiteral("path") : QStringLiteral("value"),
                              option->usage()));
    }
    if (m_given.contains(name)) {
        return usage(QStringLiteral("%1 is given twice").arg(name));
    }
    m_given.append(name);
    if (option->kind == Option::Kind::Choice && !optional && !option->choices().contains(value)) {
        const QStringList choices = option->choices();
        return misspelt(QStringLiteral("%1=%2 is not possible: it is one of %3")
                            .arg(name, value.left(100), choices.join(QStringLiteral(", "))),
                        nearestWord(value, choices));
    }
    return setValue(name, value);
}

Outcome CommandLine::setValue(const QString &option, const QString &value)
{
    const struct {
        const char *option;
        QString *text;
    } texts[] = {{"--source", &m_source},
                 {"--target", &m_target},
                 {"--effects", &m_effects},
                 {"--target-dir", &m_targetFolder}};
    for (const auto &entry : texts) {
        if (option == QLatin1String(entry.option)) {
            *entry.text = localPath(value);
            return {};
        }
    }
    if (option == QLatin1String("--suffix")) {
        m_suffix = value.startsWith(QLatin1Char('.')) ? value.mid(1) : value;
        if (m_suffix.contains(QLatin1Char('/')) ||
            !PictureFormat::ofFileName(QStringLiteral("x.") + m_suffix).isKnown()) {
            return unsuitable(option, value,
                              QStringLiteral("it is one of ") + PictureFormat::knownSuffixes());
        }
        return {};
    }
    if (option == QLatin1String("--background")) {
        const QColor colour(value);
        if (!colour.isValid() || colour.alpha() != 255) {
            return unsuitable(option, value, QStringLiteral("it is a name, as white, or #RRGGBB"));
        }
        m_options.background = colour;
        return {};
    }
    m_options.strict = m_options.strict || option == QLatin1String("--strict");
    m_options.verbose = m_options.verbose || option == QLatin1String("--verbose");
    m_skipExisting = m_skipExisting || option == QLatin1String("--skip-existing");
    if (Outcome failure = setNumber(option, value)) {
        return failure;
    }
    return setChoice(option, value);
}

Outcome CommandLine::setNumber(const QString &option, const QString &value)
{
    qint64 number = 0;
    if (option == QLatin1String("--quality")) {
        if (!readNumber(value, 1, 100, &number)) {
            return unsuitable(option, value, QStringLiteral("it is a number from 1 to 100"));
        }
        m_options.quality = int(number);
    } else if (option == QLatin1String("--threads")) {
        if (!readNumber(value, 1, mostThreads, &number)) {
            return unsuitable(option, value,
                              QStringLiteral("it is a number from 1 to %1").arg(mostThreads));
        }
        m_threads = int(number);
    } else if (option == QLatin1String("--max-pixels")) {
        if (!readNumber(value, 1, mostPixels, &number)) {
            return unsuitable(option, value,
                              QStringLiteral("it is a number from 1 to %1").arg(mostPixels));
        }
        m_options.maxPixels = number;
    } else if (option == QLatin1String("--max-size")) {
        const int cross = value.indexOf(QLatin1Char('x'), 0, Qt::CaseInsensitive);
        qint64 height = 0;
        if (cross < 0 || !readNumber(value.left(cross), 1, longestSide, &number) ||
            !readNumber(value.mid(cross + 1), 1, longestSide, &height)) {
            return unsuitable(option, value,
                              QStringLiteral("it is a width and a height, as 1920x1080"));
        }
        m_options.maxSize = QSize(int(number), int(height));
    }
    return {};
}

// `value` is one of the option's choices.
Outcome CommandLine::setChoice(const QString &option, const QString &value)
{
    if (option == QLatin1String("--progress")) {
        m_progress = value == QLatin1String("bar")    ? Progress::Bar
                     : value == QLatin1String("json") ? Progress::Json
                                                      : Progress::None;
    } else if (option == QLatin1String("--keep")) {
        m_options.keep = value == QLatin1String("all")   ? ExportOptions::Keep::All
                         : value == QLatin1String("icc") ? ExportOptions::Keep::Icc
                                                         : ExportOptions::Keep::None;
    } else if (option == QLatin1String("--engine")) {
        m_options.engine = value == QLatin1String("gl")    ? ExportOptions::Engine::Gl
                           : value == QLatin1String("cpu") ? ExportOptions::Engine::Processor
                                                           : ExportOptions::Engine::Automatic;
    } else if (option == QLatin1String("--format")) {
        m_options.format = value.toLatin1();
    } else if (option == QLatin1String("--list-effects")) {
        m_listing = value == QLatin1String("json") ? Listing::Json : Listing::Text;
    }
    return {};
}

bool CommandLine::isGiven(const char *option) const
{
    return m_given.contains(QLatin1String(option));
}

Outcome CommandLine::checkTask()
{
    if (isGiven("--list-effects")) {
        m_task = Task::ListEffects;
        return checkNoInputs();
    }
    if (isGiven("--check")) {
        m_task = Task::Check;
        if (m_inputs.isEmpty() && m_effects.isEmpty()) {
            return usage(QStringLiteral("--check needs the names of stacks, or --effects=FILE"));
        }
        if (!m_inputs.isEmpty() && !m_effects.isEmpty()) {
            return usage(QStringLiteral("--check takes the names of stacks or --effects=FILE, "
                                        "not both"));
        }
        return m_inputs.contains(QString()) ? usage(QStringLiteral("stray argument \"\""))
                                            : Outcome();
    }
    m_task = isGiven("--target-dir") ? Task::ExportFolder : Task::ExportOne;
    if (Outcome failure = m_task == Task::ExportFolder ? checkExportFolder() : checkExportOne()) {
        return failure;
    }
    return checkEngine();
}

// A platform has no other use than to provide GL.
Outcome CommandLine::checkEngine()
{
    if (!m_platformGiven) {
        return {};
    }
    if (m_options.engine == ExportOptions::Engine::Processor) {
        return usage(QStringLiteral("-platform and --engine=cpu exclude each other"));
    }
    m_options.engine = ExportOptions::Engine::Gl;
    return {};
}

Outcome CommandLine::checkExportOne() const
{
    for (const char *option : {"--suffix", "--skip-existing", "--progress"}) {
        if (isGiven(option)) {
            return usage(QStringLiteral("%1 needs --target-dir=DIR").arg(QLatin1String(option)));
        }
    }
    if (!m_inputs.isEmpty() && m_source.isEmpty() && m_target.isEmpty()) {
        return usage(
            QStringLiteral("--target-dir=DIR is missing for \"%1\"").arg(m_inputs.constFirst()));
    }
    if (Outcome failure = checkNoInputs()) {
        return failure;
    }
    for (const char *option : {"--source", "--target", "--effects"}) {
        if (!isGiven(option)) {
            return usage(QStringLiteral("%1=FILE is missing").arg(QLatin1String(option)));
        }
    }
    return {};
}

Outcome CommandLine::checkExportFolder() const
{
    for (const char *option : {"--source", "--target"}) {
        if (isGiven(option)) {
            return usage(QStringLiteral("%1 and --target-dir exclude each other")
                             .arg(QLatin1String(option)));
        }
    }
    if (!isGiven("--effects")) {
        return usage(QStringLiteral("--effects=FILE is missing"));
    }
    if (m_inputs.isEmpty()) {
        return usage(QStringLiteral("the names of pictures or folders are missing"));
    }
    return m_inputs.contains(QString()) ? usage(QStringLiteral("stray argument \"\"")) : Outcome();
}

Outcome CommandLine::checkNoInputs() const
{
    if (m_inputs.isEmpty()) {
        return {};
    }
    return usage(QStringLiteral("stray argument \"%1\"").arg(m_inputs.constFirst()));
}

int CommandLine::usedThreads() const
{
    return m_threads > 0 ? m_threads : imagefx::engine::usableProcessors();
}

QString CommandLine::helpText()
{
    return exporter::helpText();
}

} // namespace ko::exporter
