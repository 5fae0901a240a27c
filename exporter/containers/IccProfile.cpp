#include "exporter/containers/IccProfile.h"

namespace ko::exporter
{

// ICC.1: the header has 128 bytes, the data colour space at 16 and the signature at 36.
ProfileSpace profileSpace(const QByteArray &iccProfile)
{
    if (iccProfile.size() < 128 || iccProfile.mid(36, 4) != "acsp") {
        return ProfileSpace::Rgb;
    }
    const QByteArray space = iccProfile.mid(16, 4);
    if (space == "GRAY") {
        return ProfileSpace::Gray;
    }
    return space == "RGB " ? ProfileSpace::Rgb : ProfileSpace::Other;
}

} // namespace ko::exporter
