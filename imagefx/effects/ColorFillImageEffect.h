#pragma once

#include "imagefx/model/ImageEffect.h"

#include <QtGui/QColor>

namespace ko::imagefx
{

// Replaces the colour by one colour. Never neutral; a partial fill comes from the effect's alpha,
// mask and blend mode.
class KORVELIMAGEFX_EXPORT ColorFillImageEffect : public ImageEffect
{
    Q_OBJECT
    // The colour; its alpha is not used. Default red.
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

public:
    explicit ColorFillImageEffect(QObject *parent = nullptr);
    ~ColorFillImageEffect() override;

    QColor color() const;
    void setColor(const QColor &color);

Q_SIGNALS:
    void colorChanged();

protected:
    ImageEffectState *createState() const override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
