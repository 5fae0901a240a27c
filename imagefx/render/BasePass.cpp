#include "imagefx/render/BasePass.h"

#include "imagefx/model/ImageEffect.h"
#include "imagefx/render/QuadProgram.h"
#include "imagefx/render/TextureUnits.h"

#include <QtCore/QVariant>
#include <QtGui/QOpenGLContext>
#include <QtQuick/QSGTexture>

Q_DECLARE_METATYPE(QWeakPointer<ko::imagefx::BasePass>)

namespace ko::imagefx
{

BasePass::BasePass()
{
    linkQuadProgram(this, ImageEffect::readShader(QStringLiteral("pb_base.vert")),
                    ImageEffect::readShader(QStringLiteral("pb_base.frag")));
    if (bind()) {
        setUniformValue("u_texture", sourceUnit);
        release();
    }
    m_vertexLocation = attributeLocation("a_vertex");
    m_texCoordLocation = attributeLocation("a_texCoord");
}

// The context itself remembers its pass, so two render threads never share a program.
QSharedPointer<BasePass> BasePass::shared()
{
    constexpr const char *property = "_ko_imagefx_basePass";
    QOpenGLContext *context = QOpenGLContext::currentContext();
    auto pass = context->property(property).value<QWeakPointer<BasePass>>().toStrongRef();
    if (!pass) {
        pass = QSharedPointer<BasePass>::create();
        context->setProperty(property, QVariant::fromValue(pass.toWeakRef()));
    }
    return pass;
}

void BasePass::draw(const QRectF &texRect)
{
    drawQuad(this, m_vertexLocation, m_texCoordLocation,
             {QVector2D(texRect.topLeft()), QVector2D(texRect.topRight()),
              QVector2D(texRect.bottomLeft()), QVector2D(texRect.bottomRight())});
}

void BasePass::draw(GLuint textureId, const QRectF &texRect)
{
    bindTexture(sourceUnit, textureId);
    draw(texRect);
}

void BasePass::draw(QSGTexture *texture, const QRectF &texRect)
{
    activateTextureUnit(sourceUnit);
    texture->bind();
    draw(texRect);
}

} // namespace ko::imagefx
