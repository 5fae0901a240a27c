#pragma once

#include "imagefx/Export.h"
#include "imagefx/model/AlphaGradientStop.h"

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QSharedPointer>
#include <QtGui/QImage>
#include <QtQml/QQmlListProperty>

#include <memory>

namespace ko::imagefx
{

class AlphaMaskState;

// Limits where an effect applies. A mask kind turns every pixel into one number from 0 to 1 (its
// distance from the centre, its hue, its luminance); the gradient that the stops describe turns
// that number into the share of the effect that shows. Lives on the GUI thread, owned by QML or by
// its parent, never by the effects that use it.
class KORVELIMAGEFX_EXPORT AlphaMask : public QObject
{
    Q_OBJECT
    // The kind, such as "ko.orvanto.alphamask.Hue".
    Q_PROPERTY(QString maskId READ maskId CONSTANT)
    // Default true; a mask that is off lets the whole effect through.
    Q_PROPERTY(bool enabled READ enabled WRITE setEnabled NOTIFY enabledChanged)
    // The stops in insertion order, null left out; no stops let the whole effect through.
    Q_PROPERTY(QQmlListProperty<ko::imagefx::AlphaGradientStop> gradientStops READ gradientStops
                   NOTIFY gradientStopsChanged)
    // How the gradient runs from stop to stop; default HermiteInterpolation.
    Q_PROPERTY(ko::imagefx::AlphaMask::GradientInterpolation gradientInterpolation READ
                   gradientInterpolation WRITE setGradientInterpolation NOTIFY
                       gradientInterpolationChanged)

public:
    enum GradientInterpolation : int {
        ConstantInterpolation = 0,
        LinearInterpolation = 1,
        HermiteInterpolation = 2,
    };
    Q_ENUM(GradientInterpolation)

    // Bits of the constructor's `gradientFlags`.
    enum GradientFlag {
        CyclicGradient = 2, // the gradient's end returns to the first stop's value
    };

    AlphaMask(const QString &maskId, int gradientFlags, QObject *parent);
    ~AlphaMask() override;

    QString maskId() const;

    bool enabled() const;
    void setEnabled(bool enabled);

    GradientInterpolation gradientInterpolation() const;
    void setGradientInterpolation(GradientInterpolation interpolation);

    QQmlListProperty<AlphaGradientStop> gradientStops();
    QList<AlphaGradientStop *> gradientStopList() const;
    // Takes the stops as children. Every stop listed before is deleted on the next turn of the
    // event loop, also one that is listed again: pass fresh stops.
    void setGradientStopList(QList<AlphaGradientStop *> stops);

    // A new stop at the end of the list, a child of the mask; neither number is clamped.
    Q_INVOKABLE ko::imagefx::AlphaGradientStop *addGradientStop(float position, float value);
    // Takes the first entry of that stop off the list; the stop itself stays alive.
    Q_INVOKABLE void removeGradientStop(ko::imagefx::AlphaGradientStop *stop);

    // The gradient as last built by currentState(): 512 x 1 bytes; 255 before that.
    QImage gradient() const;
    // The gradient of the present stops, as currentState() would build it, in the same layout.
    // Needs no GL context, emits nothing and leaves gradient() as it is.
    QImage buildGradient() const;
    // The opacity that the gradient as last built has at `location`, clamped to [0, 1].
    Q_INVOKABLE float intensityAtLocation(float location) const;

    // The render side's snapshot: made once, refreshed when something changed. To be called with a
    // current GL context while the GUI thread does not touch the mask; texture unit 4 is left
    // active after a refresh.
    QSharedPointer<AlphaMaskState> currentState() const;

Q_SIGNALS:
    void enabledChanged();
    void gradientStopsChanged();
    void gradientInterpolationChanged();
    // The gradient was rebuilt; emitted by currentState(), so from the render thread.
    void gradientChanged();
    // Something changed that alters the picture.
    void updateRequired();

protected:
    // A new state of the mask's own kind; never null.
    virtual AlphaMaskState *createState() const = 0;

private Q_SLOTS:
    void markDirty();

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
