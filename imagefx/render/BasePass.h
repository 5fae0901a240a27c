#pragma once

#include <QtCore/QRectF>
#include <QtCore/QSharedPointer>
#include <QtGui/QOpenGLShaderProgram>
#include <QtGui/qopengl.h>

class QSGTexture;

namespace ko::imagefx
{

// The plain copy: draws a texture, or a part of it, over the whole of the bound framebuffer. The
// caller binds and clears the framebuffer and sets viewport and blending. Belongs to the context it
// was created in.
class BasePass : public QOpenGLShaderProgram
{
    Q_OBJECT

public:
    BasePass();

    // The pass that all renderers of the current context share; it lives while someone holds it.
    static QSharedPointer<BasePass> shared();

    // `texRect` in normalised texture coordinates: its smaller y goes to the framebuffer's bottom.
    void draw(const QRectF &texRect); // from the texture bound on unit 0
    void draw(GLuint textureId, const QRectF &texRect);
    void draw(QSGTexture *texture, const QRectF &texRect);

private:
    int m_vertexLocation;
    int m_texCoordLocation;
};

} // namespace ko::imagefx
