#include "exporter/EffectCatalogue.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace ko::exporter
{

namespace
{

using Type = PropertyDescription::Type;

constexpr int columns = 80;

QString shortText(const QJsonValue &value)
{
    return QString::fromUtf8(QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact))
        .mid(1)
        .chopped(1);
}

QString number(double value)
{
    return QString::number(value, 'g', 7);
}

QString rangeText(const PropertyDescription &property)
{
    if (property.type != Type::Number) {
        return {};
    }
    if (!property.minimum && !property.maximum) {
        return QStringLiteral("any");
    }
    return (property.minimum ? number(*property.minimum) : QStringLiteral("any")) +
           QStringLiteral(" to ") +
           (property.maximum ? number(*property.maximum) : QStringLiteral("any"));
}

QString standardText(const PropertyDescription &property)
{
    for (const auto &enumerator : property.enumerators) {
        if (enumerator.number == property.standard.toInt()) {
            return shortText(property.standard) + QStringLiteral(" (%1)").arg(enumerator.name);
        }
    }
    return shortText(property.standard);
}

// Items in lines of at most 80 columns, each line indented.
QString itemLines(const QStringList &items, int indent)
{
    QString text;
    QString line(indent, QLatin1Char(' '));
    for (int i = 0; i < items.size(); ++i) {
        const QString item = items.at(i) + (i + 1 < items.size() ? QStringLiteral(",") : QString());
        if (line.trimmed().size() > 0 && line.size() + 1 + item.size() > columns) {
            text += line + QLatin1Char('\n');
            line = QString(indent, QLatin1Char(' '));
        }
        line += (line.trimmed().isEmpty() ? QString() : QStringLiteral(" ")) + item;
    }
    return text + line + QLatin1Char('\n');
}

QString propertyLines(const QVector<PropertyDescription> &properties)
{
    QString text;
    for (const PropertyDescription &property : properties) {
        QString line = QStringLiteral("  %1 %2 %3 default %4")
                           .arg(property.name, -21)
                           .arg(typeName(property.type), -11)
                           .arg(rangeText(property), -8)
                           .arg(standardText(property));
        if (!property.neutral.isUndefined() && property.neutral != property.standard) {
            line += QStringLiteral(", neutral %1").arg(shortText(property.neutral));
        }
        text += line + QLatin1Char('\n');
        QStringList enumerators;
        for (const auto &enumerator : property.enumerators) {
            enumerators.append(QStringLiteral("%1 %2").arg(enumerator.number).arg(enumerator.name));
        }
        if (!enumerators.isEmpty()) {
            text += itemLines(enumerators, 24);
        }
    }
    return text;
}

QJsonArray propertyArray(const QVector<PropertyDescription> &properties)
{
    QJsonArray array;
    for (const PropertyDescription &property : properties) {
        QJsonObject object{{QStringLiteral("name"), property.name},
                           {QStringLiteral("type"), typeName(property.type)},
                           {QStringLiteral("default"), property.standard}};
        if (property.minimum) {
            object.insert(QStringLiteral("minimum"), *property.minimum);
        }
        if (property.maximum) {
            object.insert(QStringLiteral("maximum"), *property.maximum);
        }
        if (!property.neutral.isUndefined()) {
            object.insert(QStringLiteral("neutral"), property.neutral);
        }
        QJsonArray enumerators;
        for (const auto &enumerator : property.enumerators) {
            enumerators.append(QJsonObject{{QStringLiteral("name"), enumerator.name},
                                           {QStringLiteral("value"), enumerator.number}});
        }
        if (!enumerators.isEmpty()) {
            object.insert(QStringLiteral("values"), enumerators);
        }
        array.append(object);
    }
    return array;
}

// With every property, the common ones first.
QJsonArray kindArray(const QVector<KindDescription> &kinds,
                     const QVector<PropertyDescription> &common, const QString &idKey, bool effects)
{
    QJsonArray array;
    for (const KindDescription &kind : kinds) {
        QJsonObject object{{idKey, kind.id},
                           {QStringLiteral("properties"), propertyArray(common + kind.properties)}};
        if (effects) {
            object.insert(QStringLiteral("aliases"), QJsonArray::fromStringList(kind.aliases));
            object.insert(QStringLiteral("neutralByDefault"), kind.neutral);
        }
        array.append(object);
    }
    return array;
}

} // namespace

QString EffectCatalogue::text() const
{
    QString text = QStringLiteral("A stack is a JSON array of effects, each an object with its "
                                  "\"effectId\" and\nproperties of it; one that is left out has "
                                  "its default.\n\nEvery effect\n");
    text += propertyLines(m_effectProperties);
    for (const KindDescription &kind : m_effects) {
        text += QStringLiteral("\n%1%2\n")
                    .arg(kind.id, kind.neutral ? QStringLiteral(" (changes nothing by default)")
                                               : QString());
        for (const QString &alias : kind.aliases) {
            text += QStringLiteral("  also read as %1\n").arg(alias);
        }
        text += propertyLines(kind.properties);
    }
    text +=
        QStringLiteral("\nLookup tables that come with the library\n") + itemLines(m_presets, 2);
    QStringList masks;
    for (const KindDescription &kind : m_masks) {
        masks.append(kind.id);
    }
    text += QStringLiteral("\nEvery mask, by its \"maskId\":\n") + itemLines(masks, 2);
    text += propertyLines(m_maskProperties);
    for (const KindDescription &kind : m_masks) {
        if (!kind.properties.isEmpty()) {
            text += QStringLiteral("\n%1\n").arg(kind.id) + propertyLines(kind.properties);
        }
    }
    return text + QStringLiteral("\nEvery stop of a mask's gradient\n") +
           propertyLines(m_stopProperties);
}

QByteArray EffectCatalogue::json() const
{
    return QJsonDocument(
               QJsonObject{{QStringLiteral("effects"), kindArray(m_effects, m_effectProperties,
                                                                 QStringLiteral("effectId"), true)},
                           {QStringLiteral("masks"),
                            kindArray(m_masks, m_maskProperties, QStringLiteral("maskId"), false)},
                           {QStringLiteral("stop"), propertyArray(m_stopProperties)},
                           {QStringLiteral("presets"), QJsonArray::fromStringList(m_presets)}})
        .toJson();
}

} // namespace ko::exporter
