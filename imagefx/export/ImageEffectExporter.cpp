#include "imagefx/export/ImageEffectExporter.h"

#include "imagefx/export/ExportJob.h"
#include "imagefx/model/ListGuard.h"

#include <QtCore/QDir>
#include <QtCore/QPointer>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTimer>
#include <QtCore/QUuid>

#include <array>

namespace ko::imagefx
{

namespace
{

constexpr int tickInterval = 100; // ms
constexpr int nameLength = 20;    // of a UUID's characters, behind the brace

} // namespace

class ImageEffectExporter::Private
{
public:
    explicit Private(ImageEffectExporter *exporter) : q(exporter), timer(new QTimer(exporter)) {}

    static Private &of(const QQmlListProperty<ImageEffect> *list)
    {
        return *static_cast<ImageEffectExporter *>(list->object)->d;
    }

    void append(ImageEffect *effect);
    void clear();
    QUrl temporaryTarget(const QString &fileExt) const;
    void report(const ExportJob &job) const;

    ImageEffectExporter *const q;
    QUrl source;
    QList<ImageEffect *> imageEffects;
    QList<ExportJob *> queue;
    std::array<ExportJob *, 4> active{};
    QTimer *const timer;
    const QTemporaryDir tempDir;
    ListGuard guard;
};

void ImageEffectExporter::Private::append(ImageEffect *effect)
{
    if (effect == nullptr) {
        return;
    }
    imageEffects.append(effect);
    guard.watch(effect);
    Q_EMIT q->imageEffectsChanged();
}

void ImageEffectExporter::Private::clear()
{
    if (imageEffects.isEmpty()) {
        return;
    }
    imageEffects.clear();
    Q_EMIT q->imageEffectsChanged();
}

QUrl ImageEffectExporter::Private::temporaryTarget(const QString &fileExt) const
{
    const QString name = QUuid::createUuid().toString().mid(1, nameLength);
    return QUrl::fromLocalFile(
        QDir(tempDir.path()).absoluteFilePath(name + QLatin1Char('.') + fileExt));
}

void ImageEffectExporter::Private::report(const ExportJob &job) const
{
    if (job.state() == ExportJob::Finished) {
        Q_EMIT q->exportFinished(job.source(), job.target());
    } else {
        Q_EMIT q->exportFailed(job.source(), job.target());
    }
}

ImageEffectExporter::ImageEffectExporter(QObject *parent)
    : QObject(parent), d(std::make_unique<Private>(this))
{
    d->timer->setInterval(tickInterval);
    connect(d->timer, &QTimer::timeout, this, &ImageEffectExporter::processQueue);
    connect(&d->guard, &ListGuard::objectDestroyed, this,
            [this](QObject *effect) { removeDestroyed(d->imageEffects, effect); });
}

// All programs are asked to end before any of them is waited for.
ImageEffectExporter::~ImageEffectExporter()
{
    const QList<ExportJob *> jobs =
        findChildren<ExportJob *>(QString(), Qt::FindDirectChildrenOnly);
    for (ExportJob *job : jobs) {
        job->cancel();
    }
    qDeleteAll(jobs);
}

QUrl ImageEffectExporter::source() const
{
    return d->source;
}

void ImageEffectExporter::setSource(const QUrl &source)
{
    if (d->source == source) {
        return;
    }
    d->source = source;
    Q_EMIT sourceChanged();
}

QQmlListProperty<ImageEffect> ImageEffectExporter::imageEffects()
{
    using List = QQmlListProperty<ImageEffect>;
    return {
        this,
        nullptr,
        [](List *list, ImageEffect *effect) { Private::of(list).append(effect); },
        [](List *list) { return Private::of(list).imageEffects.size(); },
        [](List *list, int index) { return Private::of(list).imageEffects.value(index, nullptr); },
        [](List *list) { Private::of(list).clear(); }};
}

void ImageEffectExporter::exportToFile(const QUrl &url, const QString &fileExt)
{
    const QUrl target = url.isEmpty() ? d->temporaryTarget(fileExt) : url;
    d->queue.append(new ExportJob(d->source, d->imageEffects, target, this));
    if (!d->timer->isActive()) {
        d->timer->start();
    }
}

void ImageEffectExporter::exportToFile(const QUrl &url)
{
    exportToFile(url, QStringLiteral("jpg"));
}

void ImageEffectExporter::exportToFile()
{
    exportToFile(QUrl());
}

void ImageEffectExporter::processQueue()
{
    bool busy = false;
    const QPointer<ImageEffectExporter> self(this);
    for (ExportJob *&slot : d->active) {
        if (slot != nullptr && slot->isOver()) {
            // The place is free before anyone hears of it: a listener that runs an event loop of
            // its own must not meet the job a second time.
            ExportJob *job = slot;
            slot = nullptr;
            job->deleteLater();
            d->report(*job);
            if (!self) {
                return;
            }
        }
        busy = busy || slot != nullptr;
    }
    for (ExportJob *&slot : d->active) {
        if (d->queue.isEmpty()) {
            if (!busy) {
                d->timer->stop();
            }
            return;
        }
        busy = true;
        if (slot == nullptr) {
            slot = d->queue.takeFirst();
            slot->start();
        }
    }
}

} // namespace ko::imagefx
