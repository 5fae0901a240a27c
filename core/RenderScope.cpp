#include "core/RenderScope.h"

#include <QtQuick/QQuickWindow>

#include <cmath>
#include <limits>

namespace ko
{

namespace
{

int adjustedSide(int side, qreal ratio, int least)
{
    const qreal largest = std::numeric_limits<int>::max();
    return qRound(qBound<qreal>(least, side * ratio, largest));
}

} // namespace

RenderScope::RenderScope(QQuickItem *parent) : QQuickItem(parent)
{
    // Only items with contents are told that the ratio of their screen changed.
    setFlag(ItemHasContents);
    updateRatio();
}

RenderScope *RenderScope::find(QQuickItem *item)
{
    if (item == nullptr) {
        return nullptr;
    }
    for (QQuickItem *ancestor = item->parentItem(); ancestor != nullptr;
         ancestor = ancestor->parentItem()) {
        if (auto *scope = qobject_cast<RenderScope *>(ancestor)) {
            return scope;
        }
    }
    return nullptr;
}

void RenderScope::setPixelRatio(qreal ratio)
{
    const qreal requested = std::isfinite(ratio) && ratio > 0.0 ? ratio : 0.0;
    if (requested == m_pixelRatio) {
        return;
    }
    m_pixelRatio = requested;
    updateRatio();
    Q_EMIT requestedPixelRatioChanged();
}

QSize RenderScope::adjustedSize(const QSize &size) const
{
    const int least = size.isEmpty() ? 0 : 1;
    return {adjustedSide(size.width(), m_effectivePixelRatio, least),
            adjustedSide(size.height(), m_effectivePixelRatio, least)};
}

void RenderScope::itemChange(ItemChange change, const ItemChangeData &data)
{
    if (change == ItemSceneChange || change == ItemDevicePixelRatioHasChanged) {
        updateRatio();
    }
    QQuickItem::itemChange(change, data);
}

void RenderScope::updateRatio()
{
    qreal ratio = m_pixelRatio;
    if (ratio == 0.0) {
        ratio = window() != nullptr ? window()->effectiveDevicePixelRatio() : 1.0;
    }
    if (ratio == m_effectivePixelRatio) {
        return;
    }
    m_effectivePixelRatio = ratio;
    Q_EMIT pixelRatioChanged();
}

} // namespace ko
