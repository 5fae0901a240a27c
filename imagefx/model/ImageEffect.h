#pragma once

#include "imagefx/Export.h"
#include "imagefx/model/AlphaMask.h"

#include <QtCore/QByteArray>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <memory>

namespace ko::imagefx
{

class ImageEffectState;

// Base of every effect: the object that QML edits on the GUI thread. It renders nothing itself; the
// render side takes its snapshot through currentState().
class KORVELIMAGEFX_EXPORT ImageEffect : public QObject
{
    Q_OBJECT
    // The kind, such as "ko.orvanto.imageeffect.Blur".
    Q_PROPERTY(QString effectId READ effectId CONSTANT)
    // Free text for the user interface; changing it asks for no repaint.
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    // Default true.
    Q_PROPERTY(bool enabled READ enabled WRITE setEnabled NOTIFY enabledChanged)
    // Opacity of the effect over its input; default 1. Not clamped: beyond [0, 1] the mix of input
    // and effect extrapolates, and up to 0.001 the effect counts as switched off.
    Q_PROPERTY(float alpha READ alpha WRITE setAlpha NOTIFY alphaChanged)
    // How the effect's colour is combined with its input before `alpha` and the mask mix the two;
    // default Normal. A number outside the enumeration draws nothing.
    Q_PROPERTY(ko::imagefx::ImageEffect::BlendMode blendMode READ blendMode WRITE setBlendMode
                   NOTIFY blendModeChanged)
    // Where the effect applies; default null, everywhere. The effect does not own its mask.
    Q_PROPERTY(
        ko::imagefx::AlphaMask *alphaMask READ alphaMask WRITE setAlphaMask NOTIFY alphaMaskChanged)

public:
    // Of a fixed type, since any number may be stored.
    enum BlendMode : int {
        Normal = 0,
        Add = 1,
        Subtract = 2,
        Difference = 3,
        Multiply = 4,
        Divide = 5,
        Screen = 6,
        Overlay = 7,
        HardLight = 8,
        SoftLight = 9,
        LinearLight = 10,
        ColorDodge = 11,
        ColorBurn = 12,
        LinearBurn = 13,
        LightenOnly = 14,
        DarkenOnly = 15,
    };
    Q_ENUM(BlendMode)

    ImageEffect(const QString &effectId, QObject *parent);
    ~ImageEffect() override;

    QString effectId() const;

    QString name() const;
    void setName(const QString &name);

    bool enabled() const;
    void setEnabled(bool enabled);

    float alpha() const;
    void setAlpha(float alpha);

    BlendMode blendMode() const;
    void setBlendMode(BlendMode blendMode);

    AlphaMask *alphaMask() const;
    void setAlphaMask(AlphaMask *mask);

    // The render side's snapshot: made once, refreshed when something changed, never null. To be
    // called with a current GL context while the GUI thread does not touch the effect. It may
    // outlive the effect.
    QSharedPointer<ImageEffectState> currentState();

    // True when the effect, with its present values, leaves the picture unchanged.
    virtual bool isNeutral() const;

    // The text of the shader resource ":/imagefx/lib/shaders/" + `name`; empty when there is none.
    static QByteArray readShader(const QString &name);

    // Fills the registry of effect and mask kinds. To be called once, before anything is created
    // by id or read from JSON.
    static void initialize();
    // A new object without a parent, owned by the caller; null for an id that is not registered.
    static ImageEffect *createEffect(const QString &effectId);
    static AlphaMask *createAlphaMask(const QString &maskId);

    // JSON of an effect or of a stack: every property under its name. A null effect gives an empty
    // object.
    static QJsonObject serialize(ImageEffect *effect);
    static QJsonArray serialize(const QList<ImageEffect *> &effects);
    // The effect or stack that serialize() wrote. Kinds that are not registered are left out. The
    // caller owns the effects and, since effects do not own them, the masks.
    static ImageEffect *unserialize(const QJsonObject &object);
    static QList<ImageEffect *> unserialize(const QJsonArray &array);

Q_SIGNALS:
    void nameChanged();
    void enabledChanged();
    void alphaChanged();
    void blendModeChanged();
    void alphaMaskChanged();
    // Something changed that alters the picture. Emitting it is what marks the effect for a refresh
    // of its state.
    void updateRequired();

protected:
    // A new state of the effect's own kind; never null.
    virtual ImageEffectState *createState() const = 0;

    // What every setter does once its argument is clamped: ignore a value equal to the stored one,
    // otherwise store it, emit the property's signal and ask for an update.
    template <class Effect>
    void assign(float &stored, float value, void (Effect::*changed)())
    {
        if (!qFuzzyCompare(stored, value)) {
            replace(stored, value, changed);
        }
    }

    template <class Effect, class Value>
    void assign(Value &stored, const Value &value, void (Effect::*changed)())
    {
        if (stored != value) {
            replace(stored, value, changed);
        }
    }

private Q_SLOTS:
    void markDirty();

private:
    template <class Effect, class Value>
    void replace(Value &stored, const Value &value, void (Effect::*changed)())
    {
        stored = value;
        Q_EMIT(static_cast<Effect *>(this)->*changed)();
        Q_EMIT updateRequired();
    }

    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
