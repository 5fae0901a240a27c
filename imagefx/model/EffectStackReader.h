#pragma once

#include "imagefx/Export.h"
#include "imagefx/model/EffectRegistry.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QStringList>

class QMetaProperty;

namespace ko::imagefx
{

// Reads effects from their JSON form, with the kinds that a registry knows. A key that names no
// property is passed over; a value of the wrong type is converted as QVariant does, so that null or
// a text without a number reads as 0. Effects, masks and stops come without an owner: the caller
// owns them all, except the stops, which belong to their mask.
class KORVELIMAGEFX_EXPORT EffectStackReader
{
public:
    // `registry` must outlive the reader.
    explicit EffectStackReader(const EffectRegistry &registry);

    // Null when the object's "effectId" is missing or not registered.
    ImageEffect *readEffect(const QJsonObject &object);
    // The effects in order; elements that give no effect are left out.
    QList<ImageEffect *> readStack(const QJsonArray &array);

    // The ids of effects and masks that the registry did not know, in the order they were met;
    // empty texts for elements without an id.
    QStringList unknownIds() const { return m_unknownIds; }

private:
    AlphaMask *readMask(const QJsonObject &object);
    void readProperty(ImageEffect *effect, const QMetaProperty &property, const QJsonValue &value);

    const EffectRegistry &m_registry;
    QStringList m_unknownIds;
};

} // namespace ko::imagefx
