#pragma once

#include "imagefx/render/TableTexture.h"

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

class QOpenGLShaderProgram;

namespace ko::imagefx
{

class AlphaMask;
class ImageEffectPass;
struct PixelBufferState;

// The render thread's snapshot of an alpha mask: its gradient as a texture on unit 4. Everything
// but the getters and the destructor needs a current GL context.
class AlphaMaskState
{
public:
    explicit AlphaMaskState(const QString &maskId);
    virtual ~AlphaMaskState();

    QString maskId() const { return m_maskId; }
    // True when the mask was switched off at the last update.
    bool disabled() const { return m_disabled; }
    // Location of "u_maskGradient" in the program last resolved.
    int gradientLocation() const { return m_gradientLocation; }

    // Copies what the frame needs from the mask, while its thread is blocked.
    virtual void update(const AlphaMask *mask);
    virtual void resolveUniforms(const QOpenGLShaderProgram *program);
    // Before every draw of an effect that carries the mask.
    virtual void updatePass(const QSharedPointer<ImageEffectPass> &pass,
                            const PixelBufferState *pbs);
    // Binds the gradient on another unit than its own, for a program that shows the mask itself.
    void bindGradient(int unit) { m_gradient.bind(unit); }
    // The piece that defines fx_mask().
    virtual QByteArray shaderCode() const = 0;

private:
    Q_DISABLE_COPY(AlphaMaskState)

    const QString m_maskId;
    bool m_disabled = false;
    int m_gradientLocation = -1;
    TableTexture m_gradient;
};

} // namespace ko::imagefx
