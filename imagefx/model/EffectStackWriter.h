#pragma once

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QList>

namespace ko::imagefx
{

class ImageEffect;

// The JSON form of effects: an object with every property from ImageEffect's first on, under its
// name. Masks and gradient stops become objects too, lists become arrays, enumerations numbers.
// Needs neither a QML engine nor registered QML types.
QJsonObject writeEffect(const ImageEffect *effect);
QJsonArray writeStack(const QList<ImageEffect *> &effects);

} // namespace ko::imagefx
