#include "exporter/CmykConversion.h"

#include <lcms2.h>

#include <cstring>

namespace ko::exporter
{

namespace
{

cmsHTRANSFORM makeTransform(cmsContext context, const QByteArray &iccProfile, bool inverted)
{
    cmsHPROFILE source = cmsOpenProfileFromMemTHR(context, iccProfile.constData(),
                                                  cmsUInt32Number(iccProfile.size()));
    if (source == nullptr) {
        return nullptr;
    }
    cmsHTRANSFORM transform = nullptr;
    if (cmsGetColorSpace(source) == cmsSigCmykData) {
        cmsHPROFILE target = cmsCreate_sRGBProfileTHR(context);
        transform = cmsCreateTransformTHR(context, source, inverted ? TYPE_CMYK_8_REV : TYPE_CMYK_8,
                                          target, TYPE_RGBA_8, INTENT_RELATIVE_COLORIMETRIC,
                                          cmsFLAGS_BLACKPOINTCOMPENSATION);
        cmsCloseProfile(target);
    }
    cmsCloseProfile(source);
    return transform;
}

uchar product(int a, int b)
{
    return uchar((a * b + 127) / 255);
}

} // namespace

CmykConversion::CmykConversion(const QByteArray &iccProfile, bool inverted) : m_inverted(inverted)
{
    if (iccProfile.isEmpty()) {
        return;
    }
    // A context of its own prints nothing and shares nothing with other threads.
    m_context = cmsCreateContext(nullptr, nullptr);
    m_transform = makeTransform(static_cast<cmsContext>(m_context), iccProfile, inverted);
}

CmykConversion::~CmykConversion()
{
    if (m_transform != nullptr) {
        cmsDeleteTransform(m_transform);
    }
    if (m_context != nullptr) {
        cmsDeleteContext(static_cast<cmsContext>(m_context));
    }
}

void CmykConversion::convert(const uchar *cmyk, uchar *rgbx, int count) const
{
    if (m_transform != nullptr) {
        // The fourth byte stays as it is.
        std::memset(rgbx, 0xff, 4 * std::size_t(count));
        cmsDoTransform(m_transform, cmyk, rgbx, cmsUInt32Number(count));
        return;
    }
    const int flip = m_inverted ? 0 : 255;
    for (int i = 0; i < count; ++i, cmyk += 4, rgbx += 4) {
        for (int channel = 0; channel < 3; ++channel) {
            rgbx[channel] = product(cmyk[channel] ^ flip, cmyk[3] ^ flip);
        }
        rgbx[3] = 255;
    }
}

} // namespace ko::exporter
