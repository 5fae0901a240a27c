#include "exporter/EffectStack.h"

#include "imagefx/model/AlphaMask.h"
#include "imagefx/model/EffectRegistry.h"
#include "imagefx/model/EffectStackReader.h"
#include "imagefx/model/ImageEffect.h"
#include "imagefx/render/ImageEffectState.h"

#include <QtCore/QJsonObject>
#include <QtCore/QMetaEnum>

namespace ko::exporter
{

using imagefx::AlphaMask;
using imagefx::EffectRegistry;
using imagefx::EffectStackReader;
using imagefx::ImageEffect;
using imagefx::ImageEffectState;

namespace
{

void destroy(ImageEffect *effect)
{
    AlphaMask *mask = effect->alphaMask();
    delete effect;
    delete mask;
}

// Whether a neutral effect shows is told from the blend mode of the update before, so one update is
// not enough.
QSharedPointer<ImageEffectState> stateAtRest(ImageEffect *effect)
{
    effect->currentState();
    Q_EMIT effect->updateRequired();
    return effect->currentState();
}

// An effect without one keeps its default. What is not a number reads as 0, as with every property.
bool hasKnownBlendMode(const QJsonObject &effect)
{
    const int value = effect.value(QLatin1String("blendMode")).toVariant().toInt();
    return QMetaEnum::fromType<ImageEffect::BlendMode>().valueToKey(value) != nullptr;
}

} // namespace

EffectStack::~EffectStack()
{
    for (ImageEffect *effect : qAsConst(m_effects)) {
        destroy(effect);
    }
}

void EffectStack::read(const QJsonArray &array)
{
    const EffectRegistry registry = EffectRegistry::complete();
    EffectStackReader reader(registry);
    m_effects = reader.readStack(drawableElements(array));
    const QStringList unknownIds = reader.unknownIds();
    for (const QString &id : unknownIds) {
        m_complaints.append(id.isEmpty()
                                ? QStringLiteral("an effect or mask has no id")
                                : QStringLiteral("no effect or mask has the id \"%1\"").arg(id));
    }
}

// An effect whose blend mode does not exist has no program and would leave an empty picture.
QJsonArray EffectStack::drawableElements(const QJsonArray &array)
{
    QJsonArray drawable;
    for (int i = 0; i < array.size(); ++i) {
        if (!array.at(i).isObject()) {
            m_complaints.append(QStringLiteral("element %1 is not an object").arg(i));
        } else if (!hasKnownBlendMode(array.at(i).toObject())) {
            m_complaints.append(QStringLiteral("element %1 has an unknown blend mode").arg(i));
        } else {
            drawable.append(array.at(i));
        }
    }
    return drawable;
}

QList<ImageEffect *> EffectStack::visibleEffects() const
{
    QList<ImageEffect *> visible;
    for (ImageEffect *effect : m_effects) {
        if (!stateAtRest(effect)->passDisabled()) {
            visible.append(effect);
        }
    }
    return visible;
}

} // namespace ko::exporter
