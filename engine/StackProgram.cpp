#include "engine/StackProgram.h"

#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/BrightnessContrastImageEffect.h"
#include "imagefx/effects/ChannelShiftImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/ExposureCurve.h"
#include "imagefx/effects/ExposureImageEffect.h"
#include "imagefx/effects/GrayScaleImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/effects/LookupTableImageEffect.h"
#include "imagefx/effects/SelectiveSaturationImageEffect.h"
#include "imagefx/effects/SharpenImageEffect.h"
#include "imagefx/model/DistanceAlphaMask.h"
#include "imagefx/model/HueAlphaMask.h"
#include "imagefx/model/LuminanceAlphaMask.h"

#include <QtCore/QRegularExpression>

#include <algorithm>
#include <utility>

namespace ko::imagefx::engine
{

namespace
{

// Up to this alpha a batch leaves its effects out.
constexpr float invisibleAlpha = 0.001F;

// Beyond the largest picture all is its edge.
constexpr float farthestRadius = 1048576.0F;

// The object's class in C++: QML puts one of its own on top for an object that it gives properties
// or signal handlers, and names it with a number behind.
const QMetaObject *nativeClass(const QObject *object)
{
    static const QRegularExpression madeByQml(QStringLiteral("_QML(TYPE)?_[0-9]+$"));
    const QMetaObject *meta = object->metaObject();
    while (madeByQml.match(QLatin1String(meta->className())).hasMatch()) {
        meta = meta->superClass();
    }
    return meta;
}

// Null unless the effect or mask is exactly of that kind: what derives from it may draw otherwise.
template <class Kind, class Object>
const Kind *exactly(const Object *object)
{
    const bool same = nativeClass(object) == &Kind::staticMetaObject;
    return same ? static_cast<const Kind *>(object) : nullptr;
}

bool hasBlendMode(const ImageEffect &effect)
{
    return effect.blendMode() >= ImageEffect::Normal &&
           effect.blendMode() <= ImageEffect::DarkenOnly;
}

uint32_t opaqueTexel(uint32_t red, uint32_t green, uint32_t blue)
{
    return red | green << 8U | blue << 16U | 0xff000000U;
}

std::vector<uint32_t> identityTexels()
{
    std::vector<uint32_t> texels(256);
    for (uint32_t level = 0; level < texels.size(); ++level) {
        texels[level] = opaqueTexel(level, level, level);
    }
    return texels;
}

std::vector<uint32_t> texelsOf(const QImage &lut)
{
    std::vector<uint32_t> texels(size_t(lut.width()));
    const uchar *bytes = lut.constScanLine(0);
    for (uint32_t &texel : texels) {
        texel = opaqueTexel(bytes[0], bytes[1], bytes[2]);
        bytes += 3;
    }
    return texels;
}

} // namespace

StackProgram::StackProgram(const QList<ImageEffect *> &effects, float relativeScale,
                           float globalAlpha, bool settled)
    : m_relativeScale(relativeScale), m_globalAlpha(globalAlpha), m_settled(settled)
{
    m_steps = read(effects, false);
}

std::vector<Step> StackProgram::read(const QList<ImageEffect *> &effects, bool isNested)
{
    std::vector<Step> steps;
    steps.reserve(size_t(effects.size()));
    for (const ImageEffect *effect : effects) {
        if (effect == nullptr || (isNested && isSkippedInBatch(*effect))) {
            continue;
        }
        Step step = read(*effect);
        if (hasBlendMode(*effect)) {
            steps.push_back(std::move(step));
        }
    }
    return steps;
}

// The first update of a state does not know its blend mode yet.
bool StackProgram::isSkippedInBatch(const ImageEffect &effect) const
{
    const bool blends = m_settled && effect.blendMode() != ImageEffect::Normal;
    return !effect.enabled() || effect.alpha() <= invisibleAlpha || (effect.isNeutral() && !blends);
}

Step StackProgram::read(const ImageEffect &effect)
{
    Step step;
    step.pass.alpha = effect.alpha() * m_globalAlpha;
    step.pass.blendMode = effect.blendMode();
    readMask(effect.alphaMask(), &step.pass);
    if (const auto *blur = exactly<BlurImageEffect>(&effect)) {
        step.kind = Step::Kind::Blur;
        step.radiusInPixels = inPixels(blur->radius());
    } else if (const auto *sharpen = exactly<SharpenImageEffect>(&effect)) {
        step.kind = Step::Kind::Sharpen;
        step.radiusInPixels = inPixels(sharpen->radius());
        step.pass.uniforms[0] = sharpen->strength();
    } else if (const auto *batch = exactly<BatchImageEffect>(&effect)) {
        step.kind = Step::Kind::Batch;
        step.pass.colour = Colour::Batch;
        step.nested = read(batch->imageEffectList(), true);
    } else if (!readPoint(effect, &step.pass)) {
        notSupported(effect.effectId());
    }
    return step;
}

float StackProgram::inPixels(float radius) const
{
    return qBound(-farthestRadius, radius * m_relativeScale, farthestRadius);
}

bool StackProgram::readPoint(const ImageEffect &effect, Pass *pass)
{
    const auto setUniforms = [pass](float first, float second, float third, float fourth) {
        pass->uniforms[0] = first;
        pass->uniforms[1] = second;
        pass->uniforms[2] = third;
        pass->uniforms[3] = fourth;
    };
    if (const auto *levels = exactly<BrightnessContrastImageEffect>(&effect)) {
        pass->colour = Colour::BrightnessContrast;
        setUniforms(levels->brightness(), levels->contrast(), 0.0F, 0.0F);
    } else if (const auto *shift = exactly<ChannelShiftImageEffect>(&effect)) {
        pass->colour = Colour::ChannelShift;
        setUniforms(shift->red(), shift->green(), shift->blue(), 0.0F);
    } else if (const auto *fill = exactly<ColorFillImageEffect>(&effect)) {
        pass->colour = Colour::ColorFill;
        const QColor color = fill->color();
        setUniforms(float(color.redF()), float(color.greenF()), float(color.blueF()),
                    float(color.alphaF()));
    } else if (const auto *exposure = exactly<ExposureImageEffect>(&effect)) {
        pass->colour = Colour::Exposure;
        const ToneTable curve =
            buildExposureCurve(exposure->exposure(), exposure->darkTones(), exposure->lightTones());
        pass->table = alphaTable(curve.data(), int(curve.size()));
    } else if (const auto *gray = exactly<GrayScaleImageEffect>(&effect)) {
        pass->colour = Colour::GrayScale;
        const float sum = gray->red() + gray->green() + gray->blue();
        setUniforms(gray->red() / sum, gray->green() / sum, gray->blue() / sum, 0.0F);
    } else if (const auto *hsv = exactly<HSVImageEffect>(&effect)) {
        pass->colour = Colour::Hsv;
        setUniforms(hsv->hue(), hsv->saturation(), hsv->value(), 0.0F);
    } else if (const auto *grade = exactly<LookupTableImageEffect>(&effect)) {
        pass->colour = Colour::LookupTable;
        const QImage lut = grade->lut();
        pass->table = keep(lut.isNull() ? identityTexels() : texelsOf(lut));
    } else if (const auto *saturation = exactly<SelectiveSaturationImageEffect>(&effect)) {
        pass->colour = Colour::SelectiveSaturation;
        const QImage table = saturation->table();
        pass->table = alphaTable(table.constScanLine(0), table.width());
    } else {
        return false;
    }
    return true;
}

void StackProgram::readMask(const AlphaMask *mask, Pass *pass)
{
    pass->mask = Mask::None;
    if (mask == nullptr) {
        return;
    }
    Mask kind = Mask::None;
    if (exactly<DistanceAlphaMask>(mask) != nullptr) {
        kind = Mask::Distance;
    } else if (exactly<HueAlphaMask>(mask) != nullptr) {
        kind = Mask::Hue;
    } else if (exactly<LuminanceAlphaMask>(mask) != nullptr) {
        kind = Mask::Luminance;
    } else {
        notSupported(mask->maskId());
        return;
    }
    if (mask->enabled()) {
        const QImage gradient = mask->buildGradient();
        pass->mask = kind;
        pass->gradient = alphaTable(gradient.constScanLine(0), gradient.width());
    }
}

Table StackProgram::alphaTable(const uchar *bytes, int width)
{
    std::vector<uint32_t> texels(static_cast<size_t>(width));
    std::transform(bytes, bytes + width, texels.begin(),
                   [](uchar alpha) { return uint32_t(alpha) << 24U; });
    return keep(std::move(texels));
}

Table StackProgram::keep(std::vector<uint32_t> texels)
{
    m_tables.push_back(std::move(texels));
    return {m_tables.back().data(), int32_t(m_tables.back().size())};
}

void StackProgram::notSupported(const QString &id)
{
    if (m_unsupported.isEmpty()) {
        m_unsupported = id;
    }
}

} // namespace ko::imagefx::engine
