#pragma once

#include "imagefx/model/ImageEffect.h"

namespace ko::imagefx
{

// A list of effects as one effect: they are applied in order to a copy of the picture, and the
// result has one opacity, one mask and one blend mode. Neutral when the list is empty. Costs two
// copies of the picture besides its effects.
class KORVELIMAGEFX_EXPORT BatchImageEffect : public ImageEffect
{
    Q_OBJECT
    // The nested effects, not owned. A change of an effect that was appended here changes the
    // batch. Null and whatever would make the batch hold itself are left out, here and below.
    Q_PROPERTY(QQmlListProperty<ko::imagefx::ImageEffect> imageEffects READ imageEffects NOTIFY
                   imageEffectsChanged)

public:
    explicit BatchImageEffect(QObject *parent = nullptr);
    ~BatchImageEffect() override;

    QQmlListProperty<ImageEffect> imageEffects();
    QList<ImageEffect *> imageEffectList() const;
    // Unlike the list property this does not listen to the effects: their changes show when
    // something else changes the batch.
    void setImageEffectList(const QList<ImageEffect *> &effects);

    bool isNeutral() const override;

Q_SIGNALS:
    void imageEffectsChanged();

protected:
    ImageEffectState *createState() const override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
