#include "imagefx/render/AlphaMaskState.h"

#include "imagefx/model/AlphaMask.h"
#include "imagefx/render/TextureUnits.h"

#include <QtGui/QOpenGLShaderProgram>

namespace ko::imagefx
{

AlphaMaskState::AlphaMaskState(const QString &maskId)
    : m_maskId(maskId), m_gradient(maskGradientUnit, GL_ALPHA)
{
}

AlphaMaskState::~AlphaMaskState() = default;

void AlphaMaskState::update(const AlphaMask *mask)
{
    const QImage gradient = mask->gradient();
    m_disabled = !mask->enabled();
    m_gradient.setTexels(gradient.constScanLine(0), gradient.width());
}

void AlphaMaskState::resolveUniforms(const QOpenGLShaderProgram *program)
{
    m_gradientLocation = program->uniformLocation("u_maskGradient");
}

void AlphaMaskState::updatePass(const QSharedPointer<ImageEffectPass> &pass,
                                const PixelBufferState *pbs)
{
    Q_UNUSED(pass)
    Q_UNUSED(pbs)
    m_gradient.bind();
}

} // namespace ko::imagefx
