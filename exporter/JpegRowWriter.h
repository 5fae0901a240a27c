#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtGui/QImage>

#include <memory>

namespace ko::exporter
{

// Encodes a JPEG file, baseline with halved chroma, from rows that come from the top down. Its
// functions are called one after the other, on any thread.
class JpegRowWriter
{
public:
    // One byte a pixel for grey; otherwise four, of which the last does not count. `resolution`: an
    // image that has that of the file. The file grows in `file`, which must outlive the writer, and
    // is complete after finish().
    JpegRowWriter(const QSize &size, bool isGray, const QImage &resolution, int quality,
                  QByteArray *file);
    ~JpegRowWriter();

    // False when something went wrong, which finish() tells.
    bool write(const uchar *row);
    bool hasFailed() const { return !m_working; }
    // To be called once, after the last row or a failure. Returns an empty text, or what is wrong;
    // `file` is then empty.
    QString finish();

    // The room for a file that has filled `size` bytes: larger by more than half, up to what a
    // QByteArray holds. The same size where there is no more.
    static int grownSize(int size);

private:
    Q_DISABLE_COPY(JpegRowWriter)

    struct Compressor;
    bool start(const QSize &size, bool isGray, const QImage &resolution, int quality);

    const std::unique_ptr<Compressor> m_jpeg;
    bool m_working = false;
};

} // namespace ko::exporter
