#include "tests/support/OffscreenGl.h"

#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>
#include <QtTest/QTest>

namespace ko::imagefx::test
{

OffscreenGl::OffscreenGl(const QSurfaceFormat &format, QOpenGLContext *shareContext)
{
    m_context.setFormat(format);
    m_context.setShareContext(shareContext);
    m_surface.setFormat(format);
    m_surface.create();
    m_valid = m_context.create() && makeCurrent();
}

QImage readBack(QOpenGLFramebufferObject *framebuffer)
{
    QImage image(framebuffer->size(), QImage::Format_RGBA8888);
    framebuffer->bind();
    QOpenGLContext::currentContext()->functions()->glReadPixels(
        0, 0, image.width(), image.height(), GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    framebuffer->release();
    // Whatever was drawn and read must leave no error behind.
    const GLenum error = QOpenGLContext::currentContext()->functions()->glGetError();
    if (error != GL_NO_ERROR) {
        QTest::qFail(qPrintable(QStringLiteral("GL error 0x%1 pending").arg(error, 0, 16)),
                     __FILE__, __LINE__);
    }
    return image;
}

GLuint uploadRgba(const QImage &image)
{
    Q_ASSERT(image.format() == QImage::Format_RGBA8888 ||
             image.format() == QImage::Format_RGBA8888_Premultiplied);
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    GLuint textureId = 0;
    gl->glGenTextures(1, &textureId);
    gl->glActiveTexture(GL_TEXTURE0);
    gl->glBindTexture(GL_TEXTURE_2D, textureId);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, image.width(), image.height(), 0, GL_RGBA,
                     GL_UNSIGNED_BYTE, image.constBits());
    return textureId;
}

} // namespace ko::imagefx::test
