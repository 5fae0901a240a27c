#pragma once

#include <QtGui/QOpenGLShaderProgram>

class QOpenGLFramebufferObject;

namespace ko::imagefx
{

class MaskGatherPass;

// Shows a gathered mask over a picture as translucent red, most of it where the mask lets least of
// its effect through. Belongs to the context it was created in.
class MaskRenderPass : public QOpenGLShaderProgram
{
    Q_OBJECT

public:
    MaskRenderPass();
    ~MaskRenderPass() override;

    // Another quad must have been drawn in this context before. Leaves blending enabled, and does
    // nothing before something was gathered.
    void draw(QOpenGLFramebufferObject *target, const MaskGatherPass *gatherPass);

private:
    int m_vertexLocation;
    int m_texCoordLocation;
};

} // namespace ko::imagefx
