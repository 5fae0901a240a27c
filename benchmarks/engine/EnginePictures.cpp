#include "benchmarks/engine/EnginePictures.h"

#include <cstring>

namespace ko::imagefx::benchmarks
{

QImage noisyPicture(const QSize &size, bool opaque)
{
    QImage picture(size, opaque ? QImage::Format_RGBX8888 : QImage::Format_RGBA8888_Premultiplied);
    quint32 noise = 1;
    for (int y = 0; y < size.height(); ++y) {
        uchar *pixel = picture.scanLine(y);
        for (int x = 0; x < size.width(); ++x, pixel += 4) {
            noise = noise * 1664525U + 1013904223U;
            const bool whole = opaque || x % 2 == 0;
            const int alpha = whole ? 255 : 64 + int(noise >> 8U) % 191;
            const int colors[] = {x * 191 / size.width(), y * 191 / size.height(),
                                  (x + y) * 191 / (size.width() + size.height())};
            for (int channel = 0; channel < 3; ++channel) {
                const int value = colors[channel] + int((noise >> unsigned(8 * channel + 2)) & 63U);
                pixel[channel] = uchar(value * alpha / 255);
            }
            pixel[3] = uchar(alpha);
        }
    }
    return picture;
}

bool RepeatedRows::read(uchar *rows, std::ptrdiff_t stride, int count)
{
    for (int i = 0; i < count; ++i) {
        std::memcpy(rows + i * stride, m_rows.constScanLine(m_next),
                    std::size_t(m_rows.width()) * 4);
        m_next = (m_next + 1) % m_rows.height();
    }
    return true;
}

} // namespace ko::imagefx::benchmarks
