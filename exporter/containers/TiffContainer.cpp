#include "exporter/containers/TiffContainer.h"

#include "exporter/containers/BigTiff.h"
#include "exporter/containers/PhotoshopBlock.h"
#include "exporter/containers/TiffDirectory.h"

#include <exiv2/exiv2.hpp>

#include <algorithm>
#include <mutex>

namespace ko::exporter
{

namespace
{

enum Tag : quint16 {
    xResolution = 0x011a,
    yResolution = 0x011b,
    resolutionUnit = 0x0128,
    xmpPacket = 700,
    xmpStandIn = 701,
    iptcData = 33723,
    photoshopResources = 34377,
    iccProfile = 34675,
    hiddenTag = 0xfffe,
};

const Exiv2::byte *bytesOf(const QByteArray &array)
{
    return reinterpret_cast<const Exiv2::byte *>(array.constData());
}

// Exiv2 prints what it thinks of a file, and starts its XMP part at first use,
// on any thread.
void startExiv2()
{
    static std::once_flag once;
    std::call_once(once, [] {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        static std::recursive_mutex mutex;
        Exiv2::XmpParser::initialize(
            [](void *data, bool lock) {
                auto *shared = static_cast<std::recursive_mutex *>(data);
                lock ? shared->lock() : shared->unlock();
            },
            &mutex);
    });
}

QByteArray takeContent(TiffBytes *tiff, quint32 directory, quint16 tag)
{
    const std::optional<quint32> entry = tiff->findEntry(directory, tag);
    if (!entry) {
        return {};
    }
    QByteArray content = tiff->content(*entry);
    tiff->renameEntry(directory, tag, hiddenTag);
    return content;
}

// Takes out what Exiv2 would parse on the way, XMP above all: its parser goes
// as deep as the packet.
EmbeddedData takeRawData(QByteArray *bytes)
{
    EmbeddedData data;
    TiffBytes tiff(*bytes);
    if (const std::optional<quint32> directory = tiff.firstDirectory()) {
        data.iccProfile = takeContent(&tiff, *directory, iccProfile);
        data.xmp = takeContent(&tiff, *directory, xmpPacket);
        const QByteArray iptc = takeContent(&tiff, *directory, iptcData);
        data.photoshop = takeContent(&tiff, *directory, photoshopResources);
        if (iptcIn(data.photoshop).isEmpty()) {
            data.photoshop += photoshopWithIptc(iptc);
        }
    }
    return data;
}

// Tags that describe how the pixels of this one file are stored.
bool describesStorage(quint16 tag)
{
    switch (tag) {
    case 0x00fe:    // new subfile type
    case 0x00ff:    // subfile type
    case 0x0100:    // width
    case 0x0101:    // height
    case 0x0102:    // bits a sample
    case 0x0103:    // compression
    case 0x0106:    // photometric interpretation
    case 0x010a:    // fill order
    case 0x0111:    // strip positions
    case 0x0112:    // orientation
    case 0x0115:    // samples a pixel
    case 0x0116:    // rows a strip
    case 0x0117:    // strip sizes
    case 0x011c:    // planar configuration
    case 0x013d:    // predictor
    case 0x0140:    // colour map
    case 0x0142:    // tile width
    case 0x0143:    // tile height
    case 0x0144:    // tile positions
    case 0x0145:    // tile sizes
    case 0x014a:    // further directories
    case 0x0152:    // extra samples
    case 0x0153:    // sample format
    case 0x015b:    // JPEG tables
    case 0x0211:    // chroma coefficients
    case 0x0212:    // chroma subsampling
    case 0x0213:    // chroma position
    case 0x0214:    // reference black and white
    case hiddenTag: // what takeRawData() hid
        return true;
    default:
        return false;
    }
}

// What is worth to be carried over: no thumbnails and further pages, nothing
// about storage.
bool isCarried(const Exiv2::Exifdatum &datum)
{
    const std::string group = datum.groupName();
    if (group == "Image") {
        return !describesStorage(datum.tag());
    }
    return group != "Thumbnail" && group.compare(0, 8, "SubImage") != 0 &&
           group.compare(0, 5, "Image") != 0;
}

// Whether nothing is lost with what is not carried over, as where there is nothing but an
// orientation, which the target does not need.
bool describesStorageOnly(const Exiv2::ExifData &all)
{
    return !all.empty() && std::all_of(all.begin(), all.end(), [](const Exiv2::Exifdatum &datum) {
        return datum.groupName() == "Image" && datum.tag() != hiddenTag &&
               describesStorage(datum.tag());
    });
}

Exiv2::ExifData carried(const Exiv2::ExifData &all)
{
    Exiv2::ExifData kept;
    for (const Exiv2::Exifdatum &datum : all) {
        if (isCarried(datum)) {
            kept.add(datum);
        }
    }
    return kept;
}

// What is there, told by its tags. The resolution comes with the pixels.
EmbeddedData unreadInBigTiff(const std::vector<quint16> &tags)
{
    EmbeddedData data;
    const auto note = [&data](const QString &kind) {
        if (!data.unread.contains(kind)) {
            data.unread.append(kind);
        }
    };
    for (const quint16 tag : tags) {
        if (tag == iccProfile) {
            data.hasUnreadProfile = true;
        } else if (tag == xmpPacket) {
            note(QStringLiteral("XMP data"));
        } else if (tag == iptcData) {
            note(QStringLiteral("IPTC data"));
        } else if (tag == photoshopResources) {
            note(QStringLiteral("image resources"));
        } else if (!describesStorage(tag) && tag != xResolution && tag != yResolution &&
                   tag != resolutionUnit) {
            note(QStringLiteral("EXIF data"));
        }
    }
    return data;
}

QByteArray exifBlock(const QByteArray &file)
{
    Exiv2::ExifData all;
    const Exiv2::ByteOrder order =
        Exiv2::ExifParser::decode(all, bytesOf(file), uint32_t(file.size()));
    const Exiv2::ExifData kept = carried(all);
    if (kept.empty() || order == Exiv2::invalidByteOrder) {
        return {};
    }
    Exiv2::Blob blob;
    Exiv2::ExifParser::encode(blob, order, kept);
    return QByteArray(reinterpret_cast<const char *>(blob.data()), int(blob.size()));
}

QByteArray contentOf(Exiv2::BasicIo &io)
{
    QByteArray content(int(io.size()), '\0');
    io.open();
    const long count = io.read(reinterpret_cast<Exiv2::byte *>(content.data()), content.size());
    io.close();
    return count == content.size() ? content : QByteArray();
}

void addExif(Exiv2::Image *image, const QByteArray &exif, QStringList *leftOut)
{
    if (exif.isEmpty()) {
        return;
    }
    QByteArray block = exif;
    takeRawData(&block);
    Exiv2::ExifData all;
    try {
        Exiv2::ExifParser::decode(all, bytesOf(block), uint32_t(block.size()));
    } catch (const std::exception &) {
        all.clear();
    }
    const Exiv2::ExifData kept = carried(all);
    if (kept.empty() && !describesStorageOnly(all)) {
        leftOut->append(QStringLiteral("EXIF data"));
    }
    Exiv2::ExifData &exifData = image->exifData();
    for (const Exiv2::Exifdatum &datum : kept) {
        const auto old = exifData.findKey(Exiv2::ExifKey(datum.key()));
        if (old != exifData.end()) {
            exifData.erase(old);
        }
    }
    for (const Exiv2::Exifdatum &datum : kept) {
        exifData.add(datum);
    }
}

void addPhotoshop(Exiv2::Image *image, const QByteArray &photoshop, QStringList *leftOut)
{
    if (photoshop.isEmpty()) {
        return;
    }
    Exiv2::DataValue value(Exiv2::unsignedByte);
    value.read(bytesOf(photoshop), photoshop.size());
    image->exifData().add(Exiv2::ExifKey("Exif.Image.ImageResources"), &value);
    const QByteArray iptc = iptcIn(photoshop);
    if (!iptc.isEmpty() &&
        Exiv2::IptcParser::decode(image->iptcData(), bytesOf(iptc), uint32_t(iptc.size())) != 0) {
        leftOut->append(QStringLiteral("IPTC data"));
    }
}

// Exiv2 would parse a packet that it knows to be one, so it comes under the next number, which
// nobody uses, and gets its own afterwards.
void addXmp(Exiv2::Image *image, const QByteArray &xmp)
{
    if (!xmp.isEmpty()) {
        Exiv2::DataValue value(Exiv2::unsignedByte);
        value.read(bytesOf(xmp), xmp.size());
        image->exifData().add(Exiv2::ExifKey(xmpStandIn, "Image"), &value);
    }
}

} // namespace

EmbeddedData takeTiffContainer(QByteArray *file)
{
    startExiv2();
    const std::vector<quint16> bigTags = bigTiffTags(*file);
    if (!bigTags.empty()) {
        return unreadInBigTiff(bigTags);
    }
    EmbeddedData data = takeRawData(file);
    try {
        data.exif = exifBlock(*file);
    } catch (const std::exception &) {
        data.exif.clear();
    }
    return data;
}

QByteArray tiffWithData(const QByteArray &file, const EmbeddedData &data, QStringList *leftOut)
{
    startExiv2();
    const bool hasOnlyProfile =
        data.exif.isEmpty() && data.xmp.isEmpty() && data.photoshop.isEmpty();
    EmbeddedData onlyProfile;
    onlyProfile.iccProfile = data.iccProfile;
    try {
        const Exiv2::Image::AutoPtr image =
            Exiv2::ImageFactory::open(bytesOf(file), long(file.size()));
        image->readMetadata();
        if (!data.iccProfile.isEmpty()) {
            Exiv2::DataBuf profile(bytesOf(data.iccProfile), long(data.iccProfile.size()));
            image->setIccProfile(profile, false);
        }
        addExif(image.get(), data.exif, leftOut);
        addPhotoshop(image.get(), data.photoshop, leftOut);
        addXmp(image.get(), data.xmp);
        image->writeMetadata();
        QByteArray result = contentOf(image->io());
        if (!result.isEmpty()) {
            TiffBytes tiff(result);
            tiff.renameEntry(tiff.firstDirectory().value_or(0), xmpStandIn, xmpPacket);
            return result;
        }
    } catch (const std::exception &) {
    }
    leftOut->append(hasOnlyProfile ? QStringLiteral("ICC profile") : QStringLiteral("metadata"));
    return hasOnlyProfile ? file : tiffWithData(file, onlyProfile, leftOut);
}

} // namespace ko::exporter
