#include "benchmarks/Machine.h"

#include <QtCore/QByteArray>
#include <QtCore/QSysInfo>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

namespace ko::imagefx::benchmarks
{

namespace
{

// The share of the machine's processor time from which others distort what is measured.
constexpr double sharedFrom = 0.1;

std::string processorModel()
{
    std::ifstream file("/proc/cpuinfo");
    std::string line;
    while (std::getline(file, line)) {
        const std::size_t colon = line.find(": ");
        if (line.compare(0, 10, "model name") == 0 && colon != std::string::npos) {
            return line.substr(colon + 2);
        }
    }
    return QSysInfo::currentCpuArchitecture().toStdString();
}

std::string glText(GLenum name)
{
    const GLubyte *text = QOpenGLContext::currentContext()->functions()->glGetString(name);
    return text != nullptr ? reinterpret_cast<const char *>(text) : "unknown";
}

double seconds(const timeval &time)
{
    return double(time.tv_sec) + double(time.tv_usec) / 1e6;
}

double usedBy(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::string percent(double part, double whole)
{
    const double share = whole > 0.0 ? std::max(0.0, 100.0 * part / whole) : 0.0;
    return QByteArray::number(share, 'f', 0).toStdString() + " %";
}

} // namespace

Machine::Machine() : m_start(processorTime()) {}

// The first line of /proc/stat: user, nice, system, idle, iowait, irq, softirq, steal.
Machine::ProcessorTime Machine::processorTime()
{
    std::ifstream file("/proc/stat");
    std::string line;
    std::getline(file, line);
    std::istringstream fields(line.substr(std::min<std::size_t>(line.size(), 4)));
    std::vector<double> ticks(8, 0.0);
    for (double &tick : ticks) {
        fields >> tick;
    }
    const double perSecond = double(sysconf(_SC_CLK_TCK));
    ProcessorTime time;
    for (std::size_t i = 0; i < ticks.size(); ++i) {
        const bool idle = i == 3 || i == 4;
        const bool stolen = i == 7;
        time.total += ticks[i] / perSecond;
        time.busy += idle || stolen ? 0.0 : ticks[i] / perSecond;
        time.stolen += stolen ? ticks[i] / perSecond : 0.0;
    }
    time.own = usedBy(RUSAGE_SELF) + usedBy(RUSAGE_CHILDREN);
    return time;
}

std::string Machine::description() const
{
    const ProcessorTime now = processorTime();
    const double total = now.total - m_start.total;
    const double own = now.own - m_start.own;
    const double others = now.busy - m_start.busy - own;
    const double stolen = now.stolen - m_start.stolen;
    std::string text;
    text += "- Processor: " + processorModel() + ", " +
            std::to_string(std::thread::hardware_concurrency()) + " cores\n";
    text += "- GL renderer: " + glText(GL_RENDERER) + "\n";
    text += "- GL version: " + glText(GL_VERSION) + "\n";
    text += std::string("- Qt: ") + qVersion() + "\n";
    text += "- Processor time during the run: this program " + percent(own, total) +
            ", other programs " + percent(others, total) + ", other virtual machines " +
            percent(stolen, total);
    if (others + stolen > sharedFrom * total) {
        text += ". The machine was shared: the times are too long, by how much is unknown";
    }
    return text + "\n";
}

} // namespace ko::imagefx::benchmarks
