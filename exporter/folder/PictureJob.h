#pragma once

#include "exporter/Failure.h"
#include "exporter/PictureExport.h"
#include "exporter/folder/Pipeline.h"

#include <QtCore/QElapsedTimer>

namespace ko::exporter
{

class EffectStack;
class PictureRenderer;
class ProcessorRenderer;
class Progress;
struct PlannedPicture;

// What the pictures of a run share. All of it must outlive the jobs.
struct JobSurroundings {
    const ExportOptions &options;
    // As for PictureExport::setLargestSide().
    int largestSide;
    bool skipExisting;
    const EffectStack &stack;
    PictureRenderer &renderer;
    // Where it draws in place of the renderer, else null.
    const ProcessorRenderer *processor;
    Progress &progress;
};

// One picture in the pipeline: makes the folder of its target, exports and reports how that went.
// What the processor draws goes all its way in load(): that keeps a core busy, and the picture in
// its cache, better than a walk through the hands of several threads.
class PictureJob : public PipelineJob
{
public:
    PictureJob(const PlannedPicture &picture, const JobSurroundings &surroundings);

    bool load() override;
    bool render() override;
    void save() override;

private:
    template <class Step>
    bool succeeds(Step step);
    bool isSkipped() const;
    void reportDone();
    Outcome makeFolder() const;

    const PlannedPicture &m_picture;
    const JobSurroundings &m_surroundings;
    PictureExport m_export;
    QElapsedTimer m_clock;
};

} // namespace ko::exporter
