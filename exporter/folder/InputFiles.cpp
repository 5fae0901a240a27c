#include "exporter/folder/InputFiles.h"

#include "exporter/PictureFormat.h"

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QStringList>

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <sys/stat.h>
#include <utility>

namespace ko::exporter
{

namespace
{

bool statusOf(const QString &path, struct stat *status)
{
    return stat(QFile::encodeName(path).constData(), status) == 0;
}

bool isLink(const QString &path)
{
    struct stat status = {};
    return lstat(QFile::encodeName(path).constData(), &status) == 0 && S_ISLNK(status.st_mode);
}

bool isSame(const struct stat &a, const struct stat &b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

QString joined(const QString &folder, const QString &name)
{
    return folder.isEmpty() || folder.endsWith(QLatin1Char('/')) ? folder + name
                                                                 : folder + QLatin1Char('/') + name;
}

QString lastName(const QString &path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

// Below the target folder, whatever the argument is.
QString placeOf(const QString &argument)
{
    const int mark = argument.indexOf(QLatin1String("/./"));
    QStringList names =
        argument.mid(mark < 0 ? 0 : mark + 1).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    names.removeAll(QStringLiteral("."));
    if (mark >= 0 && !names.contains(QStringLiteral(".."))) {
        return names.join(QLatin1Char('/'));
    }
    const QString name = lastName(argument);
    return name == QLatin1String(".") || name == QLatin1String("..") ? QString() : name;
}

// False, with errno, when the folder cannot be read to its end.
bool readFolder(const QString &folder, std::vector<QByteArray> *names)
{
    DIR *directory = opendir(QFile::encodeName(folder).constData());
    if (directory == nullptr) {
        return false;
    }
    errno = 0;
    while (const dirent *entry = readdir(directory)) {
        const QByteArray name = entry->d_name;
        if (name != "." && name != "..") {
            names->push_back(name);
        }
        errno = 0;
    }
    const int error = errno;
    closedir(directory);
    errno = error;
    std::sort(names->begin(), names->end());
    return error == 0;
}

Failure sourceFailure(const QString &path, int error)
{
    if (error == ENOENT) {
        return {ExitCode::SourceMissing, QStringLiteral("the source %1 does not exist").arg(path)};
    }
    return {ExitCode::SourceUnreadable,
            QStringLiteral("the source %1 cannot be read: %2").arg(path, qt_error_string(error))};
}

} // namespace

InputFiles::InputFiles(const QString &targetFolder, std::function<void(const QString &)> note)
    : m_targetFolder(targetFolder), m_note(std::move(note))
{
}

void InputFiles::add(const QString &argument)
{
    struct stat status = {};
    const QString place = placeOf(argument);
    if (!statusOf(argument, &status)) {
        m_files.push_back({argument, place, sourceFailure(argument, errno)});
    } else if (S_ISDIR(status.st_mode)) {
        addFolder(argument, place);
    } else {
        m_files.push_back({argument, place, {}});
    }
}

void InputFiles::addFolder(const QString &folder, const QString &place)
{
    std::vector<QByteArray> names;
    if (!readFolder(folder, &names)) {
        m_files.push_back({folder, place, sourceFailure(folder, errno)});
    }
    for (const QByteArray &bytes : names) {
        const QString name = QFile::decodeName(bytes);
        addEntry(joined(folder, name), joined(place, name));
    }
}

void InputFiles::addEntry(const QString &path, const QString &place)
{
    if (lastName(path).startsWith(QLatin1Char('.'))) {
        leaveOut(path, "it is hidden");
        return;
    }
    struct stat status = {};
    const bool exists = statusOf(path, &status);
    const int error = errno;
    if (exists && S_ISDIR(status.st_mode)) {
        struct stat target = {};
        if (isLink(path)) {
            leaveOut(path, "it is a link to a folder");
        } else if (statusOf(m_targetFolder, &target) && isSame(status, target)) {
            leaveOut(path, "it is the target folder");
        } else {
            addFolder(path, place);
        }
        return;
    }
    // What cannot be looked at may be a folder full of pictures.
    const bool leadsNowhere = error == ENOENT || error == ELOOP;
    if (!PictureFormat::ofFileName(path).isKnown() && (exists || leadsNowhere)) {
        leaveOut(path, "its suffix is not that of a picture");
    } else if (!exists) {
        m_files.push_back({path, place, sourceFailure(path, error)});
    } else if (!S_ISREG(status.st_mode)) {
        leaveOut(path, "it is not a file");
    } else {
        m_files.push_back({path, place, {}});
    }
}

void InputFiles::leaveOut(const QString &path, const char *reason) const
{
    if (m_note) {
        m_note(QStringLiteral("%1 is left out: %2").arg(path, QLatin1String(reason)));
    }
}

} // namespace ko::exporter
