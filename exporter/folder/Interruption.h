#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

namespace ko::exporter
{

// Listens to the signals that end a program (SIGINT, SIGTERM, SIGHUP) and to the terminal's change
// of size, on a thread of its own, so that what follows from one may lock and write. A second one
// of those that end the program ends it at once, with 128 plus the signal's number. A signal that
// was ignored when the program began stays so.
//
// From its beginning on, and for good, no thread gets these signals otherwise; so it is to be made,
// once, on the main thread, before there is any other.
class Interruption
{
public:
    struct Listener {
        // Called once, by the first signal that ends the program.
        std::function<void()> stop;
        // Called some times a second, and at once when the terminal changes its size.
        std::function<void()> tick;
    };

    Interruption();
    ~Interruption();

    // To be called once; calls the listener's functions from another thread until finish().
    void listen(const Listener &listener);
    // From here on signals change nothing: the program is about to end.
    void finish();
    // What a program that a signal ended exits with.
    static int exitStatus(int signal);

    // The first signal that ends the program; 0: there was none.
    int signalNumber() const { return m_signal; }

private:
    Interruption(const Interruption &) = delete;
    Interruption &operator=(const Interruption &) = delete;

    void wait(const Listener &listener);
    void take(int signal, const Listener &listener);

    int m_signals = -1;
    int m_end = -1;
    std::atomic<int> m_signal{0};
    std::thread m_thread;
};

} // namespace ko::exporter
