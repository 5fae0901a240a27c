#include "imagefx/model/EffectStackReader.h"

#include "imagefx/effects/BatchImageEffect.h"

#include <QtCore/QMetaProperty>

namespace ko::imagefx
{

namespace
{

// Calls `assign(property, value)` for every key of `object` that names a property of `target`.
template <class Assign>
void forEachProperty(const QJsonObject &object, const QObject *target, Assign assign)
{
    const QMetaObject *meta = target->metaObject();
    for (auto it = object.begin(); it != object.end(); ++it) {
        const int index = meta->indexOfProperty(it.key().toLatin1().constData());
        if (index >= 0) {
            assign(meta->property(index), it.value());
        }
    }
}

// A JSON number is a double, which a property of an enumeration type refuses: hand it an int.
QVariant enumerator(const QJsonValue &value)
{
    return value.toVariant().toInt();
}

bool isBuiltIn(const QMetaProperty &property)
{
    return property.userType() != QMetaType::UnknownType &&
           property.userType() < int(QMetaType::User);
}

QList<AlphaGradientStop *> readStops(const QJsonArray &array)
{
    QList<AlphaGradientStop *> stops;
    for (const QJsonValue &element : array) {
        const QJsonObject object = element.toObject();
        auto *stop = new AlphaGradientStop;
        stop->setLocation(float(object.value(QLatin1String("location")).toDouble()));
        stop->setValue(float(object.value(QLatin1String("value")).toDouble()));
        stops.append(stop);
    }
    return stops;
}

} // namespace

EffectStackReader::EffectStackReader(const EffectRegistry &registry) : m_registry(registry) {}

ImageEffect *EffectStackReader::readEffect(const QJsonObject &object)
{
    QJsonObject properties = object;
    const QString effectId = properties.take(QLatin1String("effectId")).toString();
    ImageEffect *effect = m_registry.createEffect(effectId);
    if (effect == nullptr) {
        m_unknownIds.append(effectId);
        return nullptr;
    }
    forEachProperty(properties, effect,
                    [&](const QMetaProperty &property, const QJsonValue &value) {
                        readProperty(effect, property, value);
                    });
    return effect;
}

QList<ImageEffect *> EffectStackReader::readStack(const QJsonArray &array)
{
    QList<ImageEffect *> effects;
    for (const QJsonValue &element : array) {
        if (ImageEffect *effect = readEffect(element.toObject())) {
            effects.append(effect);
        }
    }
    return effects;
}

void EffectStackReader::readProperty(ImageEffect *effect, const QMetaProperty &property,
                                     const QJsonValue &value)
{
    if (property.isEnumType()) {
        property.write(effect, enumerator(value));
    } else if (property.userType() == qMetaTypeId<AlphaMask *>()) {
        property.write(effect, QVariant::fromValue(readMask(value.toObject())));
    } else if (auto *batch = qobject_cast<BatchImageEffect *>(effect);
               batch != nullptr && qstrcmp(property.name(), "imageEffects") == 0) {
        batch->setImageEffectList(readStack(value.toArray()));
    } else if (isBuiltIn(property)) {
        QVariant variant = value.toVariant();
        variant.convert(property.userType());
        property.write(effect, variant);
    }
}

AlphaMask *EffectStackReader::readMask(const QJsonObject &object)
{
    if (object.isEmpty()) {
        return nullptr;
    }
    QJsonObject properties = object;
    const QString maskId = properties.take(QLatin1String("maskId")).toString();
    AlphaMask *mask = m_registry.createAlphaMask(maskId);
    if (mask == nullptr) {
        m_unknownIds.append(maskId);
        return nullptr;
    }
    forEachProperty(properties, mask,
                    [mask](const QMetaProperty &property, const QJsonValue &value) {
                        if (property.isEnumType()) {
                            property.write(mask, enumerator(value));
                        } else if (qstrcmp(property.name(), "gradientStops") == 0) {
                            mask->setGradientStopList(readStops(value.toArray()));
                        } else if (isBuiltIn(property)) {
                            property.write(mask, value.toVariant());
                        }
                    });
    return mask;
}

} // namespace ko::imagefx
