#include "exporter/folder/Progress.h"

#include "exporter/ErrorCapture.h"

#include <cerrno>
#include <utility>

namespace ko::exporter
{

namespace
{

bool wantsBar(CommandLine::Progress kind)
{
    return kind == CommandLine::Progress::Bar ||
           (kind == CommandLine::Progress::Automatic && ProgressBar::isUseful());
}

constexpr double millisecond = 0.001;

} // namespace

Progress::Progress(CommandLine::Progress kind, bool verbose)
    : m_verbose(verbose),
      m_bar(wantsBar(kind) ? std::make_unique<ProgressBar>() : nullptr),
      m_events(kind == CommandLine::Progress::Json ? std::make_unique<ProgressEvents>() : nullptr)
{
    m_clock.start();
}

void Progress::setEventsLost(std::function<void()> eventsLost)
{
    const Lock lock(m_mutex);
    m_eventsLost = std::move(eventsLost);
}

void Progress::start(int total)
{
    const Lock lock(m_mutex);
    m_tally.total = total;
    m_clock.start();
    if (m_events) {
        sent(m_events->started(m_tally));
    }
    draw();
}

void Progress::done(const QString &source, const QString &target, double seconds,
                    const QStringList &warnings)
{
    const Lock lock(m_mutex);
    ++m_tally.done;
    if (m_events) {
        sent(m_events->done(source, target, seconds, warnings));
    }
    for (const QString &warning : warnings) {
        line(QStringLiteral("warning: ") + warning);
    }
    draw();
}

void Progress::failed(const QString &source, const QString &target, const Failure &failure)
{
    const Lock lock(m_mutex);
    ++m_tally.failed;
    if (m_events) {
        sent(m_events->failed(source, target, failure));
    }
    line(failure.message);
    draw();
}

void Progress::skipped(const QString &source, const QString &target)
{
    const Lock lock(m_mutex);
    ++m_tally.skipped;
    if (m_events) {
        sent(m_events->skipped(source, target));
    }
}

void Progress::note(const QString &text)
{
    if (m_verbose) {
        warn(QStringLiteral("note: ") + text);
    }
}

void Progress::warn(const QString &text)
{
    const Lock lock(m_mutex);
    line(text);
}

void Progress::tick()
{
    const Lock lock(m_mutex);
    draw();
}

void Progress::end(bool interrupted)
{
    const Lock lock(m_mutex);
    if (m_events) {
        sent(m_events->ended(m_tally, double(m_clock.elapsed()) * millisecond, interrupted));
    }
    // Where nobody watches, success needs no words.
    const bool complete = m_tally.done + m_tally.skipped == m_tally.total;
    const bool failureComes = eventsLostFor() != 0 && eventsLostFor() != EPIPE;
    if (!failureComes && (!complete || m_bar || m_verbose)) {
        line(lastLine(interrupted));
    }
    m_bar.reset();
}

Tally Progress::tally() const
{
    const Lock lock(m_mutex);
    return m_tally;
}

int Progress::eventsError() const
{
    const Lock lock(m_mutex);
    return eventsLostFor();
}

void Progress::line(const QString &text)
{
    if (m_bar) {
        m_bar->clear();
    }
    reportLine(text);
}

void Progress::draw()
{
    if (m_bar && m_tally.total > 0) {
        m_bar->draw(m_tally, double(m_clock.elapsed()) * millisecond);
    }
}

void Progress::sent(bool successful)
{
    if (!successful && m_eventsLost) {
        std::exchange(m_eventsLost, nullptr)();
    }
}

int Progress::eventsLostFor() const
{
    return m_events ? m_events->error() : 0;
}

QString Progress::lastLine(bool interrupted) const
{
    QString text =
        QStringLiteral("%1 of %2 %3 exported")
            .arg(QString::number(m_tally.done), QString::number(m_tally.total),
                 m_tally.total == 1 ? QStringLiteral("picture") : QStringLiteral("pictures"));
    if (m_tally.failed > 0) {
        text += QStringLiteral(", %1 failed").arg(m_tally.failed);
    }
    if (m_tally.skipped > 0) {
        text += QStringLiteral(", %1 skipped as their targets exist").arg(m_tally.skipped);
    }
    return interrupted ? QStringLiteral("interrupted: %1; --skip-existing continues").arg(text)
                       : text;
}

} // namespace ko::exporter
