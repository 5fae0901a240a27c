#pragma once

#include "imagefx/Export.h"

#include <QtCore/QList>
#include <QtCore/QRectF>
#include <QtGui/qopengl.h>

#include <memory>

class QImage;
class QOpenGLFramebufferObject;

namespace ko::imagefx
{

class ImageEffect;

// Draws a picture through a list of effects into a framebuffer, without a window. The render
// functions run on the calling thread with its current GL context, leave the framebuffer unbound
// and keep no GL objects between calls. Every effect is drawn, also one that is off or neutral.
class KORVELIMAGEFX_EXPORT ImageEffectRenderer
{
public:
    // The effects in order of application; not owned, and not to be changed or destroyed while a
    // render() runs. None: a plain copy.
    explicit ImageEffectRenderer(const QList<ImageEffect *> &effects);
    virtual ~ImageEffectRenderer();

    // The part of the source that fills the target, in normalised texture coordinates; default
    // (0, 0, 1, 1), all of it.
    QRectF subRect() const;
    void setSubRect(const QRectF &subRect);

    // Target pixels per pixel of the picture that the effects were set for; default 1. Pixel-sized
    // parameters are multiplied by it.
    float relativeScale() const;
    void setRelativeScale(float scale);

    // Factor on the alpha of every effect; default 1.
    float globalAlpha() const;
    void setGlobalAlpha(float alpha);

    // Draws a texture of premultiplied colour into `target`, whose size is the size of the result.
    // Row 0 of the texture becomes row 0 of the target, its bottom row.
    void render(GLuint textureId, QOpenGLFramebufferObject *target);
    // Uploads the image, whose first scan line becomes row 0. Its colour is taken as it is: the
    // colour of translucent pixels counts as premultiplied.
    void render(const QImage &image, QOpenGLFramebufferObject *target);
    // Draws the premultiplied colour that is in `picture`, without a copy of it and without any
    // framebuffer but the two given, which have one size. Both are drawn over; returns the one that
    // holds the result. subRect() counts as the whole.
    QOpenGLFramebufferObject *renderInPlace(QOpenGLFramebufferObject *picture,
                                            QOpenGLFramebufferObject *spare);

private:
    Q_DISABLE_COPY(ImageEffectRenderer)

    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
