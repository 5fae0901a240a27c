#include "FolderWorkshop.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>
#include <QtGui/QImageWriter>

#include <algorithm>

FolderWorkshop::FolderWorkshop() : m_before(QDir::currentPath())
{
    QDir::setCurrent(m_folder.path());
    const QJsonArray stack{
        effect(QStringLiteral("ColorFill"), {{QStringLiteral("color"), QStringLiteral("#204060")},
                                             {QStringLiteral("alpha"), 0.5}})};
    write(QStringLiteral("look.json"), QJsonDocument(stack).toJson());
}

FolderWorkshop::~FolderWorkshop()
{
    QDir::setCurrent(m_before);
    // Qt cannot remove names that are not UTF-8.
    m_folder.setAutoRemove(false);
    QProcess::execute(QStringLiteral("rm"), {QStringLiteral("-rf"), m_folder.path()});
}

void FolderWorkshop::picture(const QString &name, const QSize &size) const
{
    makeFolder(QFileInfo(name).path());
    QImageWriter writer(name);
    if (!writer.write(noise(size, QImage::Format_RGB32, qHash(name)))) {
        qFatal("%s cannot be written", qPrintable(name));
    }
}

void FolderWorkshop::write(const QString &name, const QByteArray &content) const
{
    makeFolder(QFileInfo(name).path());
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("%s cannot be written", qPrintable(name));
    }
}

QByteArray FolderWorkshop::read(const QString &name) const
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void FolderWorkshop::makeFolder(const QString &name) const
{
    if (!QDir().mkpath(name)) {
        qFatal("the folder %s cannot be made", qPrintable(name));
    }
}

void FolderWorkshop::link(const QString &target, const QString &name) const
{
    makeFolder(QFileInfo(name).path());
    if (!QFile::link(target, name)) {
        qFatal("the link %s cannot be made", qPrintable(name));
    }
}

QStringList FolderWorkshop::arguments(const QStringList &more)
{
    return QStringList{QStringLiteral("--effects=look.json"), QStringLiteral("--target-dir=out")} +
           more;
}

ToolRun FolderWorkshop::run(const QStringList &more, const Environment &environment)
{
    return runTool(arguments(more), environment);
}

QStringList FolderWorkshop::filesBelow(const QString &folder)
{
    QStringList files;
    QDirIterator entries(folder, QDir::Files | QDir::Hidden | QDir::System,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        files.append(entries.next().mid(folder.size() + 1));
    }
    std::sort(files.begin(), files.end());
    return files;
}

QVector<QJsonObject> events(const QByteArray &output)
{
    QVector<QJsonObject> result;
    const QList<QByteArray> lines = output.split('\n');
    for (const QByteArray &line : lines.mid(0, lines.size() - 1)) {
        result.append(QJsonDocument::fromJson(line).object());
    }
    return result;
}

QVector<QJsonObject> events(const QByteArray &output, const char *kind)
{
    QVector<QJsonObject> all = events(output);
    all.erase(std::remove_if(all.begin(), all.end(),
                             [kind](const QJsonObject &event) {
                                 return event.value(QLatin1String("event")).toString() !=
                                        QLatin1String(kind);
                             }),
              all.end());
    return all;
}

QByteArray lastLine(const QByteArray &text)
{
    const QList<QByteArray> lines = text.split('\n');
    return lines.size() < 2 ? QByteArray() : lines.at(lines.size() - 2);
}
