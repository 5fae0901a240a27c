#pragma once

#include <QtCore/QList>
#include <QtGui/QImage>

#include <memory>

class QOpenGLFramebufferObject;

namespace ko::imagefx
{
class ImageEffect;
}

namespace ko::exporter
{

// Draws pictures through effects with GL, one after the other. Its GL objects
// stay from picture to picture as long as their size is the same. To be used
// and destroyed while one and the same GL context is current.
class PictureRenderer
{
public:
    PictureRenderer();
    ~PictureRenderer();

    // Draws the picture through `effects` in order, at its own size. Every effect
    // given is drawn; their pixel-sized parameters are multiplied by `scale`. The
    // result is in the picture's own memory, where nobody shares it:
    // Format_RGBX8888 for an opaque picture, for a translucent one
    // Format_RGBA8888. False when memory ran out; the picture is of no use then.
    // It must be within the limits of the context.
    bool draw(QImage *picture, const QList<imagefx::ImageEffect *> &effects, float scale);

private:
    Q_DISABLE_COPY(PictureRenderer)

    bool upload(const QImage &picture);

    // One holds the picture, the other what is made of it.
    std::unique_ptr<QOpenGLFramebufferObject> m_first;
    std::unique_ptr<QOpenGLFramebufferObject> m_second;
};

} // namespace ko::exporter
