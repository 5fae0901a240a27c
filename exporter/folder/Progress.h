#pragma once

#include "exporter/CommandLine.h"
#include "exporter/Failure.h"
#include "exporter/folder/ProgressBar.h"
#include "exporter/folder/ProgressEvents.h"
#include "exporter/folder/Tally.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>
#include <memory>
#include <mutex>

namespace ko::exporter
{

// What a run over many pictures tells: failures and warnings as lines on standard error, how far it
// is as a bar there or as events on standard output, and one last line. Every function may be
// called from any thread.
class Progress
{
public:
    Progress(CommandLine::Progress kind, bool verbose);

    // Called, at most once, when an event is lost, as when their reader has gone.
    void setEventsLost(std::function<void()> eventsLost);

    void start(int total);
    void done(const QString &source, const QString &target, double seconds,
              const QStringList &warnings);
    void failed(const QString &source, const QString &target, const Failure &failure);
    void skipped(const QString &source, const QString &target);
    // A line for people who asked for more; otherwise nothing.
    void note(const QString &text);
    // A line for everybody.
    void warn(const QString &text);
    // Brings the bar up to date, as when the terminal has another width.
    void tick();
    // Leaves the last line out where the lost events are a failure that is still to be told.
    void end(bool interrupted);

    Tally tally() const;
    // As ProgressEvents::error(); 0 without events.
    int eventsError() const;

private:
    using Lock = std::lock_guard<std::mutex>;

    void line(const QString &text);
    void draw();
    void sent(bool successful);
    int eventsLostFor() const;
    QString lastLine(bool interrupted) const;

    const bool m_verbose;
    mutable std::mutex m_mutex;
    std::unique_ptr<ProgressBar> m_bar;
    std::unique_ptr<ProgressEvents> m_events;
    std::function<void()> m_eventsLost;
    QElapsedTimer m_clock;
    Tally m_tally;
};

} // namespace ko::exporter
