#include "exporter/EffectStack.h"

#include "exporter/ErrorCapture.h"
#include "exporter/TableUrl.h"

#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/LookupTableImageEffect.h"
#include "imagefx/model/AlphaMask.h"
#include "imagefx/model/EffectRegistry.h"
#include "imagefx/model/EffectStackReader.h"
#include "imagefx/model/ImageEffect.h"

#include <QtCore/QDir>
#include <QtCore/QJsonObject>
#include <QtCore/QMetaEnum>
#include <QtCore/QUrl>

#include <algorithm>
#include <iterator>

namespace ko::exporter
{

using imagefx::AlphaMask;
using imagefx::BatchImageEffect;
using imagefx::EffectRegistry;
using imagefx::EffectStackReader;
using imagefx::ImageEffect;
using imagefx::LookupTableImageEffect;

namespace
{

const QString nestedKey = QStringLiteral("imageEffects");
const QString tableKey = QStringLiteral("table");
const QString tableEffect = QStringLiteral("ko.orvanto.imageeffect.LUT");

QList<ImageEffect *> nestedEffects(const ImageEffect *effect)
{
    const auto *batch = qobject_cast<const BatchImageEffect *>(effect);
    return batch != nullptr ? batch->imageEffectList() : QList<ImageEffect *>();
}

// The batch goes first, so that none of its effects is missed while it lives.
void destroy(const QList<ImageEffect *> &effects)
{
    for (ImageEffect *effect : effects) {
        const QList<ImageEffect *> nested = nestedEffects(effect);
        AlphaMask *mask = effect->alphaMask();
        delete effect;
        delete mask;
        destroy(nested);
    }
}

// Whether a neutral effect shows is told from the blend mode of the update
// before, so one update is not enough. A batch takes the states that its
// effects have at its own update.
void bringStateToRest(ImageEffect *effect)
{
    const QList<ImageEffect *> nested = nestedEffects(effect);
    for (ImageEffect *inner : nested) {
        bringStateToRest(inner);
    }
    effect->currentState();
    Q_EMIT effect->updateRequired();
    effect->currentState();
}

// What the state of an effect says when it is at rest.
bool showsAtRest(const ImageEffect *effect)
{
    constexpr float invisibleAlpha = 0.001F;
    const bool invisible = !effect->enabled() || effect->alpha() <= invisibleAlpha;
    return !invisible && (effect->blendMode() != ImageEffect::Normal || !effect->isNeutral());
}

// An effect without one keeps its default. What is not a number reads as 0, as
// with every property.
bool hasKnownBlendMode(const QJsonObject &effect)
{
    const int value = effect.value(QLatin1String("blendMode")).toVariant().toInt();
    return QMetaEnum::fromType<ImageEffect::BlendMode>().valueToKey(value) != nullptr;
}

void resolveTable(QJsonObject *effect, const QString &folder)
{
    const QString table = effect->value(tableKey).toString();
    if (!table.isEmpty() && effect->value(QLatin1String("effectId")).toString() == tableEffect) {
        effect->insert(tableKey, tableUrl(table, folder).toString(QUrl::FullyEncoded));
    }
}

} // namespace

EffectStack::~EffectStack()
{
    destroy(m_effects);
}

void EffectStack::read(const QJsonArray &array, const QString &folder)
{
    read(array, folder, EffectRegistry::complete());
}

void EffectStack::read(const QJsonArray &array, const QString &folder,
                       const EffectRegistry &registry)
{
    m_folder = folder;
    const ErrorCapture capture;
    EffectStackReader reader(registry);
    m_effects = reader.readStack(drawableElements(array, QString()));
    const QStringList unknownIds = reader.unknownIds();
    for (const QString &id : unknownIds) {
        m_complaints.append(id.isEmpty()
                                ? QStringLiteral("an effect or mask has no id")
                                : QStringLiteral("no effect or mask has the id \"%1\"").arg(id));
    }
    checkLookupTables(m_effects);
}

// An effect whose blend mode does not exist has no program and would leave an
// empty picture.
QJsonArray EffectStack::drawableElements(const QJsonArray &array, const QString &parent)
{
    QJsonArray drawable;
    for (int i = 0; i < array.size(); ++i) {
        const QString place = parent + QStringLiteral("[%1]").arg(i);
        QJsonObject effect = array.at(i).toObject();
        if (!array.at(i).isObject()) {
            m_complaints.append(QStringLiteral("element %1 is not an object").arg(place));
        } else if (!hasKnownBlendMode(effect)) {
            m_complaints.append(QStringLiteral("element %1 has an unknown blend mode").arg(place));
        } else {
            if (effect.value(nestedKey).isArray()) {
                effect.insert(nestedKey, drawableElements(effect.value(nestedKey).toArray(),
                                                          place + QLatin1Char('.') + nestedKey));
            }
            resolveTable(&effect, m_folder);
            drawable.append(effect);
        }
    }
    return drawable;
}

// An effect without its table is neutral, and the picture would silently lack
// it.
void EffectStack::checkLookupTables(const QList<ImageEffect *> &effects)
{
    for (const ImageEffect *effect : effects) {
        const auto *grade = qobject_cast<const LookupTableImageEffect *>(effect);
        if (grade != nullptr && !grade->table().isEmpty() && grade->lut().isNull()) {
            m_complaints.append(QStringLiteral("the lookup table %1 cannot be used")
                                    .arg(grade->table().toDisplayString().left(200)));
        }
        checkLookupTables(nestedEffects(effect));
    }
}

QList<ImageEffect *> EffectStack::visibleEffects() const
{
    QList<ImageEffect *> visible;
    std::copy_if(m_effects.begin(), m_effects.end(), std::back_inserter(visible), showsAtRest);
    return visible;
}

void EffectStack::bringToRest() const
{
    for (ImageEffect *effect : m_effects) {
        bringStateToRest(effect);
    }
}

} // namespace ko::exporter
