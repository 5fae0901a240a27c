#include "imagefx/quick/PixelBuffer.h"

#include "imagefx/quick/PixelBufferPrivate.h"
#include "imagefx/quick/PixelBufferRenderer.h"

#include <QtQuick/QSGTexture>
#include <QtQuick/QSGTextureProvider>

namespace ko::imagefx
{

void PixelBuffer::Private::updateUnlessFrozen() const
{
    if (!frozen) {
        q->update();
    }
}

// An effect that QML destroyed leaves at once, so that no frame reads it.
void PixelBuffer::Private::forgetEffect(const QObject *effect)
{
    if (removeDestroyed(imageEffects, effect)) {
        updateUnlessFrozen();
    }
}

QSize PixelBuffer::Private::renderSize() const
{
    return renderScope ? renderScope->adjustedSize(itemSize()) : itemSize();
}

PixelBuffer::PixelBuffer(QQuickItem *parent)
    : QQuickFramebufferObject(parent), d(std::make_unique<Private>(this))
{
    // The renderer decides about the size of its framebuffer, in device pixels that only it knows;
    // following the item as well would throw the picture away at every update.
    setTextureFollowsItemSize(false);
    connect(&d->guard, &ListGuard::objectDestroyed, this,
            [this](QObject *effect) { d->forgetEffect(effect); });
}

PixelBuffer::~PixelBuffer() = default;

QQuickItem *PixelBuffer::sourceItem() const
{
    return d->sourceItem;
}

void PixelBuffer::setSourceItem(QQuickItem *item)
{
    if (d->sourceItem == item) {
        return;
    }
    disconnect(d->sourceConnection);
    d->sourceItem = item;
    Q_EMIT sourceItemChanged();
    d->updateUnlessFrozen();
}

QRectF PixelBuffer::sourceRect() const
{
    return d->sourceRect;
}

void PixelBuffer::setSourceRect(const QRectF &rect)
{
    if (d->sourceRect == rect) {
        return;
    }
    d->sourceRect = rect;
    Q_EMIT sourceRectChanged();
    d->updateUnlessFrozen();
}

QSize PixelBuffer::referenceSize() const
{
    return d->referenceSize;
}

void PixelBuffer::setReferenceSize(const QSize &size)
{
    if (d->referenceSize == size) {
        return;
    }
    d->referenceSize = size;
    Q_EMIT referenceSizeChanged();
    d->updateUnlessFrozen();
}

bool PixelBuffer::frozen() const
{
    return d->frozen;
}

void PixelBuffer::setFrozen(bool frozen)
{
    if (d->frozen == frozen) {
        return;
    }
    d->frozen = frozen;
    Q_EMIT frozenChanged();
    if (!frozen) {
        update();
    }
}

QQmlListProperty<ImageEffect> PixelBuffer::imageEffects()
{
    using List = QQmlListProperty<ImageEffect>;
    return {this,
            nullptr,
            [](List *list, ImageEffect *effect) { Private::itemOf(list)->insertEffect(effect); },
            [](List *list) { return Private::itemOf(list)->d->imageEffects.size(); },
            [](List *list, int index) {
                return Private::itemOf(list)->d->imageEffects.value(index, nullptr);
            },
            [](List *list) { Private::itemOf(list)->clearEffects(); }};
}

ImageEffect *PixelBuffer::maskViewLayer() const
{
    return d->maskViewLayer;
}

// No signal, deliberately: whoever sets the layer knows it, and a refused one shows as null.
void PixelBuffer::setMaskViewLayer(ImageEffect *effect)
{
    if (d->maskViewLayer == effect) {
        return;
    }
    d->maskViewLayer = d->imageEffects.contains(effect) ? effect : nullptr;
    update();
}

bool PixelBuffer::imageEffectsEnabled() const
{
    return d->imageEffectsEnabled;
}

void PixelBuffer::setImageEffectsEnabled(bool enabled)
{
    if (d->imageEffectsEnabled == enabled) {
        return;
    }
    d->imageEffectsEnabled = enabled;
    Q_EMIT imageEffectsEnabledChanged();
    update();
}

float PixelBuffer::imageEffectAlpha() const
{
    return d->imageEffectAlpha;
}

void PixelBuffer::setImageEffectAlpha(float alpha)
{
    const float clamped = qBound(0.0F, alpha, 1.0F);
    if (qFuzzyCompare(d->imageEffectAlpha, clamped)) {
        return;
    }
    d->imageEffectAlpha = clamped;
    Q_EMIT imageEffectAlphaChanged();
    update();
}

QQuickItem *PixelBuffer::mask() const
{
    return d->mask;
}

void PixelBuffer::setMask(QQuickItem *item)
{
    if (d->mask == item) {
        return;
    }
    disconnect(d->maskConnection);
    d->mask = item;
    Q_EMIT maskChanged();
    d->updateUnlessFrozen();
}

void PixelBuffer::freeze()
{
    setFrozen(true);
}

void PixelBuffer::unfreeze()
{
    setFrozen(false);
}

void PixelBuffer::insertEffect(ImageEffect *effect, int index)
{
    if (effect == nullptr) {
        return;
    }
    const int end = d->imageEffects.size();
    d->imageEffects.insert(index < 0 ? end : qMin(index, end), effect);
    d->guard.watch(effect);
    if (effect->enabled()) {
        d->updateUnlessFrozen();
    }
    connect(effect, &ImageEffect::updateRequired, this, &QQuickItem::update);
    Q_EMIT imageEffectsChanged();
}

void PixelBuffer::insertEffect(ImageEffect *effect)
{
    insertEffect(effect, -1);
}

void PixelBuffer::removeEffect(ImageEffect *effect)
{
    const int index = d->imageEffects.indexOf(effect);
    if (index < 0) {
        return;
    }
    effect->disconnect(this);
    d->imageEffects.removeAt(index);
    Q_EMIT imageEffectsChanged();
    d->updateUnlessFrozen();
}

void PixelBuffer::clearEffects()
{
    if (d->imageEffects.isEmpty()) {
        return;
    }
    for (ImageEffect *effect : qAsConst(d->imageEffects)) {
        effect->disconnect(this);
    }
    d->imageEffects.clear();
    d->updateUnlessFrozen();
    Q_EMIT imageEffectsChanged();
}

QQuickFramebufferObject::Renderer *PixelBuffer::createRenderer() const
{
    return new PixelBufferRenderer;
}

QSGTextureProvider *PixelBuffer::textureProvider() const
{
    QSGTextureProvider *provider = QQuickFramebufferObject::textureProvider();
    if (provider != nullptr && provider->texture() != nullptr) {
        provider->texture()->setFiltering(QSGTexture::Linear);
    }
    return provider;
}

void PixelBuffer::componentComplete()
{
    QQuickFramebufferObject::componentComplete();
    d->renderScope = RenderScope::find(this);
    if (d->renderScope) {
        connect(d->renderScope, &RenderScope::pixelRatioChanged, this,
                &PixelBuffer::scheduleUpdate);
    }
}

void PixelBuffer::scheduleUpdate()
{
    if (d->updateTimer == nullptr) {
        d->updateTimer = new QTimer(this);
        d->updateTimer->setSingleShot(true);
        d->updateTimer->setInterval(100);
        connect(d->updateTimer, &QTimer::timeout, this, &QQuickItem::update);
    }
    d->updateTimer->start();
}

} // namespace ko::imagefx
