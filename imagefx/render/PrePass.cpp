#include "imagefx/render/PrePass.h"

#include "imagefx/model/ImageEffect.h"
#include "imagefx/render/QuadProgram.h"
#include "imagefx/render/TextureUnits.h"

#include <QtGui/QOpenGLFramebufferObject>

namespace ko::imagefx
{

PrePass::PrePass(const QByteArray &fragmentShader)
{
    linkQuadProgram(this, ImageEffect::readShader(QStringLiteral("fx_default.vert")),
                    ImageEffect::readShader(QStringLiteral("fx_defs.frag")) + fragmentShader);
    m_vertexLocation = attributeLocation("a_vertex");
    m_texCoordLocation = attributeLocation("a_texCoord");
    m_radiusLocation = uniformLocation("u_radius");
    if (bind()) {
        setUniformValue("u_source", sourceUnit);
        release();
    }
}

void PrePass::draw(const QOpenGLFramebufferObject *source, QOpenGLFramebufferObject *target,
                   float radius)
{
    bindTexture(sourceUnit, source->texture());
    target->bind();
    if (isLinked() && bind()) {
        setUniformValue(m_radiusLocation, radius);
    }
    drawQuad(this, m_vertexLocation, m_texCoordLocation);
    target->release();
}

} // namespace ko::imagefx
