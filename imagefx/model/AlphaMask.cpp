#include "imagefx/model/AlphaMask.h"

#include "imagefx/model/ListGuard.h"
#include "imagefx/model/MaskGradient.h"
#include "imagefx/render/AlphaMaskState.h"

#include <QtCore/QPointer>
#include <QtQml/QQmlEngine>

#include <algorithm>

namespace ko::imagefx
{

class AlphaMask::Private
{
public:
    Private(AlphaMask *mask, const QString &id, int flags)
        : q(mask), gradientFlags(flags), maskId(id)
    {
        gradient.fill(255);
    }

    static Private &of(const QQmlListProperty<AlphaGradientStop> *list)
    {
        return *static_cast<AlphaMask *>(list->object)->d;
    }

    using GuardedStops = QList<QPointer<AlphaGradientStop>>;
    static GuardedStops guarded(const QList<AlphaGradientStop *> &stops)
    {
        return {stops.begin(), stops.end()};
    }

    void insertStop(int index, AlphaGradientStop *stop);
    void watchStop(AlphaGradientStop *stop);
    void forgetStop(const QObject *stop);
    void clearStops();
    void rebuildGradient();

    AlphaMask *const q;
    bool dirty = true;
    bool enabled = true;
    const int gradientFlags;
    const QString maskId;
    QList<AlphaGradientStop *> stops;
    QSharedPointer<AlphaMaskState> state;
    QImage gradient{maskGradientSize, 1, QImage::Format_Grayscale8};
    GradientInterpolation interpolation = HermiteInterpolation;
    ListGuard guard;
};

void AlphaMask::Private::insertStop(int index, AlphaGradientStop *stop)
{
    if (stop == nullptr) {
        return;
    }
    stops.insert(index < 0 ? stops.size() : index, stop);
    watchStop(stop);
    Q_EMIT q->gradientStopsChanged();
    Q_EMIT q->updateRequired();
}

void AlphaMask::Private::watchStop(AlphaGradientStop *stop)
{
    connect(stop, &AlphaGradientStop::locationChanged, q, &AlphaMask::updateRequired);
    connect(stop, &AlphaGradientStop::valueChanged, q, &AlphaMask::updateRequired);
    guard.watch(stop);
}

// A stop that QML destroyed leaves at once, so that the next rebuild does not read it.
void AlphaMask::Private::forgetStop(const QObject *stop)
{
    if (removeDestroyed(stops, stop)) {
        Q_EMIT q->updateRequired();
    }
}

void AlphaMask::Private::clearStops()
{
    if (stops.isEmpty()) {
        return;
    }
    for (AlphaGradientStop *stop : qAsConst(stops)) {
        stop->disconnect(q);
    }
    stops.clear();
    Q_EMIT q->gradientStopsChanged();
    Q_EMIT q->updateRequired();
}

void AlphaMask::Private::rebuildGradient()
{
    gradient = q->buildGradient();
    Q_EMIT q->gradientChanged();
}

AlphaMask::AlphaMask(const QString &maskId, int gradientFlags, QObject *parent)
    : QObject(parent), d(std::make_unique<Private>(this, maskId, gradientFlags))
{
    connect(this, &AlphaMask::updateRequired, this, &AlphaMask::markDirty);
    connect(&d->guard, &ListGuard::objectDestroyed, this,
            [this](QObject *stop) { d->forgetStop(stop); });
}

AlphaMask::~AlphaMask() = default;

QString AlphaMask::maskId() const
{
    return d->maskId;
}

bool AlphaMask::enabled() const
{
    return d->enabled;
}

void AlphaMask::setEnabled(bool enabled)
{
    if (d->enabled == enabled) {
        return;
    }
    d->enabled = enabled;
    Q_EMIT enabledChanged();
    Q_EMIT updateRequired();
}

AlphaMask::GradientInterpolation AlphaMask::gradientInterpolation() const
{
    return d->interpolation;
}

void AlphaMask::setGradientInterpolation(GradientInterpolation interpolation)
{
    if (d->interpolation == interpolation) {
        return;
    }
    d->interpolation = interpolation;
    Q_EMIT gradientInterpolationChanged();
    Q_EMIT updateRequired();
}

QQmlListProperty<AlphaGradientStop> AlphaMask::gradientStops()
{
    using List = QQmlListProperty<AlphaGradientStop>;
    return {this,
            nullptr,
            [](List *list, AlphaGradientStop *stop) { Private::of(list).insertStop(-1, stop); },
            [](List *list) { return Private::of(list).stops.size(); },
            [](List *list, int index) { return Private::of(list).stops.value(index, nullptr); },
            [](List *list) { Private::of(list).clearStops(); }};
}

QList<AlphaGradientStop *> AlphaMask::gradientStopList() const
{
    return d->stops;
}

void AlphaMask::setGradientStopList(QList<AlphaGradientStop *> stops)
{
    stops.removeAll(nullptr);
    for (AlphaGradientStop *stop : qAsConst(stops)) {
        stop->setParent(this);
        d->guard.watch(stop);
    }
    // Guarded, since a slot of the signals below may delete a stop or set another list.
    const Private::GuardedStops former = Private::guarded(d->stops);
    const Private::GuardedStops latter = Private::guarded(stops);
    d->stops = std::move(stops);
    Q_EMIT gradientStopsChanged();
    Q_EMIT updateRequired();
    for (AlphaGradientStop *stop : former) {
        if (stop != nullptr) {
            stop->disconnect(this);
            stop->deleteLater();
        }
    }
    for (AlphaGradientStop *stop : latter) {
        if (stop != nullptr) {
            d->watchStop(stop);
        }
    }
}

AlphaGradientStop *AlphaMask::addGradientStop(float position, float value)
{
    auto *stop = new AlphaGradientStop(position, value, this);
    QQmlEngine::setObjectOwnership(stop, QQmlEngine::CppOwnership);
    d->insertStop(-1, stop);
    return stop;
}

void AlphaMask::removeGradientStop(AlphaGradientStop *stop)
{
    if (!d->stops.removeOne(stop)) {
        return;
    }
    stop->disconnect(this);
    Q_EMIT gradientStopsChanged();
    Q_EMIT updateRequired();
}

QImage AlphaMask::gradient() const
{
    return d->gradient;
}

QImage AlphaMask::buildGradient() const
{
    QVector<MaskGradientStop> stops;
    stops.reserve(d->stops.size());
    for (const AlphaGradientStop *stop : qAsConst(d->stops)) {
        stops.append({stop->location(), stop->value()});
    }
    const MaskGradient texels =
        buildMaskGradient(stops, static_cast<MaskGradientFill>(d->interpolation),
                          (d->gradientFlags & CyclicGradient) != 0);
    QImage gradient(maskGradientSize, 1, QImage::Format_Grayscale8);
    std::copy(texels.begin(), texels.end(), gradient.scanLine(0));
    return gradient;
}

float AlphaMask::intensityAtLocation(float location) const
{
    return float(d->gradient.constScanLine(0)[maskGradientIndex(location)]) / 255.0F;
}

QSharedPointer<AlphaMaskState> AlphaMask::currentState() const
{
    if (!d->state) {
        d->state.reset(createState());
    }
    if (d->dirty) {
        d->rebuildGradient();
        d->state->update(this);
        d->dirty = false;
    }
    return d->state;
}

void AlphaMask::markDirty()
{
    d->dirty = true;
}

} // namespace ko::imagefx
