#pragma once

#include <QtCore/QString>

namespace ko::exporter
{

// What the program's exit status tells. The numbers are an interface: scripts compare with them.
// 1 stays unused, since it is what crashed or foreign programs return.
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
};

// One line "  CODE  MEANING" for each code, in ascending order.
QString exitCodeTable();

} // namespace ko::exporter
