#include "exporter/folder/PictureJob.h"

#include "exporter/folder/Progress.h"
#include "exporter/folder/TargetPlan.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <filesystem>
#include <new>
#include <system_error>

namespace ko::exporter
{

namespace
{

constexpr double millisecond = 0.001;

} // namespace

PictureJob::PictureJob(const PlannedPicture &picture, const JobSurroundings &surroundings)
    : m_picture(picture),
      m_surroundings(surroundings),
      m_export(picture.source, picture.target, surroundings.options)
{
    m_export.setLargestSide(surroundings.largestSide);
}

bool PictureJob::load()
{
    m_clock.start();
    if (isSkipped()) {
        m_surroundings.progress.skipped(m_picture.source, m_picture.target);
        return false;
    }
    const ProcessorRenderer *processor = m_surroundings.processor;
    const bool loaded = succeeds([this, processor] {
        Outcome failure = m_picture.failure ? m_picture.failure : makeFolder();
        if (failure) {
            return failure;
        }
        return processor == nullptr ? m_export.load() : m_export.exportWith(*processor);
    });
    if (loaded && processor != nullptr) {
        reportDone();
        return false;
    }
    return loaded;
}

bool PictureJob::render()
{
    return succeeds(
        [this] { return m_export.render(m_surroundings.renderer, m_surroundings.stack); });
}

void PictureJob::save()
{
    if (succeeds([this] { return m_export.save(); })) {
        reportDone();
    }
}

// A target may also have come since the plan was made, from a run beside this one.
bool PictureJob::isSkipped() const
{
    return m_picture.skipped || (m_surroundings.skipExisting && !m_picture.failure &&
                                 QFileInfo(m_picture.target).isFile());
}

void PictureJob::reportDone()
{
    Progress &progress = m_surroundings.progress;
    progress.done(m_picture.source, m_picture.target, double(m_clock.elapsed()) * millisecond,
                  m_export.warnings());
    const QStringList notes = m_export.notes();
    for (const QString &note : notes) {
        progress.note(note);
    }
}

// Reports a failure. A picture that is too large for the memory fails alone, too.
template <class Step>
bool PictureJob::succeeds(Step step)
{
    Outcome failure;
    try {
        failure = step();
    } catch (const std::bad_alloc &) {
        failure = Failure{ExitCode::RenderingFailed,
                          QStringLiteral("out of memory with %1").arg(m_picture.source)};
    }
    if (failure) {
        m_surroundings.progress.failed(m_picture.source, m_picture.target, *failure);
    }
    return !failure;
}

Outcome PictureJob::makeFolder() const
{
    const QString folder = QFileInfo(m_picture.target).path();
    std::error_code error;
    std::filesystem::create_directories(QFile::encodeName(folder).toStdString(), error);
    if (!error) {
        return {};
    }
    return Failure{ExitCode::TargetFolder,
                   QStringLiteral("the folder %1 cannot be made: %2")
                       .arg(folder, QString::fromStdString(error.message()))};
}

} // namespace ko::exporter
