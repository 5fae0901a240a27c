#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonValue>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <optional>

class QMetaProperty;

namespace ko::exporter
{

// What a stack may say about one property. Told by the objects themselves: types and enumerators by
// their meta-objects, the default by a fresh object, the range by what a fresh object makes of
// numbers far beyond any, and the neutral value by what leaves the effect neutral.
struct PropertyDescription {
    enum class Type { Boolean, Number, String, Enumeration, Color, Url, Mask, Effects, Stops };
    struct Enumerator {
        QString name;
        int number;
    };

    QString name;
    Type type;
    QJsonValue standard;
    // Neither for numbers that are not clamped.
    std::optional<double> minimum;
    std::optional<double> maximum;
    // With which the effect leaves the picture as it is, whatever its other properties at their
    // defaults are; undefined when there is none.
    QJsonValue neutral{QJsonValue::Undefined};
    QVector<Enumerator> enumerators;
};

struct KindDescription {
    QString id;
    // Other ids that stacks may have for it.
    QStringList aliases;
    // A fresh effect leaves the picture as it is.
    bool neutral = false;
    QVector<PropertyDescription> properties;
};

// Nothing for what no stack can hold.
std::optional<PropertyDescription::Type> propertyType(const QMetaProperty &property);
QString typeName(PropertyDescription::Type type);

// Every kind that a stack may hold. Needs no application and no OpenGL.
class EffectCatalogue
{
public:
    EffectCatalogue();

    // What every effect, or mask, has beside its own properties.
    const QVector<PropertyDescription> &effectProperties() const { return m_effectProperties; }
    const QVector<PropertyDescription> &maskProperties() const { return m_maskProperties; }
    const QVector<PropertyDescription> &stopProperties() const { return m_stopProperties; }
    // With their own properties alone, in alphabetical order.
    const QVector<KindDescription> &effects() const { return m_effects; }
    const QVector<KindDescription> &masks() const { return m_masks; }
    // The URLs of the lookup tables that come with the library.
    const QStringList &presets() const { return m_presets; }

    // For --list-effects.
    QString text() const;
    QByteArray json() const;

private:
    void describeEffects();
    void describeMasks();
    void describeStops();

    QStringList m_presets;
    QVector<PropertyDescription> m_effectProperties;
    QVector<PropertyDescription> m_maskProperties;
    QVector<PropertyDescription> m_stopProperties;
    QVector<KindDescription> m_effects;
    QVector<KindDescription> m_masks;
};

} // namespace ko::exporter
