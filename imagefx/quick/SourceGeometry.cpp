#include "imagefx/quick/SourceGeometry.h"

namespace ko::imagefx
{

QRectF centredCrop(const QSize &textureSize, const QRectF &subRect, const QSizeF &itemSize)
{
    const float textureAspect = float(textureSize.width()) / float(textureSize.height());
    const auto itemAspect = float(itemSize.width() / itemSize.height());
    const float height = textureAspect / itemAspect;
    const float width = itemAspect / textureAspect;
    if (width > height) {
        return {subRect.x(), subRect.y() + qMax(0.0F, 1.0F - height) * 0.5F, subRect.width(),
                subRect.height() * height};
    }
    return {subRect.x() + qMax(0.0F, 1.0F - width) * 0.5F, subRect.y(), subRect.width() * width,
            subRect.height()};
}

float renderScale(const QSize &itemSize, const QRectF &sourceRect, const QSize &referenceSize,
                  const QSize &textureSize)
{
    const QSize reference =
        qMin(referenceSize.width(), referenceSize.height()) < 1 ? textureSize : referenceSize;
    const double scaleX = itemSize.width() / (sourceRect.width() * reference.width());
    const double scaleY = itemSize.height() / (sourceRect.height() * reference.height());
    return float(qMax(scaleX, scaleY));
}

} // namespace ko::imagefx
