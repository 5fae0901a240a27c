#include "imagefx/render/ImageEffectState.h"

#include "imagefx/model/ImageEffect.h"
#include "imagefx/render/AlphaMaskState.h"
#include "imagefx/render/BlendModes.h"
#include "imagefx/render/DefaultImageEffectPass.h"
#include "imagefx/render/PassCache.h"
#include "imagefx/render/PixelBufferState.h"
#include "imagefx/render/TextureUnits.h"

#include <QtCore/QCoreApplication>

namespace ko::imagefx
{

namespace
{

constexpr float invisibleAlpha = 0.001F;

// While the application closes down the context of a pass may be gone: the pass is left alone then.
void deletePass(ImageEffectPass *pass)
{
    if (QCoreApplication::instance() != nullptr && !QCoreApplication::closingDown()) {
        delete pass;
    }
}

// bind() alone would link a program again, and fail again, in every frame.
bool bindLinked(ImageEffectPass *pass)
{
    return pass->isLinked() && pass->bind();
}

} // namespace

ImageEffectState::ImageEffectState(const QString &effectId) : m_effectId(effectId) {}

ImageEffectState::~ImageEffectState() = default;

void ImageEffectState::update(const ImageEffect *effect)
{
    const int previousBlend = m_blendMode;
    const bool neutral = effect->isNeutral();
    m_passDisabled = !effect->enabled() || effect->alpha() <= invisibleAlpha ||
                     (previousBlend == ImageEffect::Normal && neutral);
    m_alpha = effect->alpha();
    m_blendMode = effect->blendMode();
    const AlphaMask *mask = effect->alphaMask();
    m_maskState = mask != nullptr ? mask->currentState() : nullptr;
}

QSharedPointer<ImageEffectPass> ImageEffectState::effectPass(const PixelBufferState *pbs)
{
    PassCache &cache = PassCache::instance();
    const QString key = passKey(pbs);
    QSharedPointer<ImageEffectPass> pass = cache.find(key);
    if (!pass) {
        pass = compilePass(pbs);
        cache.insert(key, pass);
    }
    usePass(pass, pbs);
    return pass;
}

void ImageEffectState::restorePass(const PixelBufferState *pbs)
{
    Q_ASSERT(m_resolvedPass);
    usePass(m_resolvedPass, pbs);
}

void ImageEffectState::usePass(const QSharedPointer<ImageEffectPass> &pass,
                               const PixelBufferState *pbs)
{
    const bool bound = bindLinked(pass.data());
    updatePass(pass, pbs);
    if (bound) {
        pass->release();
    }
}

QSharedPointer<ImageEffectPass> ImageEffectState::compilePass(const PixelBufferState *pbs)
{
    QSharedPointer<ImageEffectPass> pass(createPass(pbs), deletePass);
    if (bindLinked(pass.data())) {
        initializePass(pass.data());
        pass->release();
    }
    return pass;
}

// Everything that changes the text of the shader, and nothing else.
QString ImageEffectState::passKey(const PixelBufferState *pbs) const
{
    QString key = m_effectId + effectVariant(pbs);
    if (masked()) {
        key += QLatin1Char(':') + m_maskState->maskId();
    }
    if (m_blendMode != ImageEffect::Normal) {
        key += QStringLiteral(":Blend(%1)").arg(m_blendMode);
    }
    return key;
}

bool ImageEffectState::masked() const
{
    return m_maskState && !m_maskState->disabled();
}

QByteArray ImageEffectState::generateFragmentShader(const PixelBufferState *pbs) const
{
    QByteArray text = ImageEffect::readShader(QStringLiteral("fx_defs.frag"));
    const QByteArray code = effectShaderCode(pbs);
    if (!code.isEmpty()) {
        text += "#define USE_EFFECT\n";
    }
    QByteArray blend;
    if (m_blendMode != ImageEffect::Normal) {
        blend = blendShaderCode();
        text += "#define USE_BLEND\n";
    }
    if (masked()) {
        text += "#define USE_MASK\n" + maskShaderCode();
    }
    return text + "\n" + code + blend + ImageEffect::readShader(QStringLiteral("fx_main.frag"));
}

QByteArray ImageEffectState::maskShaderCode() const
{
    return m_maskState ? m_maskState->shaderCode() : QByteArray();
}

QByteArray ImageEffectState::blendShaderCode() const
{
    return blendModeShaderCode(m_blendMode);
}

QByteArray ImageEffectState::effectShaderCode(const PixelBufferState *pbs) const
{
    Q_UNUSED(pbs)
    return {};
}

ImageEffectPass *ImageEffectState::createPass(const PixelBufferState *pbs) const
{
    return new DefaultImageEffectPass(this, pbs);
}

void ImageEffectState::initializePass(ImageEffectPass *pass)
{
    pass->setUniformValue("u_source", sourceUnit);
    pass->setUniformValue("u_maskGradient", maskGradientUnit);
}

void ImageEffectState::resolveUniforms(const ImageEffectPass *pass)
{
    m_alphaLocation = pass->uniformLocation("u_alpha");
    if (m_maskState) {
        m_maskState->resolveUniforms(pass);
    }
}

void ImageEffectState::updatePass(const QSharedPointer<ImageEffectPass> &pass,
                                  const PixelBufferState *pbs)
{
    if (pass != m_resolvedPass) {
        m_resolvedPass = pass;
        resolveUniforms(pass.data());
    }
    pass->setUniformValue(m_alphaLocation, m_alpha * pbs->imageEffectAlpha);
    if (masked()) {
        m_maskState->updatePass(pass, pbs);
    }
}

QString ImageEffectState::effectVariant(const PixelBufferState *pbs) const
{
    Q_UNUSED(pbs)
    return {};
}

} // namespace ko::imagefx
