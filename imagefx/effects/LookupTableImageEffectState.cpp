#include "imagefx/effects/LookupTableImageEffectState.h"

#include "imagefx/effects/LookupTableImageEffect.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/TextureUnits.h"

namespace ko::imagefx
{

namespace
{

constexpr int bytesPerTexel = 3;

// Without a table the picture stays as it is.
QByteArray identityTable()
{
    QByteArray texels;
    for (int level = 0; level < 256; ++level) {
        texels.append(bytesPerTexel, char(level));
    }
    return texels;
}

} // namespace

LookupTableImageEffectState::LookupTableImageEffectState()
    : ImageEffectState(QStringLiteral("ko.orvanto.imageeffect.LUT")), m_table(tableUnit, GL_RGB)
{
}

QByteArray LookupTableImageEffectState::effectShaderCode(const PixelBufferState *pbs) const
{
    Q_UNUSED(pbs)
    return ImageEffect::readShader(QStringLiteral("fx_lut.frag"));
}

void LookupTableImageEffectState::initializePass(ImageEffectPass *pass)
{
    ImageEffectState::initializePass(pass);
    pass->setUniformValue("u_lut", tableUnit);
}

void LookupTableImageEffectState::updatePass(const QSharedPointer<ImageEffectPass> &pass,
                                             const PixelBufferState *pbs)
{
    ImageEffectState::updatePass(pass, pbs);
    m_table.bind();
}

void LookupTableImageEffectState::update(const ImageEffect *effect)
{
    ImageEffectState::update(effect);
    const QImage lut = static_cast<const LookupTableImageEffect *>(effect)->lut();
    const QByteArray texels = lut.isNull()
                                  ? identityTable()
                                  : QByteArray(reinterpret_cast<const char *>(lut.constScanLine(0)),
                                               lut.width() * bytesPerTexel);
    m_table.setTexels(texels, texels.size() / bytesPerTexel);
}

} // namespace ko::imagefx
