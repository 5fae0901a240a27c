#pragma once

#include "core/RenderScope.h"
#include "imagefx/model/ListGuard.h"
#include "imagefx/quick/PixelBuffer.h"

#include <QtCore/QMetaObject>
#include <QtCore/QPointer>
#include <QtCore/QTimer>

namespace ko::imagefx
{

// The item's data. The renderer reads it, and keeps its connections in it, while the GUI thread is
// blocked.
class PixelBuffer::Private
{
public:
    explicit Private(PixelBuffer *item) : q(item) {}

    static PixelBuffer *itemOf(const QQmlListProperty<ImageEffect> *list)
    {
        return static_cast<PixelBuffer *>(list->object);
    }

    void updateUnlessFrozen() const;
    void forgetEffect(const QObject *effect);
    // Of the framebuffer: the item's size, in the device pixels of its render scope.
    QSize renderSize() const;
    QSize itemSize() const { return {int(q->width()), int(q->height())}; }

    PixelBuffer *const q;
    bool frozen = false;
    bool imageEffectsEnabled = true;
    float imageEffectAlpha = 1.0F;
    QTimer *updateTimer = nullptr;
    QPointer<QQuickItem> sourceItem;
    QRectF sourceRect;
    QSize referenceSize;
    QMetaObject::Connection sourceConnection;
    QList<ImageEffect *> imageEffects;
    QPointer<ImageEffect> maskViewLayer;
    QPointer<QQuickItem> mask;
    QMetaObject::Connection maskConnection;
    QPointer<RenderScope> renderScope;
    ListGuard guard;
};

} // namespace ko::imagefx
