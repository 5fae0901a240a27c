#pragma once

#include "exporter/Failure.h"

#include <QtCore/QString>

#include <functional>
#include <vector>

namespace ko::exporter
{

// A picture that was named or found.
struct InputFile {
    QString source;
    // Where its target belongs below the target folder, still with the source's suffix.
    QString place;
    // Why it cannot be exported, where that shows already. It may then be a folder.
    Outcome failure;
};

// The pictures below the arguments of a call, in a steady order: argument by argument, a folder's
// entries by the bytes of their names.
//
// The places are those that rsync gives: FILE becomes FILE's last name, FOLDER/x becomes
// FOLDER's last name/x, and FOLDER/ with a slash (also "." and "..") only x. In an argument with
// "/./" what stands behind it is the place, as for a/./b/FILE b/FILE.
//
// A file that is named counts whatever it is. Inside folders only regular files count whose suffix
// is that of a known format; hidden files and folders, links to folders and the target folder are
// left out. Links to files count as the file, so no loop of links is ever entered.
class InputFiles
{
public:
    // `note` gets one sentence for each thing that is left out; may be empty.
    InputFiles(const QString &targetFolder, std::function<void(const QString &)> note);

    void add(const QString &argument);

    const std::vector<InputFile> &files() const { return m_files; }

private:
    void addFolder(const QString &folder, const QString &place);
    void addEntry(const QString &path, const QString &place);
    void leaveOut(const QString &path, const char *reason) const;

    const QString m_targetFolder;
    const std::function<void(const QString &)> m_note;
    std::vector<InputFile> m_files;
};

} // namespace ko::exporter
