#include "exporter/ExitCode.h"

namespace ko::exporter
{

const std::vector<ExitCodeMeaning> &exitCodeMeanings()
{
    static const std::vector<ExitCodeMeaning> meanings{
        {ExitCode::Success, "everything is done: every target is complete"},
        {ExitCode::Usage, "missing, unknown, repeated or contradictory option"},
        {ExitCode::SourceMissing, "the source does not exist"},
        {ExitCode::SourceUnreadable, "the source cannot be read"},
        {ExitCode::SourceNotAPicture, "the source is not a picture, or it is damaged"},
        {ExitCode::EffectsUnreadable, "the effects file is missing or cannot be read"},
        {ExitCode::EffectsInvalid, "the effects file is not a JSON array"},
        {ExitCode::EffectsNotExact, "an effect cannot be applied as written (with --strict)"},
        {ExitCode::TargetFormatUnknown, "the target's suffix names no known picture format"},
        {ExitCode::TargetFolder, "the target's folder is missing or not writable"},
        {ExitCode::TargetWrite, "the target cannot be encoded or written, as on a full disk"},
        {ExitCode::NoOpenGl, "OpenGL is not available"},
        {ExitCode::PictureTooLarge, "the picture is larger than --max-pixels or OpenGL's limit"},
        {ExitCode::RenderingFailed, "rendering failed, mostly for lack of memory"},
        {ExitCode::EffectsTooLarge, "the effects file is too large or holds too many effects"},
        {ExitCode::CheckFoundMistakes, "--check found mistakes"},
        {ExitCode::SomeFailed, "some of the pictures failed, the others are done"},
        {ExitCode::TargetsClash, "two pictures would become one target; nothing was done"},
        {ExitCode::NothingToDo, "there is no picture below the arguments"},
        {ExitCode::Interrupted, "ended by Ctrl-C, as 143 by SIGTERM; what is written is complete"},
    };
    return meanings;
}

QString exitCodeTable()
{
    QString table;
    for (const ExitCodeMeaning &meaning : exitCodeMeanings()) {
        table +=
            QStringLiteral("  %1  %2\n").arg(int(meaning.code), 2).arg(QLatin1String(meaning.text));
    }
    return table;
}

} // namespace ko::exporter
