#pragma once

#include <QtGui/QImage>

namespace ko::exporter
{

// The picture as effects take it: Format_RGBX8888 when it has no alpha channel, otherwise with
// colours that are premultiplied, exactly rounded, though the format says Format_RGBA8888: so that
// nobody converts them. In the same memory where that is possible; null when memory runs out.
QImage premultipliedPixels(QImage picture);

// Turns drawn pixels, four bytes each with premultiplied colour, into Format_RGBA8888. What an
// effect brightened beyond its alpha becomes 255.
void unpremultiplyPixels(QImage *pixels);

} // namespace ko::exporter
