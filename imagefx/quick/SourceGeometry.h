#pragma once

#include <QtCore/QRectF>
#include <QtCore/QSize>

namespace ko::imagefx
{

// The largest centred part of a texture that has the item's aspect ratio, in normalised
// coordinates. `subRect` is where the texture lies in its atlas; the shift that centres the part is
// not scaled by it.
QRectF centredCrop(const QSize &textureSize, const QRectF &subRect, const QSizeF &itemSize);

// Target pixels per pixel of the reference picture, of which `sourceRect` (normalised) fills the
// item; the larger one of the two directions. An unset reference size is that of the texture.
float renderScale(const QSize &itemSize, const QRectF &sourceRect, const QSize &referenceSize,
                  const QSize &textureSize);

} // namespace ko::imagefx
