#pragma once

namespace ko::exporter
{

class CommandLine;

// Exports every picture below the inputs of the command line into its target folder, through one
// stack and one engine; reports as docs/many-pictures.md tells. Returns the exit status. To be
// called once, on the main thread, before any other thread exists.
int exportFolder(const CommandLine &commandLine);

} // namespace ko::exporter
