#include "exporter/folder/TargetPlan.h"

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <cstdlib>
#include <memory>
#include <sys/stat.h>

namespace ko::exporter
{

namespace
{

// One name for each file, whether it exists or not. Folders are asked for only once, since most
// files share theirs.
class RealNames
{
public:
    QString of(const QString &path)
    {
        struct stat status = {};
        const QByteArray name = QFile::encodeName(path);
        if (lstat(name.constData(), &status) == 0 && S_ISLNK(status.st_mode)) {
            const QString real = resolved(path);
            return real.isEmpty() ? path : real;
        }
        const int slash = path.lastIndexOf(QLatin1Char('/'));
        const QString folder = slash < 0    ? QStringLiteral(".")
                               : slash == 0 ? QStringLiteral("/")
                                            : path.left(slash);
        return ofFolder(folder) + QLatin1Char('/') + path.mid(slash + 1);
    }

private:
    QString ofFolder(const QString &folder)
    {
        const auto known = m_folders.constFind(folder);
        if (known != m_folders.constEnd()) {
            return *known;
        }
        QString real = resolved(folder);
        if (real == QLatin1String("/")) {
            real.clear();
        } else if (real.isEmpty()) {
            real = of(folder);
        }
        m_folders.insert(folder, real);
        return real;
    }

    // Empty when it does not exist.
    static QString resolved(const QString &path)
    {
        const std::unique_ptr<char, decltype(&std::free)> real(
            realpath(QFile::encodeName(path).constData(), nullptr), &std::free);
        return real ? QFile::decodeName(real.get()) : QString();
    }

    QHash<QString, QString> m_folders;
};

QString withSuffix(const QString &name, const QString &suffix)
{
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    const int start = name.lastIndexOf(QLatin1Char('/')) + 1;
    return (dot > start ? name.left(dot) : name) + QLatin1Char('.') + suffix;
}

} // namespace

TargetPlan::TargetPlan(const QString &targetFolder, const QString &suffix, bool skipExisting)
    : m_targetFolder(targetFolder.endsWith(QLatin1Char('/')) ? targetFolder
                                                             : targetFolder + QLatin1Char('/')),
      m_suffix(suffix),
      m_skipExisting(skipExisting)
{
}

QString TargetPlan::targetOf(const QString &place) const
{
    return m_targetFolder + (m_suffix.isEmpty() ? place : withSuffix(place, m_suffix));
}

Outcome TargetPlan::make(const std::vector<InputFile> &files)
{
    RealNames realNames;
    QHash<QString, QString> sources;
    for (const InputFile &file : files) {
        sources.insert(realNames.of(file.source), file.source);
    }
    QHash<QString, QString> targets;
    m_pictures.reserve(files.size());
    for (const InputFile &file : files) {
        const QString target = targetOf(file.place);
        const bool skipped = m_skipExisting && !file.failure && QFileInfo(target).isFile();
        m_pictures.push_back({file.source, target, file.failure, skipped});
        if (file.failure || skipped) {
            continue;
        }
        const QString real = realNames.of(target);
        if (sources.contains(real)) {
            return Failure{ExitCode::TargetsClash,
                           QStringLiteral("the target %1 of %2 would replace the source %3")
                               .arg(target, file.source, sources.value(real))};
        }
        if (targets.contains(real)) {
            return Failure{ExitCode::TargetsClash,
                           QStringLiteral("%1 and %2 would both become %3")
                               .arg(targets.value(real), file.source, target)};
        }
        targets.insert(real, file.source);
    }
    return {};
}

} // namespace ko::exporter
