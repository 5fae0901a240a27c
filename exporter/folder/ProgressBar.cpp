#include "exporter/folder/ProgressBar.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <sys/ioctl.h>
#include <unistd.h>

namespace ko::exporter
{

namespace
{

constexpr int defaultWidth = 80;
constexpr int narrowestBar = 10;
constexpr int widestBar = 40;
const char *const clearLine = "\r\x1b[K";

QByteArray twoDigits(qint64 number)
{
    return QByteArray::number(number).rightJustified(2, '0');
}

QByteArray rateText(double rate)
{
    return QByteArray::number(rate, 'f', rate < 1.0 ? 2 : rate < 10.0 ? 1 : 0) + "/s";
}

QByteArray timeText(double seconds)
{
    const qint64 whole = std::lround(seconds);
    const QByteArray minutesAndSeconds = ':' + twoDigits(whole % 60) + " left";
    return whole < 3600 ? QByteArray::number(whole / 60) + minutesAndSeconds
                        : QByteArray::number(whole / 3600) + ':' + twoDigits(whole / 60 % 60) +
                              minutesAndSeconds;
}

struct Part {
    QByteArray text;
    // Smaller ones are left out first.
    int importance;
};

int columns(const std::array<Part, 4> &parts, int least)
{
    int sum = 0;
    for (const Part &part : parts) {
        sum += part.importance >= least ? part.text.size() : 0;
    }
    return sum;
}

QByteArray bar(const Tally &tally, int space)
{
    const int length = std::min(space, widestBar) - 2;
    const int full = tally.total > 0 ? int(qint64(length) * tally.over() / tally.total) : length;
    return '[' + QByteArray(full, '#') + QByteArray(length - full, '-') + ']';
}

} // namespace

QByteArray progressText(const Tally &tally, double seconds, int width)
{
    // Those that were skipped took no time.
    const int worked = tally.done + tally.failed;
    const double rate = worked > 0 && seconds > 0.0 ? worked / seconds : 0.0;
    const bool known = rate > 0.0;
    const std::array<Part, 4> parts{
        {{QByteArray::number(tally.done + tally.skipped) + " of " + QByteArray::number(tally.total),
          4},
         {tally.failed > 0 ? ", " + QByteArray::number(tally.failed) + " failed" : QByteArray(), 3},
         {known ? ", " + rateText(rate) : QByteArray(), 1},
         {known ? ", " + timeText((tally.total - tally.over()) / rate) : QByteArray(), 2}}};
    int least = 1;
    while (least < 4 && columns(parts, least) > width) {
        ++least;
    }
    QByteArray text;
    for (const Part &part : parts) {
        text += part.importance >= least ? part.text : QByteArray();
    }
    const int space = width - text.size() - 1;
    if (space >= narrowestBar) {
        text.prepend(bar(tally, space) + ' ');
    }
    return text.left(std::max(width, 0));
}

ProgressBar::ProgressBar() : m_output(dup(STDERR_FILENO)) {}

ProgressBar::~ProgressBar()
{
    clear();
    close(m_output);
}

void ProgressBar::draw(const Tally &tally, double seconds)
{
    winsize size = {};
    const bool known = ioctl(m_output, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    const QByteArray text =
        progressText(tally, seconds, (known ? int(size.ws_col) : defaultWidth) - 1);
    if (text != m_shown) {
        write('\r' + text + "\x1b[K");
        m_shown = text;
    }
}

void ProgressBar::clear()
{
    if (!m_shown.isEmpty()) {
        write(clearLine);
        m_shown.clear();
    }
}

bool ProgressBar::isUseful()
{
    return isatty(STDERR_FILENO) != 0 && qgetenv("TERM") != "dumb";
}

// A terminal that has gone needs no bar.
void ProgressBar::write(const QByteArray &text) const
{
    const ssize_t written = ::write(m_output, text.constData(), size_t(text.size()));
    Q_UNUSED(written)
}

} // namespace ko::exporter
