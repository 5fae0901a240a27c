#include "imagefx/effects/BatchImageEffect.h"

#include "imagefx/effects/BatchImageEffectState.h"
#include "imagefx/model/ListGuard.h"

#include <algorithm>

namespace ko::imagefx
{

class BatchImageEffect::Private
{
public:
    explicit Private(BatchImageEffect *batch) : q(batch) {}

    static Private &of(const QQmlListProperty<ImageEffect> *list)
    {
        return *static_cast<BatchImageEffect *>(list->object)->d;
    }

    void append(ImageEffect *effect);
    void clear();
    void forget(const QObject *effect);
    bool wouldHoldItself(const ImageEffect *effect) const;

    BatchImageEffect *const q;
    QList<ImageEffect *> effects;
    ListGuard guard;
};

void BatchImageEffect::Private::append(ImageEffect *effect)
{
    if (effect == nullptr || wouldHoldItself(effect)) {
        return;
    }
    effects.append(effect);
    guard.watch(effect);
    connect(effect, &ImageEffect::updateRequired, q, &ImageEffect::updateRequired);
    Q_EMIT q->imageEffectsChanged();
    Q_EMIT q->updateRequired();
}

void BatchImageEffect::Private::clear()
{
    if (effects.isEmpty()) {
        return;
    }
    for (ImageEffect *effect : qAsConst(effects)) {
        effect->disconnect(q);
    }
    effects.clear();
    Q_EMIT q->imageEffectsChanged();
    Q_EMIT q->updateRequired();
}

// An effect that QML destroyed leaves at once, so that no update reads it.
void BatchImageEffect::Private::forget(const QObject *effect)
{
    if (removeDestroyed(effects, effect)) {
        Q_EMIT q->updateRequired();
    }
}

// A batch inside itself, also by way of others, would never end.
bool BatchImageEffect::Private::wouldHoldItself(const ImageEffect *effect) const
{
    if (effect == q) {
        return true;
    }
    const auto *batch = qobject_cast<const BatchImageEffect *>(effect);
    return batch != nullptr &&
           std::any_of(batch->d->effects.begin(), batch->d->effects.end(),
                       [this](const ImageEffect *nested) { return wouldHoldItself(nested); });
}

BatchImageEffect::BatchImageEffect(QObject *parent)
    : ImageEffect(QStringLiteral("ko.orvanto.imageeffect.Batch"), parent),
      d(std::make_unique<Private>(this))
{
    connect(&d->guard, &ListGuard::objectDestroyed, this,
            [this](QObject *effect) { d->forget(effect); });
}

BatchImageEffect::~BatchImageEffect() = default;

QQmlListProperty<ImageEffect> BatchImageEffect::imageEffects()
{
    using List = QQmlListProperty<ImageEffect>;
    return {this,
            nullptr,
            [](List *list, ImageEffect *effect) { Private::of(list).append(effect); },
            [](List *list) { return Private::of(list).effects.size(); },
            [](List *list, int index) { return Private::of(list).effects.value(index, nullptr); },
            [](List *list) { Private::of(list).clear(); }};
}

QList<ImageEffect *> BatchImageEffect::imageEffectList() const
{
    return d->effects;
}

void BatchImageEffect::setImageEffectList(const QList<ImageEffect *> &effects)
{
    if (!effects.isSharedWith(d->effects)) {
        d->effects.clear();
        std::copy_if(effects.begin(), effects.end(), std::back_inserter(d->effects),
                     [this](const ImageEffect *effect) {
                         return effect != nullptr && !d->wouldHoldItself(effect);
                     });
        for (ImageEffect *effect : qAsConst(d->effects)) {
            d->guard.watch(effect);
        }
    }
    Q_EMIT imageEffectsChanged();
    Q_EMIT updateRequired();
}

bool BatchImageEffect::isNeutral() const
{
    return d->effects.isEmpty();
}

ImageEffectState *BatchImageEffect::createState() const
{
    return new BatchImageEffectState;
}

} // namespace ko::imagefx
