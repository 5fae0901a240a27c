#pragma once

#include "HeadlessOptions.h"

#include <EGL/egl.h>
#include <QtGui/QSurfaceFormat>

#include <memory>

// An initialised EGL display, terminated with the object: every context and surface made on it
// must be gone by then. All members may be called from any thread.
class HeadlessDisplay
{
public:
    // Opens the first display of that kind on which an OpenGL or OpenGL ES 2 context can be made.
    // Null if there is none.
    static std::unique_ptr<HeadlessDisplay> open(HeadlessOptions::Display kind);
    ~HeadlessDisplay();

    HeadlessDisplay(const HeadlessDisplay &) = delete;
    HeadlessDisplay &operator=(const HeadlessDisplay &) = delete;

    EGLDisplay handle() const { return m_handle; }

    // A format as this platform reads it: OpenGL unless OpenGL ES is asked for (or is all that the
    // driver has), and a compatibility profile unless a core profile is asked for.
    QSurfaceFormat resolved(const QSurfaceFormat &requested) const;

    // A configuration with exactly 8 bits for each of red, green, blue and alpha, at least 24 bits
    // of depth and 8 of stencil, for pbuffers, with the requested number of samples if the driver
    // offers it and else fewer. Null only if the requested API is missing.
    EGLConfig config(const QSurfaceFormat &requested) const;

    // What a surface with config(requested) offers.
    QSurfaceFormat surfaceFormat(const QSurfaceFormat &requested) const;

private:
    explicit HeadlessDisplay(EGLDisplay handle) : m_handle(handle) {}
    bool isUsable(QString *reason);

    EGLDisplay m_handle;
    bool m_hasOpenGL = false;
};
