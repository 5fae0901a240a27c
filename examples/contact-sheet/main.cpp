#include "examples/contact-sheet/CommandLine.h"
#include "examples/contact-sheet/Error.h"
#include "examples/contact-sheet/Look.h"
#include "examples/contact-sheet/OffscreenGl.h"
#include "examples/contact-sheet/Photograph.h"
#include "examples/contact-sheet/Sheet.h"

#include <HeadlessImport.h>

#include <QtCore/QSaveFile>
#include <QtGui/QGuiApplication>

#include <cstdio>

using namespace ko::contactsheet;

namespace
{

// One height for all, so that the strips are even; the longer side of a usual photograph becomes
// 320 to 430 pixels.
constexpr int thumbnailHeight = 320;

Strip strip(const Look &look, const QVector<Photograph> &photographs)
{
    Strip result{look.name(), {}};
    for (const Photograph &photograph : photographs) {
        result.pictures.append(look.apply(photograph));
    }
    return result;
}

// The plain pictures first, to compare with.
Column column(const QString &heading, const std::vector<Look> &looks,
              const QVector<Photograph> &photographs)
{
    Column result{heading, {strip(Look(QStringLiteral("plain"), {}), photographs)}};
    for (const Look &look : looks) {
        result.strips.append(strip(look, photographs));
    }
    return result;
}

void save(const QImage &sheet, const QString &path)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || !sheet.save(&file, "png") || !file.commit()) {
        throw Error{QStringLiteral("%1 cannot be written: %2").arg(path, file.errorString())};
    }
}

void makeSheet(const CommandLine &commandLine)
{
    const OffscreenGl gl;
    const QVector<Photograph> photographs =
        readPhotographs(commandLine.photographs, thumbnailHeight);
    QStringList captions;
    for (const Photograph &photograph : photographs) {
        captions.append(photograph.name);
    }
    const std::vector<Look> stacks = readStacks(commandLine.stacks);
    save(drawSheet(captions, {column(QStringLiteral("Stacks"), stacks, photographs),
                              column(QStringLiteral("Presets"), presets(), photographs)}),
         commandLine.target);
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "headless");
    const QGuiApplication application(argc, argv);
    try {
        makeSheet(CommandLine::parse(QCoreApplication::arguments()));
    } catch (const Error &error) {
        std::fprintf(stderr, "korvel-contact-sheet: %s\n", qPrintable(error.message));
        return error.exitCode;
    }
    return 0;
}
