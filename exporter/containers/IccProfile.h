#pragma once

#include <QtCore/QByteArray>

namespace ko::exporter
{

// The kind of pixels that a colour profile describes.
enum class ProfileSpace {
    Rgb, // also where the profile cannot be understood: it then goes with whatever it came with
    Gray,
    Other, // such as CMYK: no description of the RGB pixels that a decoder makes of them
};

ProfileSpace profileSpace(const QByteArray &iccProfile);

} // namespace ko::exporter
