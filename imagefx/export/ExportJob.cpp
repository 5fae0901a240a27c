#include "imagefx/export/ExportJob.h"

#include "core/GetRequest.h"
#include "imagefx/export/ExportStack.h"
#include "imagefx/export/ImageEffectExporter.h"
#include "imagefx/model/Logging.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>
#include <QtQml/QQmlEngine>

namespace ko::imagefx
{

namespace
{

constexpr int patience = 2000; // ms, for a program that was asked to end

} // namespace

QString exportProgramName = QStringLiteral("korvel-image-exporter");

ExportJob::ExportJob(const QUrl &source, const QList<ImageEffect *> &effects, const QUrl &target,
                     ImageEffectExporter *exporter)
    : QObject(exporter), m_source(source), m_target(target), m_effectsFile(new QTemporaryFile(this))
{
    writeEffects(effects);
}

ExportJob::~ExportJob()
{
    cancel();
    if (m_process != nullptr && !m_process->waitForFinished(int(m_deadline.remainingTime()))) {
        m_process->kill();
        m_process->waitForFinished();
    }
}

void ExportJob::writeEffects(const QList<ImageEffect *> &effects)
{
    const QByteArray json = QJsonDocument(writeExportStack(effects)).toJson();
    const bool written = m_effectsFile->open() && m_effectsFile->write(json) == json.size() &&
                         m_effectsFile->flush();
    if (!written) {
        qCDebug(lcImageEffect, "Failed to write the effects to %s: %s",
                qUtf8Printable(m_effectsFile->fileName()),
                qUtf8Printable(m_effectsFile->errorString()));
        m_state = Failed;
    }
    // Closing alone keeps the descriptor, of which a long queue would use up all that there are.
    // The file is still removed with the object.
    m_effectsFile->close();
    m_effectsFile->setFileName(m_effectsFile->fileName());
}

void ExportJob::start()
{
    if (m_state != New) {
        return;
    }
    if (m_source.isLocalFile()) {
        runProgram();
    } else {
        download();
    }
}

void ExportJob::cancel()
{
    if (m_request) {
        m_request->disconnect(this);
        delete m_request;
    }
    // A second call must not grant more time.
    if (m_process != nullptr && m_deadline.isForever()) {
        m_deadline.setRemainingTime(patience);
        m_process->disconnect(this);
        // Until the program runs the process is a copy of this one: a handler of the application's
        // would take the signal for one to itself.
        m_process->waitForStarted(patience);
        m_process->terminate();
    }
}

void ExportJob::download()
{
    m_state = Downloading;
    const QQmlEngine *engine = qmlEngine(parent());
    if (engine == nullptr) {
        m_state = Failed;
        return;
    }
    m_request = new GetRequest(QNetworkRequest(m_source), engine->networkAccessManager(), this);
    m_downloadFile = new QTemporaryFile(this);
    if (!m_downloadFile->open()) {
        qCDebug(lcImageEffect, "Failed to write the download: %s",
                qUtf8Printable(m_downloadFile->errorString()));
    }
    m_request->setDataSink(m_downloadFile);
    connect(m_request, &GetRequest::finished, this, &ExportJob::finishedDownload);
}

void ExportJob::finishedDownload()
{
    m_request->deleteLater();
    if (m_request->error() != QNetworkReply::NoError) {
        qCCritical(lcImageEffect, "Failed to download %s with code %d",
                   qUtf8Printable(m_source.toString()), int(m_request->error()));
        qCDebug(lcImageEffect, "%s", qUtf8Printable(m_request->errorString()));
        m_state = Failed;
        return;
    }
    m_source = QUrl::fromLocalFile(m_downloadFile->fileName());
    m_downloadFile->flush();
    m_downloadFile->close();
    runProgram();
}

void ExportJob::runProgram()
{
    m_state = Exporting;
    const QString program =
        QDir(QCoreApplication::applicationDirPath()).absoluteFilePath(exportProgramName);
    const QStringList arguments{QStringLiteral("--source=") + m_source.toLocalFile(),
                                QStringLiteral("--target=") + m_target.toLocalFile(),
                                QStringLiteral("--effects=") + m_effectsFile->fileName()};
    m_process = new QProcess(this);
    connect(m_process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            &ExportJob::finishedExport);
    connect(m_process, &QProcess::errorOccurred, this,
            [this, program](QProcess::ProcessError error) {
                if (error == QProcess::FailedToStart) {
                    qCDebug(lcImageEffect, "Failed to start %s: %s", qUtf8Printable(program),
                            qUtf8Printable(m_process->errorString()));
                }
            });
    m_process->start(program, arguments, QIODevice::ReadWrite);
}

void ExportJob::finishedExport()
{
    if (m_process->exitStatus() == QProcess::CrashExit) {
        qCCritical(lcImageEffect, "Image export failed with error %d: %s", int(m_process->error()),
                   qUtf8Printable(m_process->errorString()));
        m_state = Failed;
    } else if (m_process->exitCode() != 0) {
        qCCritical(lcImageEffect, "Image export failed with code %d", m_process->exitCode());
        qCDebug(lcImageEffect, "%s", m_process->readAllStandardError().trimmed().constData());
        m_state = Failed;
    } else {
        m_state = Finished;
    }
}

} // namespace ko::imagefx
