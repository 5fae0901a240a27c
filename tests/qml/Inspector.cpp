#include "tests/qml/Inspector.h"

#include "imagefx/model/ImageEffect.h"

#include <QtCore/QMetaMethod>
#include <QtCore/QMetaProperty>
#include <QtQml/QQmlListReference>
#include <QtQml/QQmlProperty>
#include <QtTest/QTest>

namespace ko::imagefx::test
{

namespace
{

bool isOfTheLibrary(const QMetaObject *type)
{
    return QByteArray(type->className()).startsWith("ko::");
}

} // namespace

QStringList Inspector::propertyNames(QObject *object) const
{
    QStringList names;
    const QMetaObject *type = object->metaObject();
    for (int i = 0; i < type->propertyCount(); ++i) {
        const QMetaProperty property = type->property(i);
        if (isOfTheLibrary(property.enclosingMetaObject())) {
            names.append(QString::fromLatin1(property.name()));
        }
    }
    return names;
}

QStringList Inspector::signalNames(QObject *object) const
{
    QStringList names;
    const QMetaObject *type = object->metaObject();
    for (int i = 0; i < type->methodCount(); ++i) {
        const QMetaMethod method = type->method(i);
        if (method.methodType() == QMetaMethod::Signal &&
            isOfTheLibrary(method.enclosingMetaObject())) {
            names.append(QString::fromLatin1(method.name()));
        }
    }
    return names;
}

QObject *Inspector::elementAt(QObject *object, const QString &list, int index) const
{
    auto property = QQmlProperty(object, list).read().value<QQmlListReference>();
    return property.at(index);
}

bool Inspector::isNeutral(QObject *effect) const
{
    return qobject_cast<ImageEffect *>(effect)->isNeutral();
}

void Inspector::expectCritical(const QString &message) const
{
    QTest::ignoreMessage(QtCriticalMsg, message.toUtf8().constData());
}

} // namespace ko::imagefx::test
