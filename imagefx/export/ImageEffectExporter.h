#pragma once

#include "imagefx/Export.h"
#include "imagefx/model/ImageEffect.h"

#include <QtCore/QUrl>
#include <QtQml/QQmlListProperty>

#include <memory>

namespace ko::imagefx
{

// Writes a picture with a list of effects applied to a file, at full resolution and outside the
// application's process: each export runs the program "korvel-image-exporter", which has to lie
// beside the application's own. At most four run at a time, the others wait in order, and none
// starts before the event loop has run for 100 ms. Lives on the GUI thread.
//
// A program that is missing or cannot be started reports nothing, and its export keeps one of the
// four places: switch on the debug messages of the category "korvel.imageeffect" to read of it.
class KORVELIMAGEFX_EXPORT ImageEffectExporter : public QObject
{
    Q_OBJECT
    // The picture to export. A local file is read as it is; anything else is downloaded first
    // through the network access of the exporter's QML engine, without which it fails.
    Q_PROPERTY(QUrl source READ source WRITE setSource NOTIFY sourceChanged)
    // The effects in drawing order, not owned. Null is left out; one that is destroyed leaves.
    Q_PROPERTY(QQmlListProperty<ko::imagefx::ImageEffect> imageEffects READ imageEffects NOTIFY
                   imageEffectsChanged)

public:
    explicit ImageEffectExporter(QObject *parent = nullptr);
    // Ends the exports that run or wait, without a signal, and deletes what exportToFile() without
    // a target has written.
    ~ImageEffectExporter() override;

    QUrl source() const;
    void setSource(const QUrl &source);

    QQmlListProperty<ImageEffect> imageEffects();

public Q_SLOTS:
    // Exports source and effects as they are now to the local file `url`, whose suffix is the
    // format. An empty `url` means a file of its own name in a temporary folder that goes with the
    // exporter, with the suffix `fileExt`: copy it in time.
    void exportToFile(const QUrl &url, const QString &fileExt);
    void exportToFile(const QUrl &url);
    void exportToFile();

Q_SIGNALS:
    void sourceChanged();
    void imageEffectsChanged();
    // One of the two comes, once, for every export whose program could be started. `source` is the
    // picture that was read: of a remote one the local copy, which is gone soon, or, where the
    // download failed, its URL. While a listener runs an event loop of its own, a dialog's say,
    // no other export is reported or started. A listener may delete the exporter.
    void exportFinished(const QUrl &source, const QUrl &target);
    void exportFailed(const QUrl &source, const QUrl &target);

private Q_SLOTS:
    void processQueue();

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
