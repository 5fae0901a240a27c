#include "fuzz/FuzzStack.h"

#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/LookupTableImageEffect.h"
#include "imagefx/model/EffectRegistry.h"
#include "imagefx/model/EffectStackReader.h"

#include <QtCore/QJsonDocument>
#include <QtCore/QMetaProperty>
#include <QtGui/QColor>

#include <cmath>
#include <limits>

namespace ko::fuzz
{

using imagefx::AlphaMask;
using imagefx::BatchImageEffect;
using imagefx::EffectRegistry;
using imagefx::ImageEffect;

namespace
{

constexpr int mostEffects = 6;
constexpr int deepest = 3;

const EffectRegistry &registry()
{
    static const EffectRegistry kinds = EffectRegistry::complete();
    return kinds;
}

// Masks and members become children of their effects, but for those that are somebody's already.
void adopt(ImageEffect *effect)
{
    if (AlphaMask *mask = effect->alphaMask()) {
        mask->setParent(effect);
    }
    if (const auto *batch = qobject_cast<const BatchImageEffect *>(effect)) {
        const QList<ImageEffect *> members = batch->imageEffectList();
        for (ImageEffect *member : members) {
            member->setParent(effect);
            adopt(member);
        }
    }
}

QColor color(FuzzBytes *bytes)
{
    const int red = bytes->byte();
    const int green = bytes->byte();
    return bytes->chance(16) ? QColor() : QColor(red, green, bytes->byte(), bytes->byte());
}

QUrl table(FuzzBytes *bytes)
{
    switch (bytes->below(4)) {
    case 0:
        return QUrl(QStringLiteral("qrc:/imagefx/lib/lut/fargo.png"));
    case 1:
        return QUrl(QStringLiteral("data:image/png;base64,AAAA"));
    default:
        return {};
    }
}

void setProperty(QObject *object, const QMetaProperty &property, FuzzBytes *bytes)
{
    switch (property.userType()) {
    case QMetaType::Float:
        property.write(object, bytes->number());
        break;
    case QMetaType::Bool:
        property.write(object, !bytes->chance(8));
        break;
    case QMetaType::QColor:
        property.write(object, color(bytes));
        break;
    case QMetaType::QUrl:
        property.write(object, table(bytes));
        break;
    default:
        break;
    }
}

AlphaMask *makeMask(FuzzBytes *bytes)
{
    const QStringList kinds = registry().maskIds();
    AlphaMask *mask = registry().createAlphaMask(kinds.at(bytes->below(kinds.size())));
    // One number beyond the enumeration.
    mask->setGradientInterpolation(AlphaMask::GradientInterpolation(bytes->below(4)));
    mask->setEnabled(!bytes->chance(8));
    for (int left = bytes->below(6); left > 0; --left) {
        const float location = bytes->number();
        mask->addGradientStop(location, bytes->number());
    }
    return mask;
}

ImageEffect *makeEffect(FuzzBytes *bytes, int depth)
{
    const QStringList kinds = registry().effectIds();
    ImageEffect *effect = registry().createEffect(kinds.at(bytes->below(kinds.size())));
    const QMetaObject *meta = effect->metaObject();
    for (int i = QObject::staticMetaObject.propertyCount(); i < meta->propertyCount(); ++i) {
        setProperty(effect, meta->property(i), bytes);
    }
    if (bytes->chance(2)) {
        effect->setAlpha(1.0F);
    }
    // One number beyond the enumeration at either end.
    effect->setBlendMode(ImageEffect::BlendMode(bytes->chance(2) ? 0 : bytes->below(18) - 1));
    if (bytes->chance(3)) {
        effect->setAlphaMask(makeMask(bytes));
    }
    if (auto *batch = qobject_cast<BatchImageEffect *>(effect)) {
        QList<ImageEffect *> members;
        for (int left = depth < deepest ? bytes->below(4) : 0; left > 0; --left) {
            members.append(makeEffect(bytes, depth + 1));
        }
        batch->setImageEffectList(members);
    }
    return effect;
}

} // namespace

float FuzzBytes::number()
{
    constexpr float largest = std::numeric_limits<float>::max();
    constexpr float smallest = std::numeric_limits<float>::denorm_min();
    constexpr float infinite = std::numeric_limits<float>::infinity();
    constexpr float extremes[] = {0.0F,     -0.0F,     1.0F,
                                  -1.0F,    0.5F,      0.001F,
                                  1e-6F,    2.0F,      16.0F,
                                  100.0F,   1e6F,      -1e6F,
                                  1e9F,     4e9F,      1e19F,
                                  largest,  -largest,  smallest,
                                  infinite, -infinite, std::numeric_limits<float>::quiet_NaN()};
    constexpr int count = sizeof extremes / sizeof extremes[0];
    const int kind = below(8);
    if (kind == 0) {
        return extremes[below(count)];
    }
    if (kind == 1) {
        uint8_t bits[sizeof(float)];
        for (uint8_t &part : bits) {
            part = byte();
        }
        float any;
        std::memcpy(&any, bits, sizeof any);
        return any;
    }
    const float share = float(byte()) / 128.0F - 1.0F;
    return kind == 2 ? 30.0F * share : share;
}

void FuzzStack::take(const QList<ImageEffect *> &effects)
{
    m_effects = effects;
    m_owned.reserve(size_t(effects.size()));
    for (ImageEffect *effect : effects) {
        adopt(effect);
        m_owned.emplace_back(effect);
    }
}

FuzzStack FuzzStack::fromJson(FuzzBytes *bytes)
{
    const QByteArray text(reinterpret_cast<const char *>(bytes->rest()), int(bytes->left()));
    FuzzStack stack;
    // A table may be any file: none that never ends.
    if (!text.contains("dev")) {
        imagefx::EffectStackReader reader(registry());
        stack.take(reader.readStack(QJsonDocument::fromJson(text).array()));
    }
    return stack;
}

FuzzStack FuzzStack::fromBytes(FuzzBytes *bytes)
{
    QList<ImageEffect *> effects;
    for (int left = bytes->below(mostEffects + 1); left > 0; --left) {
        effects.append(makeEffect(bytes, 0));
    }
    FuzzStack stack;
    stack.take(effects);
    return stack;
}

} // namespace ko::fuzz
