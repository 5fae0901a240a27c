#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtGui/QImage>

#include <cstddef>
#include <memory>

namespace ko::exporter
{

// The pixels of a JPEG file, from the top down. Only a few rows are in memory, but for those kinds
// of files that hold them all in several passes. Its functions are called one after the other, on
// any thread.
class JpegRowReader
{
public:
    // Reads the header. `file` must outlive the reader. For `wanted` see decodeJpeg().
    explicit JpegRowReader(const QByteArray &file, const QSize &wanted = {});
    ~JpegRowReader();

    // Whether the header could be read; otherwise error() tells why, and there are no rows.
    bool isReadable() const { return m_readable; }
    // Of the picture as it is stored, and of the rows.
    QSize storedSize() const;
    QSize size() const;
    // What the rows hold: one byte a pixel for grey; four for CMYK, perhaps inverted (255 means no
    // ink), and for all else: red, green, blue and 255.
    bool isGray() const;
    bool isCmyk() const;
    bool isInvertedCmyk() const;
    // To be called before the first row, for rows of colour also where the file is grey.
    void expandGray();

    // Writes the next `count` rows, the upper ones first, `stride` bytes apart. False when that is
    // not possible.
    bool read(uchar *rows, std::ptrdiff_t stride, int count);

    // What is wrong with the picture, to be called once no more rows are wanted: also that its data
    // ends early or is damaged, which read() passes over. Empty when nothing is, as far as it was
    // read.
    QString error();
    // What libjpeg says of a picture that it made in spite of it. Only after error().
    QString warning() const;
    // A file without a resolution leaves the image as it is.
    void copyResolution(QImage *image) const;

private:
    Q_DISABLE_COPY(JpegRowReader)

    struct Decompressor;
    const std::unique_ptr<Decompressor> m_jpeg;
    bool m_readable = false;
};

} // namespace ko::exporter
