#include "exporter/containers/TiffContainer.h"

#include <exiv2/exiv2.hpp>

namespace ko::exporter
{

namespace
{

const Exiv2::byte *bytesOf(const QByteArray &array)
{
    return reinterpret_cast<const Exiv2::byte *>(array.constData());
}

Exiv2::Image::AutoPtr openTiff(const QByteArray &file)
{
    Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(bytesOf(file), long(file.size()));
    image->readMetadata();
    return image;
}

QByteArray contentOf(Exiv2::BasicIo &io)
{
    QByteArray content(int(io.size()), '\0');
    io.open();
    const long count = io.read(reinterpret_cast<Exiv2::byte *>(content.data()), content.size());
    io.close();
    return count == content.size() ? content : QByteArray();
}

} // namespace

EmbeddedData readTiffContainer(const QByteArray &file)
{
    EmbeddedData data;
    try {
        const Exiv2::Image::AutoPtr image = openTiff(file);
        const Exiv2::DataBuf *profile = image->iccProfile();
        data.iccProfile =
            QByteArray(reinterpret_cast<const char *>(profile->pData_), int(profile->size_));
    } catch (const std::exception &) {
        return {};
    }
    return data;
}

QByteArray tiffWithProfile(const QByteArray &file, const QByteArray &iccProfile)
{
    try {
        const Exiv2::Image::AutoPtr image = openTiff(file);
        Exiv2::DataBuf profile(bytesOf(iccProfile), long(iccProfile.size()));
        image->setIccProfile(profile, false);
        image->writeMetadata();
        return contentOf(image->io());
    } catch (const std::exception &) {
        return {};
    }
}

} // namespace ko::exporter
