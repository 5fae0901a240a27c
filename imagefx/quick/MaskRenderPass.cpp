#include "imagefx/quick/MaskRenderPass.h"

#include "imagefx/model/ImageEffect.h"
#include "imagefx/quick/MaskGatherPass.h"
#include "imagefx/render/QuadProgram.h"
#include "imagefx/render/TextureUnits.h"

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>

namespace ko::imagefx
{

MaskRenderPass::MaskRenderPass()
{
    linkQuadProgram(this, ImageEffect::readShader(QStringLiteral("pb_base.vert")),
                    ImageEffect::readShader(QStringLiteral("pb_maskrender.frag")));
    if (bind()) {
        setUniformValue("u_mask", sourceUnit);
        release();
    }
    // The vertex shader spells both names in lower case, so neither is found: the quad is drawn
    // with the arrays that the draw before it left enabled at the library's fixed locations.
    m_vertexLocation = attributeLocation("a_Vertex");
    m_texCoordLocation = attributeLocation("a_TexCoord");
}

MaskRenderPass::~MaskRenderPass() = default;

void MaskRenderPass::draw(QOpenGLFramebufferObject *target, const MaskGatherPass *gatherPass)
{
    if (gatherPass->texture() == 0) {
        return;
    }
    target->bind();
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    gl->glEnable(GL_BLEND);
    gl->glBlendEquationSeparate(GL_FUNC_ADD, GL_FUNC_ADD);
    gl->glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    bindTexture(sourceUnit, gatherPass->texture());
    drawQuad(this, m_vertexLocation, m_texCoordLocation);
    target->release();
}

} // namespace ko::imagefx
