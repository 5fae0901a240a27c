#include "tests/support/TestMain.h"

#include <QtCore/QLibrary>
#include <QtCore/QMetaType>
#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>

#include <memory>

using RegisterTypes = void (*)(const char *uri);

namespace
{

struct Module {
    const char *library;
    const char *function;
    const char *nameSpace;
    QStringList types; // in the order of their registration
};

const QStringList abstractTypes{"ImageEffect", "AlphaMask"};

const Module core{CORE_LIBRARY, "korvelcore_register_qml", "ko", {"RenderScope"}};
const Module imageFx{
    IMAGEFX_LIBRARY,
    "imagefx_register_qml",
    "ko::imagefx",
    {"ImageEffect", "AlphaMask", "PixelBuffer", "SharpenImageEffect", "GrayScaleImageEffect",
     "BrightnessContrastImageEffect", "ChannelShiftImageEffect", "HSVImageEffect",
     "LookupTableImageEffect", "BatchImageEffect", "BlurImageEffect", "ExposureImageEffect",
     "ColorFillImageEffect", "SelectiveSaturationImageEffect", "AlphaGradientStop",
     "DistanceAlphaMask", "HueAlphaMask", "LuminanceAlphaMask", "ImageEffectExporter"}};

RegisterTypes functionOf(const Module &module)
{
    return reinterpret_cast<RegisterTypes>(QLibrary::resolve(module.library, module.function));
}

// The types of the namespace that Qt knows, in the order in which it met them: QML has it register
// a list type for each of its own.
QStringList knownTypes(const char *nameSpace)
{
    const QString prefix = QStringLiteral("QQmlListProperty<%1::").arg(QLatin1String(nameSpace));
    QStringList types;
    for (int id = QMetaType::User; QMetaType::isRegistered(id); ++id) {
        const QString name = QString::fromLatin1(QMetaType::typeName(id));
        const QString type = name.mid(prefix.size()).chopped(name.startsWith(prefix) ? 1 : 0);
        if (name.startsWith(prefix) && !type.contains(QLatin1Char(':'))) {
            types.append(type);
        }
    }
    return types;
}

// Empty when the type is there and can be created, or not, as it should.
QString complaint(const QString &uri, const Module &module, const QString &type)
{
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData(QStringLiteral("import %1 1.0\n%2 {}").arg(uri, type).toUtf8(), QUrl());
    const std::unique_ptr<QObject> object(component.isReady() ? component.create() : nullptr);
    if (abstractTypes.contains(type)) {
        const QString reason = type + QLatin1String(" is abstract");
        return component.errorString().contains(reason) ? QString()
                                                        : "not refused: " + component.errorString();
    }
    if (object == nullptr) {
        return component.errorString();
    }
    const QString name = QStringLiteral("%1::%2").arg(QLatin1String(module.nameSpace), type);
    return QLatin1String(object->metaObject()->className()) == name
               ? QString()
               : QLatin1String("made a ") + object->metaObject()->className();
}

} // namespace

// What a host that knows no header of the libraries gets from them.
class RegistrationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // First, since what is registered stays.
    void nothingIsRegisteredByLoading()
    {
        for (const Module &module : {core, imageFx}) {
            QVERIFY2(functionOf(module) != nullptr, module.function);
            QCOMPARE(knownTypes(module.nameSpace), QStringList());
        }
    }

    void typesAreRegisteredInTheirOrder()
    {
        for (const Module &module : {core, imageFx}) {
            functionOf(module)("A.B");
            QCOMPARE(knownTypes(module.nameSpace).join(' '), module.types.join(' '));
        }
    }

    void typesAreThereUnderEveryNameGiven()
    {
        const QStringList names{"A.B", "C.D", "Longer.Name.Of.Five.Parts"};
        for (int given = 0; given < names.size(); ++given) {
            for (const Module &module : {core, imageFx}) {
                functionOf(module)(names[given].toUtf8().constData());
                for (const QString &name : names.mid(0, given + 1)) {
                    for (const QString &type : module.types) {
                        const QString found = complaint(name, module, type);
                        QVERIFY2(found.isEmpty(), qPrintable(name + ": " + found));
                    }
                }
            }
            for (const QString &name : names.mid(given + 1)) {
                const QString expected = QStringLiteral("module \"%1\" is not installed").arg(name);
                const QString found = complaint(name, imageFx, "PixelBuffer");
                QVERIFY2(found.contains(expected), qPrintable(found));
            }
        }
    }
};

KORVEL_TEST_MAIN(RegistrationTest)

#include "tst_registration.moc"
