#include "examples/gallery/ExportFolder.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QStandardPaths>

namespace
{

void removeEmptyFile(const QString &path)
{
    if (QFileInfo(path).size() == 0) {
        QFile::remove(path);
    }
}

} // namespace

ExportFolder::~ExportFolder()
{
    for (const QString &path : qAsConst(m_taken)) {
        removeEmptyFile(path);
    }
}

QString ExportFolder::path()
{
    return QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
}

bool ExportFolder::hasProgram() const
{
    const QDir folder(QCoreApplication::applicationDirPath());
    return QFileInfo(folder.filePath(QStringLiteral("korvel-image-exporter"))).isExecutable();
}

QUrl ExportFolder::take(const QString &name)
{
    QDir().mkpath(path());
    QFile file(QDir(path()).filePath(name + QStringLiteral(".jpg")));
    for (int number = 2; !file.open(QIODevice::NewOnly); ++number) {
        if (!file.exists()) {
            return {};
        }
        file.setFileName(QDir(path()).filePath(QStringLiteral("%1 %2.jpg").arg(name).arg(number)));
    }
    m_taken.append(file.fileName());
    return QUrl::fromLocalFile(file.fileName());
}

void ExportFolder::giveBack(const QUrl &file)
{
    if (m_taken.removeOne(file.toLocalFile())) {
        removeEmptyFile(file.toLocalFile());
    }
}
