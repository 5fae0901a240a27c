#include "core/RenderScope.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/model/ImageEffect.h"
#include "tests/support/TestMain.h"

#include <QtCore/QFile>
#include <QtCore/QMetaType>
#include <QtCore/QRegularExpression>
#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>

#include <memory>

using namespace ko::imagefx;

namespace
{

struct Type {
    QString className;
    QString name; // in QML
    bool creatable;
};

// What editors and qmllint are told about the module.
QVector<Type> describedTypes(const QString &folder)
{
    QFile file(QStringLiteral(QML_FOLDER "/%1/plugins.qmltypes").arg(folder));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    static const QRegularExpression exported(
        QStringLiteral("exports: \\[\"[\\w.]+/(\\w+) 1.0\"\\]"));
    static const QRegularExpression named(QStringLiteral("name: \"([\\w:]+)\""));
    QVector<Type> types;
    const QStringList components =
        QString::fromUtf8(file.readAll()).split(QStringLiteral("    Component {"));
    for (const QString &component : components) {
        const QRegularExpressionMatch match = exported.match(component);
        if (match.hasMatch()) {
            types.append({named.match(component).captured(1), match.captured(1),
                          !component.contains(QLatin1String("isCreatable: false"))});
        }
    }
    return types;
}

// The classes of a namespace that have been registered with QML so far: it makes a list type for
// each of them.
QStringList registeredClasses(const QString &nameSpace)
{
    const QRegularExpression list(
        QStringLiteral("\\AQQmlListProperty<(%1::\\w+)>\\z").arg(nameSpace));
    QStringList classes;
    for (int id = QMetaType::User; QMetaType::isRegistered(id); ++id) {
        const QRegularExpressionMatch match =
            list.match(QString::fromLatin1(QMetaType::typeName(id)));
        if (match.hasMatch()) {
            classes.append(match.captured(1));
        }
    }
    classes.sort();
    return classes;
}

} // namespace

