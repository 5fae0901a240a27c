#include "imagefx/render/FramebufferCopy.h"

#include "imagefx/render/BasePass.h"

#include <QtGui/QOpenGLFramebufferObject>

namespace ko::imagefx
{

void copyFramebuffer(QOpenGLFramebufferObject *source, QOpenGLFramebufferObject *target)
{
    if (QOpenGLFramebufferObject::hasOpenGLFramebufferBlit()) {
        QOpenGLFramebufferObject::blitFramebuffer(target, source, GL_COLOR_BUFFER_BIT, GL_NEAREST);
        return;
    }
    target->bind();
    BasePass::shared()->draw(source->texture(), QRectF(0.0, 0.0, 1.0, 1.0));
    target->release();
}

} // namespace ko::imagefx
