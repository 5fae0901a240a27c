#include "exporter/folder/Interruption.h"

#include "exporter/ExitCode.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace ko::exporter
{

namespace
{

constexpr int ticksEvery = 200; // milliseconds

// As for a program in the background of a script, which Ctrl-C is not meant for.
bool isIgnored(int signal)
{
    struct sigaction action = {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

Interruption::Interruption()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGWINCH);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (!isIgnored(signal)) {
            sigaddset(&signals, signal);
            // Never runs, but tells SignalPause that somebody listens: a signal that is ignored for
            // a moment would be lost.
            std::signal(signal, [](int) {});
        }
    }
    sigset_t before;
    pthread_sigmask(SIG_BLOCK, &signals, &before);
    m_signals = signalfd(-1, &signals, SFD_CLOEXEC);
    m_end = eventfd(0, EFD_CLOEXEC);
    if (m_signals < 0 || m_end < 0) {
        // Without descriptors nobody listens: signals end the program at once.
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            if (!isIgnored(signal)) {
                std::signal(signal, SIG_DFL);
            }
        }
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
}

Interruption::~Interruption()
{
    finish();
    close(m_signals);
    close(m_end);
}

void Interruption::listen(const Listener &listener)
{
    if (m_signals >= 0 && m_end >= 0) {
        m_thread = std::thread([this, listener] { wait(listener); });
    }
}

void Interruption::finish()
{
    if (m_thread.joinable()) {
        eventfd_write(m_end, 1);
        m_thread.join();
    }
}

int Interruption::exitStatus(int signal)
{
    return int(ExitCode::Interrupted) - SIGINT + signal;
}

void Interruption::wait(const Listener &listener)
{
    pollfd sources[] = {{m_signals, POLLIN, 0}, {m_end, POLLIN, 0}};
    while (sources[1].revents == 0) {
        poll(sources, 2, ticksEvery);
        signalfd_siginfo info = {};
        if (sources[0].revents != 0 && read(m_signals, &info, sizeof info) == sizeof info) {
            take(int(info.ssi_signo), listener);
        }
        listener.tick();
    }
}

void Interruption::take(int signal, const Listener &listener)
{
    if (signal == SIGWINCH) {
        return;
    }
    if (m_signal != 0) {
        _exit(exitStatus(signal));
    }
    m_signal = signal;
    listener.stop();
}

} // namespace ko::exporter
