#pragma once

#include "imagefx/model/ImageEffect.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QPointer>
#include <QtCore/QString>
#include <QtCore/QTemporaryFile>
#include <QtCore/QUrl>

class QProcess;

namespace ko
{
class GetRequest;
}

namespace ko::imagefx
{

class ImageEffectExporter;

// The file name of the program that exports; it lies in the application's folder.
extern QString exportProgramName;

// One export: a download, where the source is not a local file, and a run of the program. Its
// temporary files go with it. GUI thread.
class ExportJob : public QObject
{
    Q_OBJECT

public:
    enum State {
        New = 0,
        Downloading = 1,
        Exporting = 2,
        Finished = 3,
        Failed = 4,
    };

    // Writes the effects down at once, so that later changes do not matter.
    ExportJob(const QUrl &source, const QList<ImageEffect *> &effects, const QUrl &target,
              ImageEffectExporter *exporter);
    // Ends download and program, and waits for the latter.
    ~ExportJob() override;

    State state() const { return m_state; }
    bool isOver() const { return m_state == Finished || m_state == Failed; }
    // After a download the URL of the local copy.
    QUrl source() const { return m_source; }
    QUrl target() const { return m_target; }

    // Starts the job, unless it failed already.
    void start();
    // Asks the program to end and says nothing more. Does not wait: the program's time to end by
    // itself runs from here.
    void cancel();

private Q_SLOTS:
    void finishedExport();
    void finishedDownload();

private:
    void writeEffects(const QList<ImageEffect *> &effects);
    void download();
    void runProgram();

    State m_state = New;
    QUrl m_source;
    const QUrl m_target;
    QTemporaryFile *const m_effectsFile;
    QProcess *m_process = nullptr;
    QDeadlineTimer m_deadline = QDeadlineTimer::Forever;
    QPointer<GetRequest> m_request;
    QTemporaryFile *m_downloadFile = nullptr;
};

} // namespace ko::imagefx
