#include "imagefx/quick/MaskPass.h"

#include "imagefx/model/ImageEffect.h"
#include "imagefx/render/QuadProgram.h"
#include "imagefx/render/TextureUnits.h"

#include <QtGui/QOpenGLFramebufferObject>
#include <QtQuick/QSGTexture>

namespace ko::imagefx
{

MaskPass::MaskPass()
{
    linkQuadProgram(this, ImageEffect::readShader(QStringLiteral("pb_base.vert")),
                    ImageEffect::readShader(QStringLiteral("pb_mask.frag")));
    if (bind()) {
        setUniformValue("u_source", sourceUnit);
        setUniformValue("u_mask", tableUnit);
        release();
    }
    m_vertexLocation = attributeLocation("a_vertex");
    m_texCoordLocation = attributeLocation("a_texCoord");
}

MaskPass::~MaskPass() = default;

void MaskPass::draw(const PassTargets &targets, QSGTexture *mask)
{
    targets.target->bind();
    bindTexture(sourceUnit, targets.source->texture());
    activateTextureUnit(tableUnit);
    mask->bind();
    drawQuad(this, m_vertexLocation, m_texCoordLocation);
    targets.target->release();
}

} // namespace ko::imagefx
