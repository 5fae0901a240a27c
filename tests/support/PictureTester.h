#pragma once

#include <QtGui/QColor>
#include <QtGui/QImage>

#include <array>
#include <functional>

namespace ko::imagefx::test
{

// What a channel may be, in levels from 0 to 255; the same number twice where there is no doubt.
struct LevelRange {
    double low;
    double high;
};
using PixelRange = std::array<LevelRange, 4>; // red, green, blue, alpha

// A picture's expectation, pixel by pixel; y counts scan lines from the top of the image.
using ExpectedPixel = std::function<PixelRange(int x, int y)>;

// Compares pictures channel by channel in RGBA8888, as the bytes are. Empty when every channel is
// within `tolerance` levels of its range. Otherwise the text of a failure: the worst pixel first,
// then the share of pixels beyond the tolerance; both pictures are written beside the test program,
// under the running test's name, and the text says where.
QByteArray comparePictures(const QImage &actual, const ExpectedPixel &expected, double tolerance);
QByteArray comparePictures(const QImage &actual, const QImage &expected, double tolerance);

// The same expectation of a picture of that size, worked out now and once.
ExpectedPixel workedOut(const ExpectedPixel &expected, const QSize &size);

// A picture of RGBA8888 pixels, as many scan lines as rows.
QImage picture(const QVector<QVector<QColor>> &rows);

} // namespace ko::imagefx::test

// Fails the running test function with the text of the comparison.
#define KORVEL_COMPARE_PICTURES(actual, expected, tolerance)                                       \
    do {                                                                                           \
        const QByteArray difference_ =                                                             \
            ko::imagefx::test::comparePictures(actual, expected, tolerance);                       \
        QVERIFY2(difference_.isEmpty(), difference_.constData());                                  \
    } while (false)
