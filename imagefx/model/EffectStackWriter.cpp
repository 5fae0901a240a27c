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

QJsonArray writeStops(const QObject *mask)
{
    QJsonArray array;
    const auto stops = static_cast<const AlphaMask *>(mask)->gradientStopList();
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
    // Told by name: only QML registers the types of list properties. The batch alone has effects.
    if (qstrcmp(property.typeName(), "QQmlListProperty<ko::imagefx::AlphaGradientStop>") == 0) {
        return writeStops(object);
    }
    if (qstrcmp(property.typeName(), "QQmlListProperty<ko::imagefx::ImageEffect>") == 0) {
        return writeStack(static_cast<const BatchImageEffect *>(object)->imageEffectList());
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
