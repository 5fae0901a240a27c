#pragma once

class QOpenGLFramebufferObject;

namespace ko::imagefx
{

// Copies the colour of one framebuffer into another of the same size, by a blit where the context
// has one. Leaves both unbound.
void copyFramebuffer(QOpenGLFramebufferObject *source, QOpenGLFramebufferObject *target);

} // namespace ko::imagefx
