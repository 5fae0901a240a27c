#include "examples/contact-sheet/Sheet.h"

#include <QtGui/QPainter>

#include <algorithm>

namespace ko::contactsheet
{

namespace
{

// In pixels of the sheet.
constexpr int margin = 48;
constexpr int gapBetweenPictures = 8;
constexpr int gapBetweenColumns = 56;
constexpr int gapBelowStrip = 22;
constexpr int labelHeight = 34;
constexpr int headingHeight = 48;
constexpr int captionHeight = 32;
constexpr int labelSize = 21;
constexpr int headingSize = 30;
constexpr int captionSize = 16;

// Grey, so that the surroundings lend the pictures no tint.
const QColor background(48, 48, 48);
const QColor bright(236, 236, 236);
const QColor dim(168, 168, 168);

QSize sizeOf(const Strip &strip)
{
    QSize size(-gapBetweenPictures, 0);
    for (const QImage &picture : strip.pictures) {
        size.rwidth() += picture.width() + gapBetweenPictures;
        size.setHeight(std::max(size.height(), picture.height()));
    }
    return size;
}

class SheetPainter
{
public:
    explicit SheetPainter(QImage *sheet) : m_painter(sheet) {}

    void drawText(const QRect &place, const QString &text, int size, const QColor &color)
    {
        QFont font(QStringLiteral("DejaVu Sans"));
        font.setPixelSize(size);
        m_painter.setFont(font);
        m_painter.setPen(color);
        m_painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter, text);
    }

    // The label, and the pictures below it.
    void drawStrip(const Strip &strip, QPoint place)
    {
        drawText({place, QSize(sizeOf(strip).width(), labelHeight)}, strip.label, labelSize,
                 bright);
        place.ry() += labelHeight;
        for (const QImage &picture : strip.pictures) {
            m_painter.drawImage(place, picture);
            place.rx() += picture.width() + gapBetweenPictures;
        }
    }

    void drawCaptions(const Strip &strip, const QStringList &captions, QPoint place)
    {
        for (int i = 0; i < captions.size(); ++i) {
            const int width = strip.pictures.at(i).width();
            drawText({place, QSize(width, captionHeight)}, captions.at(i), captionSize, dim);
            place.rx() += width + gapBetweenPictures;
        }
    }

private:
    QPainter m_painter;
};

} // namespace

QImage drawSheet(const QStringList &captions, const QVector<Column> &columns)
{
    const Strip &first = columns.constFirst().strips.constFirst();
    const QSize pictures = sizeOf(first);
    const int stripStep = labelHeight + pictures.height() + gapBelowStrip;
    const int columnStep = pictures.width() + gapBetweenColumns;
    int rows = 0;
    for (const Column &column : columns) {
        rows = std::max(rows, column.strips.size());
    }
    QImage sheet(2 * margin + columns.size() * columnStep - gapBetweenColumns,
                 2 * margin + headingHeight + captionHeight + rows * stripStep - gapBelowStrip,
                 QImage::Format_RGB32);
    sheet.fill(background);
    SheetPainter painter(&sheet);
    QPoint place(margin, 0);
    for (const Column &column : columns) {
        place.setY(margin);
        painter.drawText({place, QSize(pictures.width(), headingHeight)}, column.heading,
                         headingSize, bright);
        place.ry() += headingHeight;
        painter.drawCaptions(first, captions, place);
        place.ry() += captionHeight;
        for (const Strip &strip : column.strips) {
            painter.drawStrip(strip, place);
            place.ry() += stripStep;
        }
        place.rx() += columnStep;
    }
    return sheet;
}

} // namespace ko::contactsheet
