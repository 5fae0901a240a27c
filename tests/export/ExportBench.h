#pragma once

#include "imagefx/export/ImageEffectExporter.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>
#include <QtCore/QUrl>
#include <QtCore/QVector>

#include <memory>

class QQmlEngine;
class QTimer;

namespace ko::imagefx::test
{

// How long a test waits for what will come, on a machine that does much else.
constexpr int patience = 30000; // ms
// How long it waits to see that nothing comes: several ticks of the exporter.
constexpr int aWhile = 350; // ms
constexpr int slotCount = 4;

// The messages of the category "korvel.imageeffect" while it lives. One at a time.
class MessageLog
{
public:
    struct Message {
        QtMsgType type;
        QString text;
    };

    // Debug messages are off by default, for everyone.
    explicit MessageLog(bool withDebug = false);
    ~MessageLog();

    static QStringList critical() { return texts(QtCriticalMsg); }
    static QStringList debug() { return texts(QtDebugMsg); }
    static int count();

private:
    Q_DISABLE_COPY(MessageLog)

    static QStringList texts(QtMsgType type);
};

// What a signal of the exporter said.
struct Report {
    bool finished = false;
    QUrl source;
    QUrl target;

    QString name() const { return target.fileName(); }
};

// A line that a stand-in for the tool has noted.
struct StandinNote {
    QString event; // "argument", "start", "ready" or "end"
    qint64 pid = 0;
    qint64 time = 0; // in microseconds
    QString text;    // the argument, or the target's path
};

// An exporter at work in folders of its own: for temporary files, which it moves there, and for
// targets. Its tool is the stand-in, whose source files are lists of instructions. One at a time.
class ExportBench
{
public:
    enum class Maker {
        Cpp,
        QmlEngine,
    };
    static constexpr char standin[] = "korvel_standin_exporter";
    static constexpr char tool[] = "korvel-image-exporter";
    // The same, drawing with OpenGL also where there is only a software renderer.
    static constexpr char glTool[] = "korvel_gl_exporter";

    explicit ExportBench(Maker maker = Maker::Cpp, const char *program = standin);
    ~ExportBench();

    ImageEffectExporter *exporter() const { return m_exporter.get(); }
    QQmlEngine *engine() const { return m_engine.get(); }
    void deleteExporter() { m_exporter.reset(); }
    void deleteEngine();
    // For a listener that deletes it itself.
    ImageEffectExporter *releaseExporter() { return m_exporter.release(); }

    // A path below the folder that is the bench's own.
    QString path(const QString &name) const { return m_folder.filePath(name); }
    QUrl url(const QString &name) const { return QUrl::fromLocalFile(path(name)); }
    QUrl target(const QString &name) const { return url(QStringLiteral("targets/") + name); }
    QUrl write(const QString &name, const QByteArray &content) const;
    QByteArray read(const QString &name) const;

    // Exports what the instructions say to a target of that name.
    void start(const QString &name, const QByteArray &instructions = QByteArray());
    // An instruction to wait until open() is called with the same name.
    QByteArray untilOpen(const QString &gate) const;
    void open(const QString &gate) const { write(QStringLiteral("gates/") + gate, QByteArray()); }

    const QVector<Report> &reports() const { return m_reports; }
    QStringList reported() const;
    bool waitForReports(int count) const;

    QVector<StandinNote> notes(const QString &event) const;
    // The names of the targets, in the order of that event.
    QStringList noted(const QString &event) const;
    bool waitForNotes(const QString &event, int count) const;

    QTimer *timer() const;
    // The programs that run now.
    int running() const;
    // Of every program that ever started.
    int alive() const;
    // Files and folders; of an exporter that rests there is one folder.
    QStringList temporaryFiles() const { return filesBelow(QStringLiteral("tmp")); }
    QStringList targets() const { return filesBelow(QStringLiteral("targets")); }

private:
    Q_DISABLE_COPY(ExportBench)

    void listen();
    QStringList filesBelow(const QString &name) const;

    QTemporaryDir m_folder;
    const QByteArray m_formerFolder;
    const QString m_formerProgram;
    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<ImageEffectExporter> m_exporter;
    QVector<Report> m_reports;
    int m_scripts = 0;
};

} // namespace ko::imagefx::test
