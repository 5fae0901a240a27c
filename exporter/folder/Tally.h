#pragma once

namespace ko::exporter
{

// How far a run over many pictures is.
struct Tally {
    int total = 0;
    int done = 0;
    int failed = 0;
    // Left alone, since their targets exist.
    int skipped = 0;

    int over() const { return done + failed + skipped; }
};

} // namespace ko::exporter
