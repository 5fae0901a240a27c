#include "exporter/SignalPause.h"

#include <array>
#include <csignal>
#include <mutex>

namespace ko::exporter
{

namespace
{

constexpr std::array<int, 3> signalNumbers{SIGINT, SIGTERM, SIGHUP};

std::mutex mutex;
int pauses = 0;
std::array<bool, signalNumbers.size()> paused{};

} // namespace

SignalPause::SignalPause()
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (pauses++ > 0) {
        return;
    }
    for (std::size_t i = 0; i < signalNumbers.size(); ++i) {
        struct sigaction current = {};
        sigaction(signalNumbers[i], nullptr, &current);
        paused[i] = current.sa_handler == SIG_DFL;
        if (paused[i]) {
            std::signal(signalNumbers[i], SIG_IGN);
        }
    }
}

SignalPause::~SignalPause()
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (--pauses > 0) {
        return;
    }
    for (std::size_t i = 0; i < signalNumbers.size(); ++i) {
        if (paused[i]) {
            std::signal(signalNumbers[i], SIG_DFL);
        }
    }
}

} // namespace ko::exporter
