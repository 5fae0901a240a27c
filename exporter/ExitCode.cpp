#include "exporter/ExitCode.h"

namespace ko::exporter
{

namespace
{

struct Meaning {
    ExitCode code;
    const char *text;
};

constexpr Meaning meanings[] = {
    {ExitCode::Success, "the target is complete"},
    {ExitCode::Usage, "missing, unknown or repeated option"},
    {ExitCode::SourceMissing, "the source does not exist"},
    {ExitCode::SourceUnreadable, "the source cannot be read"},
    {ExitCode::SourceNotAPicture, "the source is not a picture, or it is damaged"},
    {ExitCode::EffectsUnreadable, "the effects file is missing or cannot be read"},
    {ExitCode::EffectsInvalid, "the effects file is not a JSON array"},
    {ExitCode::EffectsNotExact, "an effect cannot be applied as it is written (with --strict)"},
    {ExitCode::TargetFormatUnknown, "the target's suffix names no known picture format"},
    {ExitCode::TargetFolder, "the target's folder is missing or not writable"},
    {ExitCode::TargetWrite, "the target cannot be encoded or written, as on a full disk"},
    {ExitCode::NoOpenGl, "OpenGL is not available"},
    {ExitCode::PictureTooLarge, "the picture is larger than OpenGL's texture limit"},
    {ExitCode::RenderingFailed, "rendering failed, mostly for lack of memory"},
};

} // namespace

QString exitCodeTable()
{
    QString table;
    for (const Meaning &meaning : meanings) {
        table +=
            QStringLiteral("  %1  %2\n").arg(int(meaning.code), 2).arg(QLatin1String(meaning.text));
    }
    return table;
}

} // namespace ko::exporter
