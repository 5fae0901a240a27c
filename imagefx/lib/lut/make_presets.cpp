// Draws the preset lookup tables: make_presets FOLDER writes one PNG for each look into FOLDER.

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QPoint>
#include <QtCore/QVector>
#include <QtGui/QColor>
#include <QtGui/QImage>

#include <cmath>
#include <cstdio>

namespace
{

// From left to right, in levels of 0 to 255: x goes in, y comes out. Begins at x = 0, ends at 255.
using ControlPoints = QVector<QPoint>;

struct Look {
    QString name;
    ControlPoints red;
    ControlPoints green;
    ControlPoints blue;
};

QVector<Look> looks()
{
    return {
        // The seventies on an old print: gold in the lights, brown and faded in the blacks.
        {QStringLiteral("american-hustle"),
         {{0, 28}, {64, 86}, {128, 158}, {192, 216}, {255, 251}},
         {{0, 19}, {64, 69}, {128, 134}, {192, 195}, {255, 237}},
         {{0, 20}, {64, 55}, {128, 104}, {192, 157}, {255, 201}}},
        // Snow under a white sky: pale, bright and blue down to the shadows.
        {QStringLiteral("fargo"),
         {{0, 30}, {64, 88}, {128, 152}, {192, 210}, {255, 247}},
         {{0, 34}, {64, 97}, {128, 162}, {192, 218}, {255, 251}},
         {{0, 46}, {64, 111}, {128, 173}, {192, 225}, {255, 254}}},
        // Pastry-box pink over lilac shadows.
        {QStringLiteral("grand-budapest-hotel"),
         {{0, 52}, {64, 114}, {128, 177}, {192, 227}, {255, 253}},
         {{0, 37}, {64, 90}, {128, 146}, {192, 198}, {255, 235}},
         {{0, 56}, {64, 107}, {128, 163}, {192, 209}, {255, 242}}},
        // Steel: teal shadows, little colour, lights that stay cool.
        {QStringLiteral("interstellar"),
         {{0, 19}, {64, 62}, {128, 112}, {192, 171}, {255, 232}},
         {{0, 24}, {64, 73}, {128, 129}, {192, 188}, {255, 240}},
         {{0, 33}, {64, 80}, {128, 132}, {192, 187}, {255, 239}}},
        // A yellow afternoon: sunny lights, shadows lifted into orange.
        {QStringLiteral("little-miss-sunshine"),
         {{0, 40}, {64, 98}, {128, 174}, {192, 231}, {255, 255}},
         {{0, 28}, {64, 89}, {128, 156}, {192, 214}, {255, 247}},
         {{0, 24}, {64, 66}, {128, 118}, {192, 165}, {255, 202}}},
        // A hard print: amber lights, green shadows, deep blacks.
        {QStringLiteral("pulp-fiction"),
         {{0, 5}, {48, 34}, {128, 146}, {208, 232}, {255, 252}},
         {{0, 9}, {48, 42}, {128, 138}, {208, 215}, {255, 244}},
         {{0, 6}, {48, 29}, {128, 100}, {208, 166}, {255, 208}}},
    };
}

// Slopes at the control points for a cubic through them that never turns where they do not: Fritsch
// and Carlson, "Monotone piecewise cubic interpolation", SIAM J. Numer. Anal. 17 (1980).
QVector<double> monotoneSlopes(const ControlPoints &points)
{
    const int last = points.size() - 1;
    QVector<double> secants;
    for (int i = 0; i < last; ++i) {
        const QPoint step = points.at(i + 1) - points.at(i);
        secants.append(double(step.y()) / step.x());
    }
    QVector<double> slopes;
    for (int i = 0; i <= last; ++i) {
        const double before = secants.at(qMax(i - 1, 0));
        const double after = secants.at(qMin(i, last - 1));
        slopes.append(before * after > 0.0 ? (before + after) / 2.0 : 0.0);
    }
    for (int i = 0; i < last; ++i) {
        if (secants.at(i) == 0.0) {
            continue; // Flat, and so are both slopes.
        }
        const double length =
            std::hypot(slopes.at(i) / secants.at(i), slopes.at(i + 1) / secants.at(i));
        if (length > 3.0) {
            slopes[i] *= 3.0 / length;
            slopes[i + 1] *= 3.0 / length;
        }
    }
    return slopes;
}

// The curve at every level: between two control points the cubic Hermite polynomial.
QVector<int> curve(const ControlPoints &points)
{
    const QVector<double> slopes = monotoneSlopes(points);
    QVector<int> levels;
    int i = 0;
    for (int level = 0; level < 256; ++level) {
        if (level > points.at(i + 1).x()) {
            ++i;
        }
        const QPoint left = points.at(i);
        const QPoint right = points.at(i + 1);
        const double width = right.x() - left.x();
        const double t = (level - left.x()) / width;
        const double s = 1.0 - t;
        const double value = s * s * ((1.0 + 2.0 * t) * left.y() + t * width * slopes.at(i)) +
                             t * t * ((1.0 + 2.0 * s) * right.y() - s * width * slopes.at(i + 1));
        levels.append(qBound(0, qRound(value), 255));
    }
    return levels;
}

QImage table(const Look &look)
{
    const QVector<int> red = curve(look.red);
    const QVector<int> green = curve(look.green);
    const QVector<int> blue = curve(look.blue);
    QImage image(256, 1, QImage::Format_RGB888);
    for (int level = 0; level < 256; ++level) {
        image.setPixelColor(level, 0, QColor(red.at(level), green.at(level), blue.at(level)));
    }
    // A resolution would only make the files longer.
    image.setDotsPerMeterX(0);
    image.setDotsPerMeterY(0);
    return image;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc != 2) {
        std::fputs("usage: make_presets FOLDER\n", stderr);
        return 2;
    }
    const QDir folder(QCoreApplication::arguments().at(1));
    for (const Look &look : looks()) {
        const QString path = folder.filePath(look.name + QLatin1String(".png"));
        if (!table(look).save(path, "png")) {
            std::fprintf(stderr, "make_presets: cannot write %s\n", qPrintable(path));
            return 1;
        }
    }
    return 0;
}
