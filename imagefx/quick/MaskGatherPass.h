#pragma once

#include <QtCore/QSharedPointer>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLShaderProgram>

#include <memory>

namespace ko::imagefx
{

class AlphaMaskState;

// Evaluates an alpha mask on a picture into a texture of its own: per pixel, in all channels, the
// share of the effect that the mask lets through. Belongs to the context it was created in, which
// has to be current in every call, the destructor too.
class MaskGatherPass : public QOpenGLShaderProgram
{
    Q_OBJECT

public:
    // Keeps `mask` alive; never null.
    explicit MaskGatherPass(const QSharedPointer<AlphaMaskState> &mask);
    ~MaskGatherPass() override;

    // Replaces the gathered texture by one of the size of `source`, whose viewport must be set.
    // Blending must be off.
    void gather(const QOpenGLFramebufferObject *source);

    // 0 until something was gathered; owned by the pass.
    GLuint texture() const { return m_gathered ? m_gathered->texture() : 0; }

private:
    int m_vertexLocation;
    int m_texCoordLocation;
    // Kept whole: QOpenGLFramebufferObject::takeTexture() leaks a little with every call.
    std::unique_ptr<QOpenGLFramebufferObject> m_gathered;
    const QSharedPointer<AlphaMaskState> m_mask;
};

} // namespace ko::imagefx
