#pragma once

#include "imagefx/render/PassTargets.h"

#include <QtGui/QOpenGLShaderProgram>

class QSGTexture;

namespace ko::imagefx
{

// Cuts the finished picture by the red channel of another item's texture. Belongs to the context it
// was created in.
class MaskPass : public QOpenGLShaderProgram
{
    Q_OBJECT

public:
    MaskPass();
    ~MaskPass() override;

    // The cut picture goes into the target; the mask is stretched over it. Blending must be off.
    void draw(const PassTargets &targets, QSGTexture *mask);

private:
    int m_vertexLocation;
    int m_texCoordLocation;
};

} // namespace ko::imagefx
