#pragma once

#include <QtCore/QList>
#include <QtGui/QImage>

namespace ko::imagefx
{
class ImageEffect;
}

namespace ko::exporter
{

// `picture`, drawn by GL through `effects` in order, at its own size. Every effect given is drawn.
// An opaque picture comes back opaque, a translucent one not premultiplied, both with 8 bits a
// channel. Null when GL ran out of memory. Needs a current GL context and a picture within its
// limits.
QImage renderPicture(const QImage &picture, const QList<imagefx::ImageEffect *> &effects);

} // namespace ko::exporter
