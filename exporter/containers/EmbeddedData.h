#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QStringList>

namespace ko::exporter
{

// What a picture file carries beside its pixels, as raw bytes; empty where it
// has none. The bytes are taken over as they are, so nothing that we do not
// understand gets lost.
struct EmbeddedData {
    QByteArray iccProfile;
    // A TIFF structure.
    QByteArray exif;
    // An XMP packet.
    QByteArray xmp;
    // Photoshop's image resources, of which one is the IPTC data.
    QByteArray photoshop;

    // Only JPEG holds these. Parts of a large XMP packet, each with its header,
    // and comments.
    QList<QByteArray> extendedXmp;
    QList<QByteArray> comments;

    // What the file has and these do not hold, since it cannot be read from a
    // file of this kind: the profile, and others by their names for people.
    bool hasUnreadProfile = false;
    QStringList unread;
};

} // namespace ko::exporter
