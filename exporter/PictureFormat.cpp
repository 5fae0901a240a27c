#include "exporter/PictureFormat.h"

#include "exporter/containers/JpegContainer.h"
#include "exporter/containers/PngContainer.h"
#include "exporter/containers/TiffContainer.h"
#include "exporter/containers/WebPContainer.h"

#include <QtCore/QFileInfo>

#include <utility>

namespace ko::exporter
{

namespace
{

constexpr struct {
    const char *suffix;
    PictureFormat::Kind kind;
} suffixes[] = {
    {"jpg", PictureFormat::Jpeg},  {"jpeg", PictureFormat::Jpeg}, {"png", PictureFormat::Png},
    {"webp", PictureFormat::WebP}, {"tif", PictureFormat::Tiff},  {"tiff", PictureFormat::Tiff},
    {"bmp", PictureFormat::Bmp},
};

bool isTiff(const QByteArray &file)
{
    // Byte order, then 42, or 43 for BigTIFF.
    const QByteArray start = file.left(4);
    return start == QByteArray("II*\0", 4) || start == QByteArray("MM\0*", 4) ||
           start == QByteArray("II+\0", 4) || start == QByteArray("MM\0+", 4);
}

} // namespace

PictureFormat PictureFormat::ofFileName(const QString &path)
{
    return ofSuffix(QFileInfo(path).suffix());
}

PictureFormat PictureFormat::ofSuffix(const QString &suffix)
{
    for (const auto &known : suffixes) {
        if (suffix.compare(QLatin1String(known.suffix), Qt::CaseInsensitive) == 0) {
            return PictureFormat(known.kind);
        }
    }
    return PictureFormat(Unknown);
}

PictureFormat PictureFormat::ofContent(const QByteArray &file)
{
    if (file.startsWith("\xff\xd8\xff")) {
        return PictureFormat(Jpeg);
    }
    if (file.startsWith("\x89PNG\r\n\x1a\n")) {
        return PictureFormat(Png);
    }
    if (file.startsWith("RIFF") && file.mid(8, 4) == "WEBP") {
        return PictureFormat(WebP);
    }
    if (isTiff(file)) {
        return PictureFormat(Tiff);
    }
    return PictureFormat(file.startsWith("BM") ? Bmp : Unknown);
}

QString PictureFormat::knownSuffixes()
{
    return QStringLiteral("jpg, jpeg, png, webp, tif, tiff or bmp");
}

QByteArray PictureFormat::qtName() const
{
    switch (m_kind) {
    case Jpeg:
        return "jpeg";
    case Png:
        return "png";
    case WebP:
        return "webp";
    case Tiff:
        return "tiff";
    case Bmp:
        return "bmp";
    case Unknown:
        break;
    }
    return {};
}

bool PictureFormat::holdsAlpha() const
{
    return m_kind != Jpeg && m_kind != Bmp;
}

EmbeddedData PictureFormat::takeData(QByteArray *file) const
{
    switch (m_kind) {
    case Jpeg:
        return readJpegContainer(*file);
    case Png:
        return takePngContainer(file);
    case WebP:
        return readWebPContainer(*file);
    case Tiff:
        return takeTiffContainer(file);
    case Bmp:
    case Unknown:
        break;
    }
    return {};
}

QByteArray PictureFormat::withData(QByteArray file, const EmbeddedData &data, const QImage &image,
                                   QStringList *leftOut) const
{
    const bool any = !data.iccProfile.isEmpty() || !data.exif.isEmpty() || !data.xmp.isEmpty() ||
                     !data.photoshop.isEmpty() || !data.comments.isEmpty();
    if (!any) {
        return file;
    }
    switch (m_kind) {
    case Jpeg:
        return jpegWithData(std::move(file), data, leftOut);
    case Png:
        return pngWithData(file, data);
    case WebP:
        return webPWithData(file, data, image.size(), image.hasAlphaChannel());
    case Tiff:
        return tiffWithData(file, data, leftOut);
    case Bmp:
    case Unknown:
        break;
    }
    return file;
}

} // namespace ko::exporter
