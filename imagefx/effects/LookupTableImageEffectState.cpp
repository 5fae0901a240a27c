#include "imagefx/effects/LookupTableImageEffectState.h"

#include "imagefx/effects/LookupTableImageEffect.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/TextureUnits.h"

#include <array>

namespace ko::imagefx
{

namespace
{

using RgbTable = std::array<std::array<uchar, 3>, 256>;

// Without a table the picture stays as it is.
RgbTable identityTable()
{
    RgbTable texels{};
    for (size_t level = 0; level < texels.size(); ++level) {
        texels.at(level).fill(uchar(level));
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
    if (lut.isNull()) {
        const RgbTable identity = identityTable();
        m_table.setTexels(identity.front().data(), int(identity.size()));
    } else {
        m_table.setTexels(lut.constScanLine(0), lut.width());
    }
}

} // namespace ko::imagefx
