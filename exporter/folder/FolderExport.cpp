#include "exporter/folder/FolderExport.h"

#include "exporter/CommandLine.h"
#include "exporter/EffectStack.h"
#include "exporter/EngineChoice.h"
#include "exporter/OffscreenGl.h"
#include "exporter/PictureRenderer.h"
#include "exporter/ProcessorRenderer.h"
#include "exporter/StackReading.h"
#include "exporter/StandardOutput.h"
#include "exporter/folder/InputFiles.h"
#include "exporter/folder/Interruption.h"
#include "exporter/folder/PictureJob.h"
#include "exporter/folder/Pipeline.h"
#include "exporter/folder/Progress.h"
#include "exporter/folder/TargetPlan.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <memory>

namespace ko::exporter
{

namespace
{

// For the GL renderer, so that every worker has something to do while it draws. One more would cost
// the memory of a picture and win nothing where the cores are busy anyway.
constexpr int jobsBesideWorkers = 1;

// A core for each picture wastes none of them on waiting; what few pictures leave over they share.
int threadsPerPicture(int threads, std::size_t pictures)
{
    const int workers = int(std::min(std::size_t(threads), std::max<std::size_t>(pictures, 1)));
    return (threads + workers - 1) / workers;
}

Outcome makePlan(const CommandLine &commandLine, Progress *progress, TargetPlan *plan)
{
    InputFiles inputs(commandLine.targetFolder(),
                      [progress](const QString &text) { progress->note(text); });
    const QStringList arguments = commandLine.inputs();
    for (const QString &argument : arguments) {
        inputs.add(argument);
    }
    if (inputs.files().empty()) {
        return Failure{ExitCode::NothingToDo, QStringLiteral("there is no picture below %1")
                                                  .arg(arguments.join(QStringLiteral(", ")))};
    }
    return plan->make(inputs.files());
}

// A misnamed file helps nobody, so a format that is asked for names the files, too.
QString targetSuffix(const CommandLine &commandLine)
{
    return commandLine.suffix().isEmpty() ? QString::fromLatin1(commandLine.options().format)
                                          : commandLine.suffix();
}

// A run over many pictures, from the reading of the stack on.
class Run
{
public:
    Run(const CommandLine &commandLine, const TargetPlan &plan, Progress *progress)
        : m_commandLine(commandLine),
          m_plan(plan),
          m_progress(*progress),
          m_gl(commandLine.platform()),
          m_pipeline(commandLine.usedThreads(), commandLine.usedThreads() + jobsBesideWorkers)
    {
    }

    Outcome prepare()
    {
        QStringList warnings;
        if (Outcome failure =
                readStack(m_commandLine.effects(), m_commandLine.strict(), &m_stack, &warnings)) {
            return failure;
        }
        for (const QString &warning : warnings) {
            m_progress.warn(QStringLiteral("warning: ") + warning);
        }
        m_engine = std::make_unique<EngineChoice>(
            m_commandLine.options().engine, m_gl, m_stack,
            threadsPerPicture(m_commandLine.usedThreads(), m_plan.pictures().size()));
        if (Outcome failure =
                m_engine->make(QStringLiteral("no picture"), m_commandLine.effects())) {
            return failure;
        }
        if (m_engine->processor() == nullptr || !m_engine->processor()->isIdle()) {
            m_progress.note(m_engine->note());
        }
        return {};
    }

    void exportAll()
    {
        PictureRenderer renderer;
        const ProcessorRenderer *processor = m_engine->processor();
        const JobSurroundings surroundings{m_commandLine.options(),
                                           processor == nullptr ? m_gl.largestSide() : 0,
                                           m_commandLine.skipExisting(),
                                           m_stack,
                                           renderer,
                                           processor,
                                           m_progress};
        auto picture = m_plan.pictures().begin();
        m_pipeline.run([&]() -> std::unique_ptr<PipelineJob> {
            if (picture == m_plan.pictures().end()) {
                return nullptr;
            }
            return std::make_unique<PictureJob>(*picture++, surroundings);
        });
    }

    void stop() { m_pipeline.stop(); }

private:
    const CommandLine &m_commandLine;
    const TargetPlan &m_plan;
    Progress &m_progress;
    OffscreenGl m_gl;
    // Its effects go while the context is current.
    EffectStack m_stack;
    std::unique_ptr<EngineChoice> m_engine;
    Pipeline m_pipeline;
};

int exitStatus(const Tally &tally, int signal)
{
    if (signal != 0) {
        return Interruption::exitStatus(signal);
    }
    return int(tally.failed > 0 ? ExitCode::SomeFailed : ExitCode::Success);
}

int report(Progress *progress, const Failure &failure)
{
    progress->warn(failure.message);
    return int(failure.code);
}

} // namespace

int exportFolder(const CommandLine &commandLine)
{
    Progress progress(commandLine.progress(), commandLine.options().verbose);
    TargetPlan plan(commandLine.targetFolder(), targetSuffix(commandLine),
                    commandLine.skipExisting());
    if (const Outcome failure = makePlan(commandLine, &progress, &plan)) {
        return report(&progress, *failure);
    }
    // A reader of the events that goes ends the run as a signal does.
    std::signal(SIGPIPE, SIG_IGN);
    Interruption interruption;
    Run run(commandLine, plan, &progress);
    if (const Outcome failure = run.prepare()) {
        return report(&progress, *failure);
    }
    progress.setEventsLost([&run] { run.stop(); });
    progress.start(int(plan.pictures().size()));
    interruption.listen({[&run] { run.stop(); }, [&progress] { progress.tick(); }});
    run.exportAll();
    interruption.finish();
    // A signal that comes when all is done changes nothing.
    const Tally tally = progress.tally();
    const bool complete = tally.over() == tally.total;
    const int signal = complete ? 0 : interruption.signalNumber();
    progress.end(signal != 0 || (!complete && progress.eventsError() != 0));
    // Events that are lost count to the last one.
    const int error = progress.eventsError();
    if (error != 0 && error != EPIPE) {
        return report(&progress, unprintable(error));
    }
    return exitStatus(tally, error == EPIPE ? SIGPIPE : signal);
}

} // namespace ko::exporter
