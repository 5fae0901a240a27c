#pragma once

#include "core/Export.h"

#include <QtCore/QSize>
#include <QtQuick/QQuickItem>

namespace ko
{

// Says how many device pixels a logical pixel has for the items below it, so that what they render
// is as fine as the screen, or as coarse as a slow machine wants. It shows nothing itself. GUI
// thread.
class KORVELCORE_EXPORT RenderScope : public QQuickItem
{
    Q_OBJECT
    // The ratio asked for. 0, the default, follows the window, also when that moves to another
    // screen; a positive value holds whatever the window says. Anything else counts as 0.
    Q_PROPERTY(
        qreal pixelRatio READ pixelRatio WRITE setPixelRatio NOTIFY requestedPixelRatioChanged)
    // The ratio in force: the one asked for, else the window's, 1 outside a window.
    Q_PROPERTY(qreal effectivePixelRatio READ effectivePixelRatio NOTIFY pixelRatioChanged)

public:
    explicit RenderScope(QQuickItem *parent = nullptr);

    // The nearest scope among the ancestors of `item`, which is not its own; null when there is
    // none or `item` is null.
    static RenderScope *find(QQuickItem *item);

    qreal pixelRatio() const { return m_pixelRatio; }
    void setPixelRatio(qreal ratio);
    qreal effectivePixelRatio() const { return m_effectivePixelRatio; }

    // `size`, in logical pixels, in device pixels: each side rounded to the nearest integer, halves
    // up, at least 1 unless `size` is empty and at most what an int holds. May also be called while
    // the GUI thread is blocked.
    QSize adjustedSize(const QSize &size) const;

Q_SIGNALS:
    // The ratio in force changed. Slots of either signal find both ratios up to date.
    void pixelRatioChanged();
    // The ratio asked for changed.
    void requestedPixelRatioChanged();

protected:
    void itemChange(ItemChange change, const ItemChangeData &data) override;

private:
    void updateRatio();

    qreal m_pixelRatio = 0.0;
    qreal m_effectivePixelRatio = 1.0;
};

} // namespace ko
