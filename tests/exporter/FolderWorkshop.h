#pragma once

#include "ExporterRun.h"

#include <QtCore/QJsonObject>
#include <QtCore/QVector>

// The working folder of one test that exports many pictures, with a stack of one effect that shows,
// "look.json". Names are relative to it. One at a time.
class FolderWorkshop
{
public:
    FolderWorkshop();
    ~FolderWorkshop();

    // A small picture in the format of its suffix, another one for each name; makes its folders.
    void picture(const QString &name, const QSize &size = QSize(24, 16)) const;
    void write(const QString &name, const QByteArray &content) const;
    QByteArray read(const QString &name) const;
    void makeFolder(const QString &name) const;
    void link(const QString &target, const QString &name) const;

    // "--effects=look.json --target-dir=out" and more.
    static QStringList arguments(const QStringList &more);
    static ToolRun run(const QStringList &more, const Environment &environment = {});

    // Every file below a folder, hidden ones too, relative to it and in order.
    static QStringList filesBelow(const QString &folder);
    static QStringList targets() { return filesBelow(QStringLiteral("out")); }

private:
    QTemporaryDir m_folder;
    QString m_before;
};

// The events of a run with --progress=json; a line that is no JSON object becomes an empty one.
QVector<QJsonObject> events(const QByteArray &output);
// Those of one kind.
QVector<QJsonObject> events(const QByteArray &output, const char *kind);
QByteArray lastLine(const QByteArray &text);
