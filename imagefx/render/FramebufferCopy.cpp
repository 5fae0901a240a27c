#include "imagefx/render/FramebufferCopy.h"

#include "imagefx/render/BasePass.h"

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>

namespace ko::imagefx
{

void copyFramebuffer(QOpenGLFramebufferObject *source, QOpenGLFramebufferObject *target)
{
    if (QOpenGLFramebufferObject::hasOpenGLFramebufferBlit()) {
        QOpenGLFramebufferObject::blitFramebuffer(target, source, GL_COLOR_BUFFER_BIT, GL_NEAREST);
        return;
    }
    target->bind();
    // A caller between two frames has the viewport of something else.
    QOpenGLContext::currentContext()->functions()->glViewport(0, 0, target->width(),
                                                              target->height());
    BasePass::shared()->draw(source->texture(), QRectF(0.0, 0.0, 1.0, 1.0));
    target->release();
}

} // namespace ko::imagefx
