#include "imagefx/quick/MaskGatherPass.h"

#include "imagefx/model/ImageEffect.h"
#include "imagefx/render/AlphaMaskState.h"
#include "imagefx/render/QuadProgram.h"
#include "imagefx/render/TextureUnits.h"

namespace ko::imagefx
{

MaskGatherPass::MaskGatherPass(const QSharedPointer<AlphaMaskState> &mask) : m_mask(mask)
{
    linkQuadProgram(this, ImageEffect::readShader(QStringLiteral("pb_maskgather.vert")),
                    mask->shaderCode() +
                        ImageEffect::readShader(QStringLiteral("pb_maskgather.frag")));
    m_vertexLocation = attributeLocation("a_Vertex");
    m_texCoordLocation = attributeLocation("a_TexCoord");
    if (bind()) {
        setUniformValue("u_source", sourceUnit);
        setUniformValue("u_maskGradient", tableUnit);
        release();
    }
}

MaskGatherPass::~MaskGatherPass() = default;

void MaskGatherPass::gather(const QOpenGLFramebufferObject *source)
{
    m_gathered = std::make_unique<QOpenGLFramebufferObject>(
        source->size(), QOpenGLFramebufferObject::NoAttachment, GL_TEXTURE_2D, GL_RGBA);
    m_gathered->bind();
    bindTexture(sourceUnit, source->texture());
    m_mask->bindGradient(tableUnit);
    drawQuad(this, m_vertexLocation, m_texCoordLocation);
    m_gathered->release();
}

} // namespace ko::imagefx
