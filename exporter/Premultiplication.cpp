#include "exporter/Premultiplication.h"

#include <QtGui/QPixelFormat>

#include <algorithm>
#include <utility>

namespace ko::exporter
{

namespace
{

// Rounded exactly, as Qt's own conversion is not: at low alpha every step
// counts.
void premultiply(QImage *pixels)
{
    for (int y = 0; y < pixels->height(); ++y) {
        uchar *pixel = pixels->scanLine(y);
        for (int x = 0; x < pixels->width(); ++x, pixel += 4) {
            const int alpha = pixel[3];
            for (int channel = 0; channel < 3; ++channel) {
                pixel[channel] = uchar((pixel[channel] * alpha + 127) / 255);
            }
        }
    }
}

// colour = premultiplied / alpha, rounded. An effect may have brightened the
// colour beyond its alpha, which has no counterpart without premultiplication:
// it counts as 1.
uchar unpremultiplied(int channel, int alpha)
{
    return uchar(std::min(255, (channel * 255 + alpha / 2) / alpha));
}

} // namespace

QImage premultipliedPixels(QImage picture)
{
    if (!picture.hasAlphaChannel()) {
        return std::move(picture).convertToFormat(QImage::Format_RGBX8888);
    }
    if (picture.pixelFormat().premultiplied() == QPixelFormat::Premultiplied) {
        QImage pixels = std::move(picture).convertToFormat(QImage::Format_RGBA8888_Premultiplied);
        pixels.reinterpretAsFormat(QImage::Format_RGBA8888);
        return pixels;
    }
    QImage pixels = std::move(picture).convertToFormat(QImage::Format_RGBA8888);
    premultiply(&pixels);
    return pixels;
}

void unpremultiplyPixels(QImage *pixels)
{
    pixels->reinterpretAsFormat(QImage::Format_RGBA8888);
    for (int y = 0; y < pixels->height(); ++y) {
        uchar *pixel = pixels->scanLine(y);
        for (int x = 0; x < pixels->width(); ++x, pixel += 4) {
            const int alpha = pixel[3];
            if (alpha == 255) {
                continue;
            }
            for (int channel = 0; channel < 3; ++channel) {
                pixel[channel] = alpha == 0 ? uchar(0) : unpremultiplied(pixel[channel], alpha);
            }
        }
    }
}

} // namespace ko::exporter
