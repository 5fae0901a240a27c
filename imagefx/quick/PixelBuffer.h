#pragma once

#include "imagefx/Export.h"
#include "imagefx/model/ImageEffect.h"

#include <QtCore/QRectF>
#include <QtCore/QSize>
#include <QtQml/QQmlListProperty>
#include <QtQuick/QQuickFramebufferObject>

#include <memory>

namespace ko::imagefx
{

// Shows the texture of another item through a list of effects, live. It owns no OpenGL object: its
// renderer copies the settings while the GUI thread is blocked and draws on the render thread. The
// effects belong to whoever made them; one that dies leaves the list. An effect or a mask may be
// shown by items of several windows.
class KORVELIMAGEFX_EXPORT PixelBuffer : public QQuickFramebufferObject
{
    Q_OBJECT
    // The item whose texture is shown: an Image, or any item with a layer, that has its place in
    // the scene, visible or not. Not owned; default null, which shows nothing.
    Q_PROPERTY(QQuickItem *sourceItem READ sourceItem WRITE setSourceItem NOTIFY sourceItemChanged)
    // The part of the texture that is shown, stretched over the item, in normalised coordinates.
    // Empty, the default: the largest centred part that has the item's aspect ratio.
    Q_PROPERTY(QRectF sourceRect READ sourceRect WRITE setSourceRect NOTIFY sourceRectChanged)
    // The size in pixels of the full picture that the texture stands for, so that a preview shows
    // radii as the export will; under a RenderScope with a ratio above 1 they reach less far, by
    // that ratio. Invalid, the default: that of the texture.
    Q_PROPERTY(
        QSize referenceSize READ referenceSize WRITE setReferenceSize NOTIFY referenceSizeChanged)
    // While true the picture stays as it is. Default false.
    Q_PROPERTY(bool frozen READ frozen WRITE setFrozen NOTIFY frozenChanged)
    // The effects in drawing order.
    Q_PROPERTY(QQmlListProperty<ko::imagefx::ImageEffect> imageEffects READ imageEffects NOTIFY
                   imageEffectsChanged)
    // The listed effect whose mask is shown as a red overlay, most red where the mask lets least
    // through; default null. One that is not listed is refused: the property is null then. Never
    // signals its changes, so bindings that read it do not follow them.
    Q_PROPERTY(ko::imagefx::ImageEffect *maskViewLayer READ maskViewLayer WRITE setMaskViewLayer
                   NOTIFY maskViewLayerChanged)
    // False shows the source without effects, the one side of "before and after". Default true.
    Q_PROPERTY(bool imageEffectsEnabled READ imageEffectsEnabled WRITE setImageEffectsEnabled NOTIFY
                   imageEffectsEnabledChanged)
    // Multiplies the opacity of every effect; 0 to 1, default 1.
    Q_PROPERTY(float imageEffectAlpha READ imageEffectAlpha WRITE setImageEffectAlpha NOTIFY
                   imageEffectAlphaChanged)
    // The item whose texture, stretched over the picture, cuts it: its red channel says how much
    // stays. Not owned; default null, which cuts nothing. The picture stays cut when this becomes
    // null, until the mask item's texture is gone.
    Q_PROPERTY(QQuickItem *mask READ mask WRITE setMask NOTIFY maskChanged)

public:
    explicit PixelBuffer(QQuickItem *parent = nullptr);
    ~PixelBuffer() override;

    QQuickItem *sourceItem() const;
    void setSourceItem(QQuickItem *item);

    QRectF sourceRect() const;
    void setSourceRect(const QRectF &rect);

    QSize referenceSize() const;
    void setReferenceSize(const QSize &size);

    bool frozen() const;
    void setFrozen(bool frozen);

    QQmlListProperty<ImageEffect> imageEffects();

    ImageEffect *maskViewLayer() const;
    void setMaskViewLayer(ImageEffect *effect);

    bool imageEffectsEnabled() const;
    void setImageEffectsEnabled(bool enabled);

    float imageEffectAlpha() const;
    void setImageEffectAlpha(float alpha);

    QQuickItem *mask() const;
    void setMask(QQuickItem *item);

    Q_INVOKABLE void freeze();
    Q_INVOKABLE void unfreeze();

    // Inserts at `index`; negative or past the end appends. Null is ignored. An effect that is
    // inserted twice is drawn twice.
    Q_INVOKABLE void insertEffect(ko::imagefx::ImageEffect *effect, int index);
    Q_INVOKABLE void insertEffect(ko::imagefx::ImageEffect *effect);
    // Takes the first entry of the effect off the list and stops listening to the effect.
    Q_INVOKABLE void removeEffect(ko::imagefx::ImageEffect *effect);
    Q_INVOKABLE void clearEffects();

    Renderer *createRenderer() const override;
    // Sampled by other items, the picture is filtered linearly.
    QSGTextureProvider *textureProvider() const override;

Q_SIGNALS:
    void sourceItemChanged();
    void sourceRectChanged();
    void referenceSizeChanged();
    void frozenChanged();
    void imageEffectsChanged();
    void imageEffectsEnabledChanged();
    void imageEffectAlphaChanged();
    void maskViewLayerChanged(); // never emitted
    void maskChanged();
    void renderScaleChanged(); // never emitted

protected:
    void componentComplete() override;

private Q_SLOTS:
    // One repaint, 100 ms after the last call of a burst.
    void scheduleUpdate();

private:
    friend class PixelBufferRenderer;

    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
