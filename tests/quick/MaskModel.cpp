#include "tests/quick/MaskModel.h"

#include <QtGui/QImage>

#include <algorithm>

namespace ko::imagefx::test
{

// A masked effect in white less the same in black is the mask: every colour drops out.
ExpectedPixel modelMaskPicture(const ModelMask &mask, const QImage &picture)
{
    EffectModel white;
    white.effect = modelColorFill(1.0, 1.0, 1.0);
    white.mask = mask;
    EffectModel black = white;
    black.effect = modelColorFill(0.0, 0.0, 0.0);
    return [white, black, picture](int x, int y) {
        const PixelRange light = white.over(picture)(x, y);
        const PixelRange dark = black.over(picture)(x, y);
        LevelRange share{0.0, 255.0};
        for (size_t i = 0; i < 3; ++i) {
            share.low = std::max(share.low, light[i].low - dark[i].high);
            share.high = std::min(share.high, light[i].high - dark[i].low);
        }
        return PixelRange{share, share, share, share};
    };
}

ExpectedPixel underOverlay(const QImage &picture,
                           const std::function<LevelRange(int x, int y)> &mask)
{
    return [picture, mask](int x, int y) {
        const uchar *pixel = picture.constScanLine(y) + ptrdiff_t(4) * x;
        const LevelRange share = mask(x, y);
        PixelRange range;
        for (size_t i = 0; i < range.size(); ++i) {
            // Red counts as unmultiplied, and its opacity is added to that of the picture.
            const auto over = [&](double level) {
                const double opacity = (1.0 - level / 255.0) * 0.5;
                const double source = i == 0 || i == 3 ? 255.0 * opacity : 0.0;
                return source + pixel[i] * (1.0 - opacity);
            };
            const double first = over(share.low);
            const double second = over(share.high);
            range[i] = {std::min(first, second), std::max(first, second)};
        }
        return range;
    };
}

} // namespace ko::imagefx::test
