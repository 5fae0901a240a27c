#pragma once

#include <QtGui/QSurfaceFormat>
#include <qpa/qplatformoffscreensurface.h>

// The surface of a QOffscreenSurface: none at all. Contexts made current on it have no default
// framebuffer; draw into framebuffer objects.
class HeadlessOffscreenSurface : public QPlatformOffscreenSurface
{
public:
    HeadlessOffscreenSurface(QOffscreenSurface *surface, const QSurfaceFormat &format)
        : QPlatformOffscreenSurface(surface), m_format(format)
    {
    }

    QSurfaceFormat format() const override { return m_format; }
    bool isValid() const override { return true; }

private:
    QSurfaceFormat m_format;
};
