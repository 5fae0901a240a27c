#pragma once

#include "exporter/Failure.h"
#include "exporter/folder/InputFiles.h"

#include <QtCore/QHash>
#include <QtCore/QString>

#include <vector>

namespace ko::exporter
{

// What becomes of one input.
struct PlannedPicture {
    QString source;
    QString target;
    // As in InputFile.
    Outcome failure;
    // Its target exists already and is to be left alone.
    bool skipped;
};

// Which file each input becomes. Nothing is written or made.
class TargetPlan
{
public:
    // `suffix`: of every target, without its dot; empty: that of its source. `skipExisting`: inputs
    // whose targets exist are skipped.
    TargetPlan(const QString &targetFolder, const QString &suffix, bool skipExisting);

    // Fails where two inputs would become one file, or a target would replace an input, also by
    // way of links. Names that differ in case only are different. Inputs that are skipped replace
    // nothing: those whose targets an earlier run has put among the inputs are no reason to fail.
    Outcome make(const std::vector<InputFile> &files);

    const std::vector<PlannedPicture> &pictures() const { return m_pictures; }

private:
    QString targetOf(const QString &place) const;

    const QString m_targetFolder;
    const QString m_suffix;
    const bool m_skipExisting;
    std::vector<PlannedPicture> m_pictures;
};

} // namespace ko::exporter
