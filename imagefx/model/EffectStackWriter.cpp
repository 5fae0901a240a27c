#include "imagefx/model/EffectStackWriter.h"

#include "imagefx/effects/BatchImageEffect.h"

#include <QtCore/QMetaProperty>
#include <QtGui/QColor>

namespace ko::imagefx
{

namespace
{

QJsonObject writeProperties(const QObject *object, const QMetaObject &base);

QJsonValue writeMask(const AlphaMask *mask)
{
    return mask != nullptr ? QJsonValue(writeProperties(mask, AlphaMask::staticMetaObject))
                           : QJsonValue(QJsonValue::Null);
}

QJsonArray writeStops(const AlphaMask *mask)
{
    QJsonArray array;
    const auto stops = mask->gradientStopList();
    for (const AlphaGradientStop *stop : stops) {
        array.append(writeProperties(stop, AlphaGradientStop::staticMetaObject));
    }
    return array;
}

QJsonValue writeValue(const QObject *object, const QMetaProperty &property)
{
    if (property.isEnumType()) {
        return property.read(object).toInt();
    }
    if (property.userType() == qMetaTypeId<AlphaMask *>()) {
        return writeMask(property.read(object).value<AlphaMask *>());
    }
    // By class and name: only QML registers the types of list properties.
    const auto *mask = qobject_cast<const AlphaMask *>(object);
    if (mask != nullptr && qstrcmp(property.name(), "gradientStops") == 0) {
        return writeStops(mask);
    }
    const auto *batch = qobject_cast<const BatchImageEffect *>(object);
    if (batch != nullptr && qstrcmp(property.name(), "imageEffects") == 0) {
        return writeStack(batch->imageEffectList());
    }
    const int type = property.userType();
    // The generic conversion would write the alpha of a translucent colour, too.
    if (type == QMetaType::QColor) {
        return property.read(object).value<QColor>().name();
    }
    const bool builtIn = type != QMetaType::UnknownType && type < int(QMetaType::User);
    return builtIn ? QJsonValue::fromVariant(property.read(object)) : QJsonValue(QJsonValue::Null);
}

QJsonObject writeProperties(const QObject *object, const QMetaObject &base)
{
    QJsonObject json;
    const QMetaObject *meta = object->metaObject();
    for (int i = base.propertyOffset(); i < meta->propertyCount(); ++i) {
        const QMetaProperty property = meta->property(i);
        json.insert(QLatin1String(property.name()), writeValue(object, property));
    }
    return json;
}

} // namespace

QJsonObject writeEffect(const ImageEffect *effect)
{
    return effect != nullptr ? writeProperties(effect, ImageEffect::staticMetaObject)
                             : QJsonObject();
}

QJsonArray writeStack(const QList<ImageEffect *> &effects)
{
    QJsonArray array;
    for (const ImageEffect *effect : effects) {
        array.append(writeEffect(effect));
    }
    return array;
}

} // namespace ko::imagefx
