#pragma once

#include <QtCore/QObject>
#include <QtCore/QStringList>

namespace ko::imagefx::test
{

// What tests written in QML need to know and QML does not tell. "The library's own" leaves out what
// an object inherits from Qt's classes.
class Inspector : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // Names of the library's own properties and signals, in the order of their declaration.
    Q_INVOKABLE QStringList propertyNames(QObject *object) const;
    Q_INVOKABLE QStringList signalNames(QObject *object) const;

    // The element of a list property at any index, also at those that QML does not ask for.
    Q_INVOKABLE QObject *elementAt(QObject *object, const QString &list, int index) const;

    // Whether an effect says that it leaves the picture unchanged.
    Q_INVOKABLE bool isNeutral(QObject *effect) const;

    // The running test fails unless this critical message is logged before it ends.
    Q_INVOKABLE void expectCritical(const QString &message) const;
};

} // namespace ko::imagefx::test
