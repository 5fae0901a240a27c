#include "engine/EffectEngine.h"
#include "imagefx/RegisterQml.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "tests/support/TestMain.h"

#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>

using namespace ko::imagefx;

// What an application does with the installed library, which is all that is linked here.
class EnginePublicTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void applicationDrawsAStack()
    {
        ColorFillImageEffect fill;
        fill.setColor(Qt::green);
        const EffectEngine engine({&fill});
        QImage image(4, 3, QImage::Format_RGB32);
        image.fill(Qt::white);
        const QImage drawn = engine.render(image);
        QCOMPARE(drawn.size(), image.size());
        QCOMPARE(drawn.pixelColor(2, 1), QColor(Qt::green));
        QVERIFY(EffectEngine::instructionSets().contains(EffectEngine::instructionSet()));
    }

    // QML makes classes of its own of objects with properties and handlers.
    void effectsMadeInQmlAreTheLibrarysOwn_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("nothing more") << QByteArray();
        QTest::newRow("a property") << QByteArray("property int mine: 1");
        QTest::newRow("a handler") << QByteArray("onColorChanged: console.log(color)");
        QTest::newRow("a mask with a property")
            << QByteArray("alphaMask: HueAlphaMask { property int mine: 1 }");
    }
    void effectsMadeInQmlAreTheLibrarysOwn()
    {
        QFETCH(const QByteArray, body);
        imagefx_register_qml("Korvel.ImageFx");
        QQmlEngine engine;
        QQmlComponent component(&engine);
        component.setData("import Korvel.ImageFx 1.0\nColorFillImageEffect { " + body + " }", {});
        const std::unique_ptr<QObject> made(component.create());
        QVERIFY2(made, qPrintable(component.errorString()));
        auto *effect = qobject_cast<ImageEffect *>(made.get());
        QVERIFY(effect != nullptr);
        QCOMPARE(EffectEngine({effect}).unsupported(), QString());
    }
};

KORVEL_TEST_MAIN(EnginePublicTest)
#include "tst_engine_public.moc"
