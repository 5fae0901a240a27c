#pragma once

class QOpenGLFramebufferObject;

namespace ko::imagefx
{

// The two framebuffers of one effect draw; premultiplied colour in both, never null, not the same.
struct PassTargets {
    QOpenGLFramebufferObject *source; // read as a texture on unit 0
    QOpenGLFramebufferObject *target; // drawn into
};

} // namespace ko::imagefx
