#pragma once

#include <string>

namespace ko::imagefx::benchmarks
{

// What a reader has to know of the machine to compare figures, and who else was using it.
class Machine
{
public:
    // Starts counting processor time.
    Machine();

    // A Markdown list: processor, cores, GL renderer and version, Qt, and how much of the
    // machine's processor time other programs took since construction. Needs a current GL context.
    std::string description() const;

private:
    struct ProcessorTime {
        double total = 0.0; // seconds of all cores together, idle ones included
        double busy = 0.0;
        double stolen = 0.0; // taken by the host of a virtual machine
        double own = 0.0;    // this program and its child processes
    };
    static ProcessorTime processorTime();

    const ProcessorTime m_start;
};

} // namespace ko::imagefx::benchmarks
