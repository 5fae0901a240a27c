#include "tests/support/PictureTester.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtTest/QTest>

#include <algorithm>

namespace ko::imagefx::test
{

namespace
{

struct Worst {
    double excess = -1.0;
    int x = 0;
    int y = 0;
};

double excessOf(const uchar *pixel, const PixelRange &range)
{
    double excess = 0.0;
    for (size_t channel = 0; channel < range.size(); ++channel) {
        const double level = pixel[channel];
        // Written so that a range of NaN is an excess, too.
        const bool inside = level >= range[channel].low && level <= range[channel].high;
        if (!inside) {
            const double below = range[channel].low - level;
            const double above = level - range[channel].high;
            excess = std::max(excess, qIsNaN(below + above) ? 255.0 : std::max(below, above));
        }
    }
    return excess;
}

QByteArray levels(const uchar *pixel)
{
    return QStringLiteral("(%1, %2, %3, %4)")
        .arg(pixel[0])
        .arg(pixel[1])
        .arg(pixel[2])
        .arg(pixel[3])
        .toLatin1();
}

QByteArray levels(const PixelRange &range)
{
    QStringList texts;
    for (const LevelRange &level : range) {
        const QString low = QString::number(level.low, 'f', 2);
        const QString high = QString::number(level.high, 'f', 2);
        texts.append(low == high ? low : low + QLatin1String("..") + high);
    }
    return "(" + texts.join(QLatin1String(", ")).toLatin1() + ")";
}

QImage middleOf(const ExpectedPixel &expected, const QSize &size)
{
    QImage image(size, QImage::Format_RGBA8888);
    for (int y = 0; y < size.height(); ++y) {
        uchar *pixel = image.scanLine(y);
        for (int x = 0; x < size.width(); ++x) {
            for (const LevelRange &level : expected(x, y)) {
                *pixel++ = uchar(qBound(0, qRound((level.low + level.high) / 2.0), 255));
            }
        }
    }
    return image;
}

QByteArray save(const QImage &image, const char *role)
{
    QString name = QString::fromLatin1(QTest::currentTestFunction());
    if (const char *tag = QTest::currentDataTag()) {
        name += QLatin1Char('-') + QString::fromLatin1(tag);
    }
    name.replace(QLatin1Char(' '), QLatin1Char('_')).replace(QLatin1Char('/'), QLatin1Char('_'));
    const QDir folder(QCoreApplication::applicationDirPath());
    const QString path = folder.absoluteFilePath(
        QStringLiteral("%1-%2-%3.png")
            .arg(QCoreApplication::applicationName(), name, QLatin1String(role)));
    image.save(path);
    return path.toLocal8Bit();
}

} // namespace

QByteArray comparePictures(const QImage &actual, const ExpectedPixel &expected, double tolerance)
{
    const QImage pixels = actual.format() == QImage::Format_RGBA8888_Premultiplied
                              ? actual
                              : actual.convertToFormat(QImage::Format_RGBA8888);
    if (pixels.isNull()) {
        return "the picture is null";
    }
    Worst worst;
    int beyond = 0;
    for (int y = 0; y < pixels.height(); ++y) {
        for (int x = 0; x < pixels.width(); ++x) {
            const double excess =
                excessOf(pixels.constScanLine(y) + ptrdiff_t(4) * x, expected(x, y));
            beyond += excess > tolerance ? 1 : 0;
            if (excess > worst.excess) {
                worst = {excess, x, y};
            }
        }
    }
    if (beyond == 0) {
        return {};
    }
    const int count = pixels.width() * pixels.height();
    return "worst pixel (" + QByteArray::number(worst.x) + ", " + QByteArray::number(worst.y) +
           "): " + levels(pixels.constScanLine(worst.y) + ptrdiff_t(4) * worst.x) + " instead of " +
           levels(expected(worst.x, worst.y)) + ", " + QByteArray::number(worst.excess) +
           " levels off; " + QByteArray::number(beyond) + " of " + QByteArray::number(count) +
           " pixels are beyond " + QByteArray::number(tolerance) +
           "\nactual: " + save(pixels, "actual") +
           "\nexpected: " + save(middleOf(expected, pixels.size()), "expected");
}

QByteArray comparePictures(const QImage &actual, const QImage &expected, double tolerance)
{
    if (actual.size() != expected.size()) {
        return QStringLiteral("%1 x %2 pixels instead of %3 x %4")
            .arg(actual.width())
            .arg(actual.height())
            .arg(expected.width())
            .arg(expected.height())
            .toLatin1();
    }
    const QImage pixels = expected.format() == QImage::Format_RGBA8888_Premultiplied
                              ? expected
                              : expected.convertToFormat(QImage::Format_RGBA8888);
    const auto expectedPixel = [&pixels](int x, int y) {
        const uchar *pixel = pixels.constScanLine(y) + ptrdiff_t(4) * x;
        PixelRange range{};
        for (size_t channel = 0; channel < range.size(); ++channel) {
            range[channel] = {double(pixel[channel]), double(pixel[channel])};
        }
        return range;
    };
    return comparePictures(actual, ExpectedPixel(expectedPixel), tolerance);
}

ExpectedPixel workedOut(const ExpectedPixel &expected, const QSize &size)
{
    QVector<PixelRange> pixels;
    pixels.reserve(size.width() * size.height());
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            pixels.append(expected(x, y));
        }
    }
    return [pixels, width = size.width()](int x, int y) { return pixels.at(y * width + x); };
}

QImage picture(const QVector<QVector<QColor>> &rows)
{
    QImage image(rows.first().size(), rows.size(), QImage::Format_RGBA8888);
    for (int y = 0; y < rows.size(); ++y) {
        for (int x = 0; x < rows.at(y).size(); ++x) {
            image.setPixelColor(x, y, rows.at(y).at(x));
        }
    }
    return image;
}

} // namespace ko::imagefx::test
