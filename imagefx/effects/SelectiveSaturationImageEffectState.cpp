#include "imagefx/effects/SelectiveSaturationImageEffectState.h"

#include "imagefx/effects/SelectiveSaturationImageEffect.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/TextureUnits.h"

#include <QtGui/QOpenGLFunctions>

namespace ko::imagefx
{

namespace
{

// 360 is no power of two: where such a texture cannot repeat it would read as black. The shader
// wraps the hue itself, so clamping gives the same picture there.
GLenum wrapMode()
{
    const QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    return gl->hasOpenGLFeature(QOpenGLFunctions::NPOTTextureRepeat) ? GL_REPEAT : GL_CLAMP_TO_EDGE;
}

} // namespace

SelectiveSaturationImageEffectState::SelectiveSaturationImageEffectState()
    : ImageEffectState(QStringLiteral("ko.orvanto.imageeffect.SelectiveSaturation")),
      m_table(hueTableUnit, GL_ALPHA, wrapMode())
{
}

QByteArray SelectiveSaturationImageEffectState::effectShaderCode(const PixelBufferState *pbs) const
{
    Q_UNUSED(pbs)
    return ImageEffect::readShader(QStringLiteral("fx_selectivesaturation.frag"));
}

void SelectiveSaturationImageEffectState::initializePass(ImageEffectPass *pass)
{
    ImageEffectState::initializePass(pass);
    pass->setUniformValue("u_table", hueTableUnit);
}

void SelectiveSaturationImageEffectState::updatePass(const QSharedPointer<ImageEffectPass> &pass,
                                                     const PixelBufferState *pbs)
{
    ImageEffectState::updatePass(pass, pbs);
    m_table.bind();
}

void SelectiveSaturationImageEffectState::update(const ImageEffect *effect)
{
    ImageEffectState::update(effect);
    const QImage table = static_cast<const SelectiveSaturationImageEffect *>(effect)->table();
    m_table.setTexels(table.constScanLine(0), table.width());
}

} // namespace ko::imagefx
