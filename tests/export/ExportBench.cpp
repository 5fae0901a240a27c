#include "tests/export/ExportBench.h"

#include "imagefx/RegisterQml.h"
#include "imagefx/export/ExportJob.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QLoggingCategory>
#include <QtCore/QMutex>
#include <QtCore/QProcess>
#include <QtCore/QSet>
#include <QtCore/QTimer>
#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>
#include <QtTest/QTest>

#include <csignal>

namespace ko::imagefx::test
{

namespace
{

QMutex messageMutex;
QVector<MessageLog::Message> messages;
QtMessageHandler previousHandler = nullptr;

void collect(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (qstrcmp(context.category, "korvel.imageeffect") == 0) {
        const QMutexLocker lock(&messageMutex);
        messages.append({type, text});
    }
    if (previousHandler != nullptr) {
        previousHandler(type, context, text);
    }
}

std::unique_ptr<ImageEffectExporter> createInQml(QQmlEngine *engine)
{
    static const bool once = [] {
        imagefx_register_qml("Korvel.ImageFx");
        return true;
    }();
    Q_UNUSED(once)
    QQmlComponent component(engine);
    component.setData("import Korvel.ImageFx 1.0\nImageEffectExporter {}", QUrl());
    return std::unique_ptr<ImageEffectExporter>(
        qobject_cast<ImageEffectExporter *>(component.create()));
}

} // namespace

MessageLog::MessageLog(bool withDebug)
{
    messages.clear();
    if (withDebug) {
        QLoggingCategory::setFilterRules(QStringLiteral("korvel.imageeffect.debug=true"));
    }
    previousHandler = qInstallMessageHandler(collect);
}

MessageLog::~MessageLog()
{
    qInstallMessageHandler(previousHandler);
    previousHandler = nullptr;
    QLoggingCategory::setFilterRules(QString());
}

int MessageLog::count()
{
    const QMutexLocker lock(&messageMutex);
    return messages.size();
}

QStringList MessageLog::texts(QtMsgType type)
{
    const QMutexLocker lock(&messageMutex);
    QStringList texts;
    for (const Message &message : qAsConst(messages)) {
        if (message.type == type) {
            texts.append(message.text);
        }
    }
    return texts;
}

ExportBench::ExportBench(Maker maker, const char *program)
    : m_formerFolder(qgetenv("TMPDIR")), m_formerProgram(exportProgramName)
{
    for (const char *name : {"tmp", "targets", "scripts", "gates"}) {
        QDir(m_folder.path()).mkdir(QLatin1String(name));
    }
    qputenv("TMPDIR", QFile::encodeName(path(QStringLiteral("tmp"))));
    qputenv("KORVEL_STANDIN_LOG", QFile::encodeName(path(QStringLiteral("notes"))));
    exportProgramName = QLatin1String(program);
    if (maker == Maker::QmlEngine) {
        m_engine = std::make_unique<QQmlEngine>();
        m_exporter = createInQml(m_engine.get());
    } else {
        m_exporter = std::make_unique<ImageEffectExporter>();
    }
    listen();
}

ExportBench::~ExportBench()
{
    m_exporter.reset();
    m_engine.reset();
    exportProgramName = m_formerProgram;
    if (m_formerFolder.isEmpty()) {
        qunsetenv("TMPDIR");
    } else {
        qputenv("TMPDIR", m_formerFolder);
    }
}

void ExportBench::deleteEngine()
{
    m_engine.reset();
}

void ExportBench::listen()
{
    QObject::connect(m_exporter.get(), &ImageEffectExporter::exportFinished,
                     [this](const QUrl &source, const QUrl &target) {
                         m_reports.append({true, source, target});
                     });
    QObject::connect(m_exporter.get(), &ImageEffectExporter::exportFailed,
                     [this](const QUrl &source, const QUrl &target) {
                         m_reports.append({false, source, target});
                     });
}

QUrl ExportBench::write(const QString &name, const QByteArray &content) const
{
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("%s cannot be written", qPrintable(file.fileName()));
    }
    return QUrl::fromLocalFile(file.fileName());
}

QByteArray ExportBench::read(const QString &name) const
{
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void ExportBench::start(const QString &name, const QByteArray &instructions)
{
    exporter()->setSource(write(QStringLiteral("scripts/%1").arg(m_scripts++), instructions));
    exporter()->exportToFile(target(name));
}

QByteArray ExportBench::untilOpen(const QString &gate) const
{
    return "wait " + QFile::encodeName(path(QStringLiteral("gates/") + gate)) + '\n';
}

QStringList ExportBench::reported() const
{
    QStringList names;
    for (const Report &report : m_reports) {
        names.append(report.name());
    }
    return names;
}

bool ExportBench::waitForReports(int count) const
{
    return QTest::qWaitFor([=] { return m_reports.size() >= count; }, patience);
}

QVector<StandinNote> ExportBench::notes(const QString &event) const
{
    QVector<StandinNote> notes;
    const QStringList lines = QString::fromLocal8Bit(read(QStringLiteral("notes")))
                                  .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        const QStringList fields = line.split(QLatin1Char('\t'));
        if (fields.size() == 4 && fields.first() == event) {
            notes.append(
                {event, fields.at(1).toLongLong(), fields.at(2).toLongLong(), fields.at(3)});
        }
    }
    return notes;
}

QStringList ExportBench::noted(const QString &event) const
{
    QStringList names;
    for (const StandinNote &note : notes(event)) {
        names.append(note.text.section(QLatin1Char('/'), -1));
    }
    return names;
}

bool ExportBench::waitForNotes(const QString &event, int count) const
{
    return QTest::qWaitFor([&] { return notes(event).size() >= count; }, patience);
}

QTimer *ExportBench::timer() const
{
    return m_exporter->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
}

int ExportBench::running() const
{
    int count = 0;
    const auto processes = m_exporter->findChildren<QProcess *>();
    for (const QProcess *process : processes) {
        count += process->state() != QProcess::NotRunning ? 1 : 0;
    }
    return count;
}

int ExportBench::alive() const
{
    int count = 0;
    for (const StandinNote &note : notes(QStringLiteral("start"))) {
        count += ::kill(pid_t(note.pid), 0) == 0 ? 1 : 0;
    }
    return count;
}

QStringList ExportBench::filesBelow(const QString &name) const
{
    QStringList files;
    QDirIterator iterator(path(name),
                          QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                          QDirIterator::Subdirectories);
    while (iterator.hasNext()) {
        iterator.next();
        files.append(iterator.fileName());
    }
    files.sort();
    return files;
}

} // namespace ko::imagefx::test
