#include "exporter/OptionTable.h"

#include <algorithm>

namespace ko::exporter
{

namespace
{

using Kind = Option::Kind;
using Value = Option::Value;

std::vector<OptionGroup> makeGroups()
{
    return {
        {"One picture",
         {
             {"--source", Value::Required, "FILE", Kind::File,
              "the picture: JPEG, PNG, WebP, TIFF or BMP, told by its content",
              "The picture is turned upright as its EXIF orientation tells. Sources with 16 bits "
              "a channel are taken; effects compute with 8."},
             {"--target", Value::Required, "FILE", Kind::File,
              "where the result goes; its suffix chooses the format: jpg, jpeg, png, webp, tif, "
              "tiff or bmp, in either case. The file appears complete or not at all, and may be "
              "the source itself",
              ""},
         }},
        {"Many pictures",
         {
             {"--target-dir", Value::Required, "DIR", Kind::Folder,
              "where the results go. Every picture below the folders that are named becomes one "
              "target, in the same folder structure",
              "As with rsync, FILE becomes DIR/FILE, FOLDER becomes DIR/FOLDER, and FOLDER/ with a "
              "slash only what is below it. "
              "Two pictures that would become one target are refused before any work. A picture "
              "that fails is reported with its reason, and the others go on."},
             {"--suffix", Value::Required, "SUFFIX", Kind::Text,
              "the suffix of every target, as jpg; without it each target has that of --format or "
              "of "
              "its source",
              ""},
             {"--skip-existing", Value::None, "", Kind::None,
              "leave targets alone that exist, as to go on after an interrupted run",
              "Targets appear complete or not at all, so one that exists is finished."},
             {"--progress", Value::Required, "bar|json|none", Kind::Choice,
              "how to tell how far it is: a bar, one line of JSON for each event, or nothing "
              "(default: a bar when standard error is a terminal)",
              "With json every line on standard output is an object with the key \"event\": start, "
              "done, failed, skipped or end. Programs should pass over events and keys that they "
              "do not know."},
         }},
        {"Effects",
         {
             {"--effects", Value::Required, "FILE", Kind::File,
              "the stack, a JSON array of effects; an empty one copies",
              "Relative file URLs in the stack, as those of lookup tables, are taken relative to "
              "this file. A file beyond 64 MiB, or with more than 1,000 effects, is refused."},
             {"--strict", Value::None, "", Kind::None,
              "refuse a stack with anything that would be left out or read differently, which is "
              "all that --check reports",
              "Without it what cannot be drawn is left out with a warning, and the rest, as a "
              "value that is clamped, is read as well as it can be."},
             {"--check", Value::None, "", Kind::None,
              "read the stacks that are named, or that of --effects, and report every mistake "
              "with its place; renders nothing",
              "Reports unknown keys and kinds, values of a wrong type, values that would be "
              "clamped, unknown enumerators, and lookup tables that cannot be loaded, one a line: "
              "FILE:LINE:COLUMN: PATH: MISTAKE. Exits with 16 when there are any."},
             {"--list-effects", Value::Optional, "text|json", Kind::Choice,
              "print every kind of effect with its properties, their types, ranges and defaults",
              ""},
         }},
        {"Result",
         {
             {"--format", Value::Required, "jpg|png|webp|tif|bmp", Kind::Choice,
              "the format, whatever the target's suffix is", ""},
             {"--quality", Value::Required, "N", Kind::Text,
              "1 to 100, for JPEG and WebP (default 92)", ""},
             {"--max-size", Value::Required, "WxH", Kind::Text,
              "make the picture fit into W x H pixels; never enlarges",
              "Effects look as on the full picture: lengths in pixels, as the radius of a blur, "
              "shrink with it."},
             {"--background", Value::Required, "COLOUR", Kind::Text,
              "what a translucent picture is laid over in JPEG and BMP: a name, as white (the "
              "default), or #RRGGBB",
              ""},
             {"--keep", Value::Required, "all|icc|none", Kind::Choice,
              "what of the source's metadata the target has: EXIF, IPTC, XMP and the colour "
              "profile (all, the default), only the profile, or nothing",
              "The orientation is set to normal, since it was applied; a stale thumbnail is "
              "dropped, and the pixel dimensions are updated. BMP holds no metadata."},
         }},
        {"General",
         {
             {"--engine", Value::Required, "auto|gl|cpu", Kind::Choice,
              "what draws the effects: OpenGL, or the processor alone, which needs neither a "
              "graphics card nor a display and knows no limit on a picture's sides. Without it, or "
              "with auto, OpenGL draws where there is graphics hardware, else the processor",
              "Their results are seldom more than one of the 256 levels of a channel apart. auto "
              "looks for the device of a graphics card first, and asks OpenGL for what draws only "
              "when there is one: a software renderer is never used. OpenGL also draws, with "
              "auto, what the processor cannot. --verbose tells what drew."},
             {"--threads", Value::Required, "N", Kind::Text,
              "how many processor cores to use, 1 to 256 (default: all that the process may use)",
              "One picture that the processor draws is worked on by that many threads. Of many "
              "pictures that many are worked on at a time. With more than one, a JPEG is decoded "
              "and encoded by threads of their own meanwhile, so a picture may take two cores "
              "more; to keep it to some for certain, start the program with taskset."},
             {"--max-pixels", Value::Required, "N", Kind::Text,
              "refuse larger pictures before they are decoded (default 300000000)", ""},
             {"--verbose", Value::None, "", Kind::None,
              "tell on standard error what is done and what a reader may not expect", ""},
             {"-platform", Value::NextArgument, "NAME", Kind::Text,
              "the Qt platform plug-in that provides OpenGL, which then draws; without it the tool "
              "needs no display and ignores QT_QPA_PLATFORM",
              ""},
             {"--", Value::None, "", Kind::None,
              "what follows are names, also those that begin with a dash", ""},
             {"--help", Value::None, "", Kind::None, "print this text", ""},
             {"--version", Value::None, "", Kind::None, "print the version", ""},
         }},
    };
}

// How many letters have to be added, removed, exchanged or swapped with their neighbour.
int distance(const QString &a, const QString &b)
{
    std::vector<std::vector<int>> d(size_t(a.size()) + 1,
                                    std::vector<int>(size_t(b.size()) + 1, 0));
    for (size_t i = 0; i < d.size(); ++i) {
        for (size_t k = 0; k < d[i].size(); ++k) {
            if (i == 0 || k == 0) {
                d[i][k] = int(i + k);
                continue;
            }
            const QChar left = a.at(int(i) - 1);
            const QChar right = b.at(int(k) - 1);
            d[i][k] = std::min(
                {d[i - 1][k] + 1, d[i][k - 1] + 1, d[i - 1][k - 1] + (left == right ? 0 : 1)});
            if (i > 1 && k > 1 && left == b.at(int(k) - 2) && a.at(int(i) - 2) == right) {
                d[i][k] = std::min(d[i][k], d[i - 2][k - 2] + 1);
            }
        }
    }
    return d.back().back();
}

} // namespace

QStringList Option::choices() const
{
    return kind == Kind::Choice ? QString::fromLatin1(placeholder).split(QLatin1Char('|'))
                                : QStringList();
}

QString Option::usage() const
{
    QString option = QString::fromLatin1(name);
    const QString text = QString::fromLatin1(placeholder);
    switch (value) {
    case Value::None:
        break;
    case Value::Required:
        return option + QLatin1Char('=') + text;
    case Value::Optional:
        return option + QStringLiteral("[=%1]").arg(text);
    case Value::NextArgument:
        return option + QLatin1Char(' ') + text;
    }
    return option;
}

const std::vector<OptionGroup> &optionGroups()
{
    static const std::vector<OptionGroup> groups = makeGroups();
    return groups;
}

const Option *findOption(const QString &name)
{
    for (const OptionGroup &group : optionGroups()) {
        for (const Option &option : group.options) {
            if (name == QLatin1String(option.name)) {
                return &option;
            }
        }
    }
    return nullptr;
}

QString nearestOption(const QString &unknown)
{
    QStringList names;
    for (const OptionGroup &group : optionGroups()) {
        for (const Option &option : group.options) {
            if (qstrlen(option.name) > 2) {
                names.append(QString::fromLatin1(option.name));
            }
        }
    }
    return nearestWord(unknown, names);
}

QString nearestWord(const QString &unknown, const QStringList &words)
{
    constexpr int longestWord = 64;
    if (unknown.size() > longestWord) {
        return {};
    }
    const QString lower = unknown.toLower();
    QString nearest;
    int least = std::max(1, int(unknown.size()) / 3) + 1;
    for (const QString &word : words) {
        // A beginning that is written out far enough is as good as one mistake.
        const bool beginning = lower.size() > 3 && word.toLower().startsWith(lower);
        const int mistakes = beginning ? 1 : distance(lower, word.toLower());
        if (mistakes < least) {
            least = mistakes;
            nearest = word;
        }
    }
    return nearest;
}

} // namespace ko::exporter
