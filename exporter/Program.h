#pragma once

namespace ko::exporter
{

// The whole program: reads the command line, exports, reports on standard error in lines that begin
// with the program's name, and returns the exit code. To be called once, on the main thread, before
// any QCoreApplication exists.
int runProgram(int argc, char *argv[]);

} // namespace ko::exporter
