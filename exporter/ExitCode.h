#pragma once

#include <QtCore/QString>

#include <vector>

namespace ko::exporter
{

// What the program's exit status tells. The numbers are an interface: scripts compare with them, so
// new ones are appended and old ones stay. 1 stays unused, since it is what crashed or foreign
// programs return.
enum class ExitCode {
    Success = 0,
    Usage = 2,
    SourceMissing = 3,
    SourceUnreadable = 4,
    SourceNotAPicture = 5,
    EffectsUnreadable = 6,
    EffectsInvalid = 7,
    EffectsNotExact = 8,
    TargetFormatUnknown = 9,
    TargetFolder = 10,
    TargetWrite = 11,
    NoOpenGl = 12,
    PictureTooLarge = 13,
    RenderingFailed = 14,
    EffectsTooLarge = 15,
    CheckFoundMistakes = 16,
    SomeFailed = 17,
    TargetsClash = 18,
    NothingToDo = 19,
    Interrupted = 130, // SIGINT; others end with 128 plus their number, too
};

struct ExitCodeMeaning {
    ExitCode code;
    // One line for people, without a full stop.
    const char *text;
};

// In ascending order.
const std::vector<ExitCodeMeaning> &exitCodeMeanings();

// One line "  CODE  MEANING" for each code, in ascending order.
QString exitCodeTable();

} // namespace ko::exporter
