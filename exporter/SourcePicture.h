#pragma once

#include "exporter/Failure.h"
#include "exporter/PictureFormat.h"

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtGui/QImage>
#include <QtGui/QImageIOHandler>

#include <memory>

namespace ko::exporter
{

class JpegRowReader;

// The picture to export: read at once, so that the file may be replaced later,
// decoded on demand. Needs no application object.
class SourcePicture
{
public:
    explicit SourcePicture(const QString &path);

    QString path() const { return m_path; }

    // Reads the file, unless its first bytes are of no known format, and its
    // header.
    Outcome open();
    // As it will be seen, turned upright; empty where only decoding tells.
    QSize size() const;

    // Decodes what open() read, turns it upright and forgets the file's bytes. A
    // file that ends early is a failure also where its codec would make something
    // up. A picture that will be scaled to `wanted` may come smaller than it is,
    // but not less than twice as large as that.
    Outcome decode(const QSize &wanted = {});
    // In place of decode(): the rows of the picture as it will be seen, in colour
    // where `colored`, grey where the file is; null where only a whole picture
    // can be had, as of a turned one, of CMYK and of all but JPEG. Must not
    // outlive this picture.
    std::unique_ptr<JpegRowReader> rows(bool colored) const;
    // To be called when the last row was read, or one could not be: ends as
    // decode() does.
    Outcome finishRows(JpegRowReader *rows);

    // Hands the picture over, once: upright, not premultiplied unless the file
    // was, without texts and colour space. JPEG comes as Format_RGBX8888 or
    // Format_Grayscale8.
    QImage takeImage() { return std::move(m_image); }

    // The file's own bytes. A file that describes its colours in another way has
    // a profile made for it, unless they are plain sRGB; without a profile: sRGB
    // or unknown. Complete after decode().
    EmbeddedData data() const { return m_data; }
    // PNG's texts, but for those that data() has.
    QMap<QString, QString> texts() const { return m_texts; }
    // What decode() had to do differently, and what it did that is good to know.
    QStringList warnings() const { return m_warnings; }
    QStringList notes() const { return m_notes; }

private:
    void noteDamage(const QString &warning);
    Outcome readFile();
    void readHeader();
    Outcome decodeByLibjpeg(const QSize &wanted);
    Outcome decodeByQt();
    Failure unreadable(const QString &reason) const;
    Failure notAPicture(const QString &reason) const;

    const QString m_path;
    QByteArray m_file;
    PictureFormat m_format = PictureFormat::ofContent({});
    QSize m_storedSize;
    QImageIOHandler::Transformations m_transformation;
    EmbeddedData m_data;
    QMap<QString, QString> m_texts;
    QImage m_image;
    QStringList m_warnings;
    QStringList m_notes;
};

} // namespace ko::exporter
