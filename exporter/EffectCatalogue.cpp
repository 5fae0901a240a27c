#include "exporter/EffectCatalogue.h"

#include "exporter/ErrorCapture.h"

#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/model/EffectRegistry.h"
#include "imagefx/model/ImageEffect.h"

#include <QtCore/QDir>
#include <QtCore/QMetaEnum>
#include <QtCore/QMetaProperty>
#include <QtCore/QUrl>
#include <QtGui/QColor>

#include <functional>
#include <limits>
#include <memory>

namespace ko::exporter
{

using imagefx::AlphaGradientStop;
using imagefx::AlphaMask;
using imagefx::BatchImageEffect;
using imagefx::EffectRegistry;
using imagefx::ImageEffect;

namespace
{

using Type = PropertyDescription::Type;
using Fresh = std::function<std::unique_ptr<QObject>()>;

constexpr float farthest = std::numeric_limits<float>::max();

// Without the digits that a float only has since it is binary.
double rounded(float number)
{
    return QString::number(double(number), 'g', 7).toDouble();
}

QJsonValue roundedNumbers(const QJsonValue &value)
{
    return value.isDouble() ? QJsonValue(rounded(float(value.toDouble()))) : value;
}

// What an object makes of a number; nothing when it stores it.
std::optional<double> limitTowards(const Fresh &fresh, const QMetaProperty &property, float number)
{
    const auto object = fresh();
    property.write(object.get(), number);
    const float stored = property.read(object.get()).toFloat();
    return stored == number ? std::optional<double>() : rounded(stored);
}

PropertyDescription describe(const Fresh &fresh, const QMetaProperty &property,
                             const QJsonObject &standard)
{
    PropertyDescription description;
    description.name = QString::fromLatin1(property.name());
    description.type = *propertyType(property);
    description.standard = roundedNumbers(standard.value(description.name));
    if (description.type == Type::Number) {
        description.minimum = limitTowards(fresh, property, -farthest);
        description.maximum = limitTowards(fresh, property, farthest);
    }
    if (description.type == Type::Enumeration) {
        const QMetaEnum enumeration = property.enumerator();
        for (int i = 0; i < enumeration.keyCount(); ++i) {
            description.enumerators.append(
                {QString::fromLatin1(enumeration.key(i)), enumeration.value(i)});
        }
    }
    return description;
}

QVector<PropertyDescription> describeAll(const Fresh &fresh, int first, int last,
                                         const QJsonObject &standard)
{
    QVector<PropertyDescription> descriptions;
    const auto object = fresh();
    for (int i = first; i < last; ++i) {
        const QMetaProperty property = object->metaObject()->property(i);
        if (!property.isConstant() && propertyType(property)) {
            descriptions.append(describe(fresh, property, standard));
        }
    }
    return descriptions;
}

// Whether an effect with this one value, and else its defaults, leaves the picture as it is.
bool isNeutralWith(ImageEffect *effect, const PropertyDescription &property, const QVariant &value)
{
    const std::unique_ptr<ImageEffect> owner(effect);
    owner->setProperty(property.name.toLatin1().constData(), value);
    return owner->isNeutral();
}

// Whether a batch of one effect leaves the picture as it is.
bool isNeutralWithEffect(ImageEffect *effect, ImageEffect *nested)
{
    const std::unique_ptr<ImageEffect> inner(nested);
    const std::unique_ptr<ImageEffect> owner(effect);
    if (auto *batch = qobject_cast<BatchImageEffect *>(effect)) {
        batch->setImageEffectList({nested});
    }
    return owner->isNeutral();
}

// A value that differs from a property's default.
QVariant otherValue(const PropertyDescription &property, const QStringList &presets)
{
    if (property.type == Type::Number) {
        return float(property.maximum.value_or(property.standard.toDouble() + 1));
    }
    return property.type == Type::Url ? QVariant(QUrl(presets.value(0))) : QVariant();
}

QJsonValue neutralValue(const std::function<ImageEffect *()> &fresh,
                        const PropertyDescription &property, const QStringList &presets)
{
    if (property.type == Type::Effects) {
        return isNeutralWithEffect(fresh(), nullptr) && !isNeutralWithEffect(fresh(), fresh())
                   ? property.standard
                   : QJsonValue(QJsonValue::Undefined);
    }
    const QVariant other = otherValue(property, presets);
    if (!other.isValid()) {
        return QJsonValue::Undefined;
    }
    if (std::unique_ptr<ImageEffect>(fresh())->isNeutral()) {
        return isNeutralWith(fresh(), property, other) ? QJsonValue(QJsonValue::Undefined)
                                                       : property.standard;
    }
    if (property.type == Type::Number) {
        for (const double number :
             {0.0, property.minimum.value_or(0), property.maximum.value_or(0)}) {
            if (isNeutralWith(fresh(), property, float(number))) {
                return number;
            }
        }
    }
    return QJsonValue::Undefined;
}

} // namespace

std::optional<Type> propertyType(const QMetaProperty &property)
{
    if (property.isEnumType()) {
        return Type::Enumeration;
    }
    switch (property.userType()) {
    case QMetaType::Bool:
        return Type::Boolean;
    case QMetaType::Float:
        return Type::Number;
    case QMetaType::QString:
        return Type::String;
    case QMetaType::QColor:
        return Type::Color;
    case QMetaType::QUrl:
        return Type::Url;
    default:
        break;
    }
    // By name: only QML registers the types of list properties.
    const QByteArray type = property.typeName();
    if (type.endsWith("AlphaMask*")) {
        return Type::Mask;
    }
    if (type.startsWith("QQmlListProperty<")) {
        return type.contains("ImageEffect") ? Type::Effects : Type::Stops;
    }
    return {};
}

QString typeName(Type type)
{
    static const QStringList names{
        QStringLiteral("boolean"),     QStringLiteral("number"),  QStringLiteral("string"),
        QStringLiteral("enumeration"), QStringLiteral("color"),   QStringLiteral("url"),
        QStringLiteral("mask"),        QStringLiteral("effects"), QStringLiteral("stops")};
    return names.at(int(type));
}

EffectCatalogue::EffectCatalogue()
{
    const QString folder = QStringLiteral(":/imagefx/lib/lut");
    const QStringList names = QDir(folder).entryList(QDir::Files, QDir::Name);
    for (const QString &name : names) {
        m_presets.append(QStringLiteral("qrc") + folder + QLatin1Char('/') + name);
    }
    // Effects tell of tables that they cannot load.
    const ErrorCapture capture;
    describeEffects();
    describeMasks();
    describeStops();
}

void EffectCatalogue::describeEffects()
{
    const EffectRegistry registry = EffectRegistry::complete();
    const QMetaObject &base = ImageEffect::staticMetaObject;
    const QStringList ids = registry.effectIds();
    for (const QString &id : ids) {
        const auto create = [&] { return registry.createEffect(id); };
        const Fresh fresh = [&] { return std::unique_ptr<QObject>(create()); };
        const std::unique_ptr<ImageEffect> effect(create());
        const QJsonObject standard = ImageEffect::serialize(effect.get());
        if (m_effectProperties.isEmpty()) {
            m_effectProperties =
                describeAll(fresh, base.propertyOffset(), base.propertyCount(), standard);
        }
        if (effect->effectId() != id) {
            continue;
        }
        KindDescription kind{id, {}, effect->isNeutral(), {}};
        kind.properties = describeAll(fresh, base.propertyCount(),
                                      effect->metaObject()->propertyCount(), standard);
        for (PropertyDescription &property : kind.properties) {
            property.neutral = neutralValue(create, property, m_presets);
        }
        for (const QString &alias : ids) {
            const std::unique_ptr<ImageEffect> other(registry.createEffect(alias));
            if (alias != id && other->effectId() == id) {
                kind.aliases.append(alias);
            }
        }
        m_effects.append(kind);
    }
}

void EffectCatalogue::describeMasks()
{
    const EffectRegistry registry = EffectRegistry::complete();
    const QMetaObject &base = AlphaMask::staticMetaObject;
    const QStringList ids = registry.maskIds();
    for (const QString &id : ids) {
        const Fresh fresh = [&] { return std::unique_ptr<QObject>(registry.createAlphaMask(id)); };
        const std::unique_ptr<AlphaMask> mask(registry.createAlphaMask(id));
        const std::unique_ptr<ImageEffect> effect(
            registry.createEffect(registry.effectIds().constFirst()));
        effect->setAlphaMask(mask.get());
        const QJsonObject standard =
            ImageEffect::serialize(effect.get()).value(QLatin1String("alphaMask")).toObject();
        if (m_maskProperties.isEmpty()) {
            m_maskProperties =
                describeAll(fresh, base.propertyOffset(), base.propertyCount(), standard);
        }
        KindDescription kind{id, {}, false, {}};
        kind.properties =
            describeAll(fresh, base.propertyCount(), mask->metaObject()->propertyCount(), standard);
        m_masks.append(kind);
        effect->setAlphaMask(nullptr);
    }
}

void EffectCatalogue::describeStops()
{
    const QMetaObject &meta = AlphaGradientStop::staticMetaObject;
    const Fresh fresh = [] { return std::make_unique<AlphaGradientStop>(); };
    const auto stop = fresh();
    QJsonObject standard;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        standard.insert(QString::fromLatin1(property.name()),
                        QJsonValue::fromVariant(property.read(stop.get())));
    }
    m_stopProperties = describeAll(fresh, meta.propertyOffset(), meta.propertyCount(), standard);
}

} // namespace ko::exporter