// What an application gets from the modules in the import path.
class ModulesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_engine.addImportPath(QStringLiteral(QML_FOLDER)); }

    // First, since what a module registers stays.
    void importMakesEffectsAvailableById()
    {
        const QString blur = QStringLiteral("ko.orvanto.imageeffect.Blur");
        QVERIFY(ImageEffect::createEffect(blur) == nullptr);
        const std::unique_ptr<QObject> object(
            create("import Korvel.ImageFx 1.0\nBlurImageEffect {}"));
        QVERIFY2(object, qPrintable(m_error));
        const std::unique_ptr<ImageEffect> effect(ImageEffect::createEffect(blur));
        QVERIFY(effect);
        QCOMPARE(object->property("effectId").toString(), blur);
    }

    void theApplicationAndTheModuleShareTheirTypes()
    {
        const std::unique_ptr<QObject> object(create("import Korvel.ImageFx 1.0\n"
                                                     "HSVImageEffect { hue: 0.25; alpha: 0.5\n"
                                                     "blendMode: ImageEffect.Multiply }"));
        QVERIFY2(object, qPrintable(m_error));
        const auto *effect = qobject_cast<HSVImageEffect *>(object.get());
        QVERIFY(effect != nullptr);
        QCOMPARE(effect->hue(), 0.25f);
        QCOMPARE(effect->alpha(), 0.5f);
        QCOMPARE(effect->blendMode(), ImageEffect::Multiply);
    }

    void handlersHearOfTheRatio()
    {
        QQmlComponent component(&m_engine, QUrl::fromLocalFile(QStringLiteral(RATIO_LISTENER)));
        const std::unique_ptr<QObject> object(component.create());
        QVERIFY2(object, qPrintable(component.errorString()));
        auto *scope = qobject_cast<ko::RenderScope *>(object.get());
        QVERIFY(scope != nullptr);
        QCOMPARE(ko::RenderScope::find(scope->findChild<QQuickItem *>(QStringLiteral("inside"))),
                 scope);
        QCOMPARE(scope->property("sideInPixels").toReal(), 10.0);
        QVERIFY(scope->setProperty("pixelRatio", 1.0));
        QCOMPARE(scope->property("changes").toInt(), 0);
        QCOMPARE(scope->property("requests").toInt(), 1);
        QVERIFY(scope->setProperty("pixelRatio", 1.5));
        QCOMPARE(scope->property("changes").toInt(), 1);
        QCOMPARE(scope->property("requests").toInt(), 2);
        QCOMPARE(scope->property("sideInPixels").toReal(), 15.0);
    }

    void abstractTypesCannotBeCreated()
    {
        for (const char *type : {"ImageEffect", "AlphaMask"}) {
            QVERIFY(!create(QByteArray("import Korvel.ImageFx 1.0\n") + type + " {}"));
            QVERIFY2(m_error.contains(QLatin1String(type) + QLatin1String(" is abstract")),
                     qPrintable(m_error));
        }
    }

    void laterVersionsAreNotThereYet()
    {
        QVERIFY(!create("import Korvel.ImageFx 1.1\nHueAlphaMask {}"));
        QVERIFY2(m_error.contains(QLatin1String("\"Korvel.ImageFx\" version 1.1 is not installed")),
                 qPrintable(m_error));
        QVERIFY(!create("import Korvel.Core 1.1\nRenderScope {}"));
        QVERIFY2(m_error.contains(QLatin1String("\"Korvel.Core\" version 1.1 is not installed")),
                 qPrintable(m_error));
    }

    void everyRegisteredTypeIsDescribed_data()
    {
        QTest::addColumn<QString>("module");
        QTest::addColumn<QString>("nameSpace");
        QTest::addColumn<int>("least");
        QTest::newRow("Core") << "Core"
                              << "ko" << 1;
        QTest::newRow("ImageFx") << "ImageFx"
                                 << "ko::imagefx" << 19;
    }

    void everyRegisteredTypeIsDescribed()
    {
        QFETCH(const QString, module);
        QFETCH(const QString, nameSpace);
        QFETCH(const int, least);
        const std::unique_ptr<QObject> loaded(
            create(QStringLiteral("import QtQml 2.15\nimport Korvel.%1 1.0\nQtObject {}")
                       .arg(module)
                       .toUtf8()));
        QVERIFY2(loaded, qPrintable(m_error));
        QStringList described;
        const QVector<Type> types = describedTypes(QLatin1String("Korvel/") + module);
        for (const Type &type : types) {
            described.append(type.className);
        }
        described.sort();
        QVERIFY(described.size() >= least);
        const QChar space = QLatin1Char(' ');
        QCOMPARE(described.join(space), registeredClasses(nameSpace).join(space));
    }

    void everyDescribedTypeCanBeCreatedAsItSays()
    {
        for (const QString &module : {QStringLiteral("Core"), QStringLiteral("ImageFx")}) {
            const QVector<Type> types = describedTypes(QLatin1String("Korvel/") + module);
            QVERIFY(!types.isEmpty());
            for (const Type &type : types) {
                const std::unique_ptr<QObject> object(create(
                    QStringLiteral("import Korvel.%1 1.0\n%2 {}").arg(module, type.name).toUtf8()));
                QVERIFY2((object != nullptr) == type.creatable, qPrintable(type.name + m_error));
                QVERIFY(!object ||
                        type.className == QLatin1String(object->metaObject()->className()));
            }
        }
    }

private:
    std::unique_ptr<QObject> create(const QByteArray &qml)
    {
        QQmlComponent component(&m_engine);
        component.setData(qml, QUrl());
        std::unique_ptr<QObject> object(component.create());
        m_error = component.errorString();
        return object;
    }

    QQmlEngine m_engine;
    QString m_error;
};

KORVEL_TEST_MAIN(ModulesTest)

#include "tst_modules.moc"
