#pragma once

#include <QtCore/QByteArray>

namespace ko::exporter
{

// From CMYK with 8 bits a channel to sRGB: through the picture's profile,
// relative colorimetric with black point compensation, as printers' tools do;
// without a usable profile by the plain formula R = (1 - C)(1 - K).
class CmykConversion
{
public:
    // `inverted`: 255 means no ink.
    CmykConversion(const QByteArray &iccProfile, bool inverted);
    ~CmykConversion();

    bool usesProfile() const { return m_transform != nullptr; }

    // `count` pixels to four bytes each, the last of which is 255.
    void convert(const uchar *cmyk, uchar *rgbx, int count) const;

private:
    Q_DISABLE_COPY(CmykConversion)

    const bool m_inverted;
    void *m_context = nullptr;
    void *m_transform = nullptr;
};

} // namespace ko::exporter
