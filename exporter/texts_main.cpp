#include "exporter/Completion.h"
#include "exporter/ManualPage.h"

#include <QtCore/QFile>

#include <cstdio>

namespace
{

bool write(const QString &path, const QByteArray &text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

} // namespace

// Writes the manual page and the completion scripts into a folder, under the names that their
// readers look for. Needs no library but Qt Core, so that a build can run it anywhere.
int main(int argc, char *argv[])
{
    if (argc != 4) {
        std::fputs("Usage: korvel-exporter-texts FOLDER VERSION DATE\n", stderr);
        return 2;
    }
    const QString folder = QFile::decodeName(argv[1]) + QLatin1Char('/');
    const bool written =
        write(folder + QStringLiteral("korvel-image-exporter.1"),
              ko::exporter::manualPage(argv[2], argv[3])) &&
        write(folder + QStringLiteral("korvel-image-exporter"), ko::exporter::bashCompletion()) &&
        write(folder + QStringLiteral("_korvel-image-exporter"), ko::exporter::zshCompletion());
    return written ? 0 : 1;
}
