#include "tests/support/RandomStack.h"

#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/BrightnessContrastImageEffect.h"
#include "imagefx/effects/ChannelShiftImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/GrayScaleImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/effects/SharpenImageEffect.h"
#include "tests/support/EffectCases.h"
#include "tests/support/TableCases.h"

#include <cmath>

namespace ko::imagefx::test
{

namespace
{

constexpr int deepest = 2;

void adopt(ImageEffect *effect)
{
    if (AlphaMask *mask = effect->alphaMask()) {
        mask->setParent(effect);
    }
    if (const auto *batch = qobject_cast<const BatchImageEffect *>(effect)) {
        for (ImageEffect *member : batch->imageEffectList()) {
            member->setParent(effect);
            adopt(member);
        }
    }
}

// True when a tap of blur or sharpen would fall so close to the border of two texels that its
// place's rounding decides.
bool hitsABorder(double step, int taps)
{
    for (int i = 1; i <= taps; ++i) {
        const double distance = i * step + tapBeyond + 0.5;
        if (std::abs(distance - std::round(distance)) < 2.0 * tapError) {
            return true;
        }
    }
    return false;
}

} // namespace

OwnedEffects::OwnedEffects(const QList<ImageEffect *> &effects) : m_list(effects)
{
    for (ImageEffect *effect : effects) {
        adopt(effect);
        m_owned.emplace_back(effect);
    }
}

OwnedEffects::~OwnedEffects() = default;

int RandomStacks::number(int from, int to)
{
    return std::uniform_int_distribution<int>(from, to)(m_random);
}

float RandomStacks::value(float from, float to)
{
    return std::uniform_real_distribution<float>(from, to)(m_random);
}

bool RandomStacks::chance(double share)
{
    return std::bernoulli_distribution(share)(m_random);
}

RandomStacks::Stack RandomStacks::next()
{
    m_colorMask = chance(0.5) ? ModelMaskKind::Hue : ModelMaskKind::Luminance;
    QList<ImageEffect *> effects;
    ModelStack model;
    for (int left = number(1, 8); left > 0; --left) {
        Member part = member(0);
        effects.append(part.effect.release());
        model.append(part.model);
    }
    return {OwnedEffects(effects), model};
}

RandomStacks::Member RandomStacks::member(int depth)
{
    Member member = plainMember(depth);
    const bool enabled = chance(0.85);
    const bool visible = chance(0.95);
    const float alpha = visible ? (chance(0.5) ? 1.0F : value(0.1F, 1.0F)) : 0.0005F;
    const int blendMode = chance(0.5) ? ImageEffect::Normal : number(0, ImageEffect::DarkenOnly);
    member.effect->setEnabled(enabled);
    member.effect->setAlpha(alpha);
    member.effect->setBlendMode(ImageEffect::BlendMode(blendMode));
    member.model.alpha = double(alpha);
    member.model.blendMode = blendMode;
    // A new effect's first frame knows no blend mode yet that would save a neutral one.
    member.model.skippedInBatch = !enabled || !visible || member.neutral;
    if (chance(0.4)) {
        setMask(member);
    }
    return member;
}

void RandomStacks::setMask(Member &member)
{
    MaskCase mask;
    mask.kind = chance(0.5) ? ModelMaskKind::Distance : m_colorMask;
    mask.interpolation = ModelInterpolation(number(0, 2));
    mask.enabled = chance(0.85);
    for (int left = number(0, 4); left > 0; --left) {
        mask.stops.append({double(value(0.0F, 1.0F)), double(value(0.0F, 1.0F))});
    }
    AlphaMask *object = mask.create().release();
    object->setParent(member.effect.get());
    member.effect->setAlphaMask(object);
    member.model.mask = mask.model();
}

RandomStacks::Member RandomStacks::plainMember(int depth)
{
    constexpr int tables = 3;
    const int kind = number(0, depth < deepest ? 11 : 9);
    if (kind < tables) {
        return tableMember();
    }
    Member member;
    const auto take = [&](auto effect, const ModelEffect &model) {
        member.effect = std::move(effect);
        member.model.effect = pictureEffect(model);
    };
    const float a = value(-0.6F, 0.6F);
    const float b = value(-0.6F, 0.6F);
    const float c = value(-0.6F, 0.6F);
    switch (kind) {
    case 3: {
        auto effect = std::make_unique<BrightnessContrastImageEffect>();
        effect->setBrightness(a);
        effect->setContrast(b);
        take(std::move(effect), modelBrightnessContrast(double(a), double(b)));
        break;
    }
    case 4: {
        auto effect = std::make_unique<ChannelShiftImageEffect>();
        effect->setRed(a);
        effect->setGreen(b);
        effect->setBlue(c);
        take(std::move(effect), modelChannelShift(double(a), double(b), double(c)));
        break;
    }
    case 5: {
        const QColor color(number(0, 255), number(0, 255), number(0, 255));
        auto effect = std::make_unique<ColorFillImageEffect>();
        effect->setColor(color);
        take(std::move(effect),
             modelColorFill(color.red() / 255.0, color.green() / 255.0, color.blue() / 255.0));
        break;
    }
    case 6: {
        auto effect = std::make_unique<GrayScaleImageEffect>();
        effect->setRed(std::abs(a));
        effect->setGreen(std::abs(b));
        effect->setBlue(std::abs(c));
        take(std::move(effect),
             modelGrayScale(std::abs(double(a)), std::abs(double(b)), std::abs(double(c))));
        break;
    }
    case 7: {
        member.neutral = chance(0.2);
        const float hue = member.neutral ? 0.0F : a;
        const float saturation = member.neutral ? 0.0F : b;
        const float lightness = member.neutral ? 0.0F : c;
        auto effect = std::make_unique<HSVImageEffect>();
        effect->setHue(hue);
        effect->setSaturation(saturation);
        effect->setValue(lightness);
        take(std::move(effect), modelHsv(double(hue), double(saturation), double(lightness)));
        break;
    }
    case 8:
        return blur();
    case 9:
        return sharpen();
    default:
        return batch(depth);
    }
    return member;
}

RandomStacks::Member RandomStacks::tableMember()
{
    EffectCase made;
    const bool neutral = chance(0.1);
    const float most = neutral ? 0.0F : 1.0F;
    switch (number(0, 2)) {
    case 0:
        made = exposure(value(-most, most), value(-most, most), value(-most, most));
        break;
    case 1: {
        QVector<float> saturations;
        for (int i = 0; i < 8; ++i) {
            saturations.append(value(-most, most));
        }
        made = selectiveSaturation(saturations);
        break;
    }
    default: {
        std::array<ModelLevels, 3> levels;
        for (ModelLevels &channel : levels) {
            channel = powerLevels(double(value(0.4F, 2.2F)));
        }
        return {lookupTable(QString(), levels).create(),
                {pictureEffect(modelLookupTable(levels))},
                false};
    }
    }
    return {made.create(), {pictureEffect(made.model)}, neutral};
}

RandomStacks::Member RandomStacks::blur()
{
    float radius = 1.0F;
    int taps = 1;
    do {
        radius = value(1.0F, 24.0F);
        taps = std::min(int(radius), 16);
    } while (hitsABorder(double(radius) / (taps + 1), taps));
    auto effect = std::make_unique<BlurImageEffect>();
    effect->setRadius(radius);
    return {std::move(effect), {modelBlur(double(radius))}, false};
}

RandomStacks::Member RandomStacks::sharpen()
{
    float radius = 1.0F;
    int taps = 1;
    do {
        radius = value(1.0F, 24.0F);
        taps = std::min(int(radius), 16);
    } while (hitsABorder(double(radius) / taps, taps));
    const float strength = value(-0.2F, 1.5F);
    auto effect = std::make_unique<SharpenImageEffect>();
    effect->setRadius(radius);
    effect->setStrength(strength);
    return {std::move(effect), {modelSharpen(double(strength), double(radius))}, strength < 0.001F};
}

RandomStacks::Member RandomStacks::batch(int depth)
{
    auto effect = std::make_unique<BatchImageEffect>();
    auto list = effect->imageEffects();
    ModelStack members;
    for (int left = number(0, 3); left > 0; --left) {
        Member part = member(depth + 1);
        members.append(part.model);
        ImageEffect *nested = part.effect.release();
        nested->setParent(effect.get());
        list.append(&list, nested);
    }
    return {std::move(effect), {modelBatch(members)}, members.isEmpty()};
}

} // namespace ko::imagefx::test
