#include "core/RegisterQml.h"
#include "engine/EffectEngine.h"
#include "imagefx/RegisterQml.h"
#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/model/EffectStackReader.h"
#include "imagefx/model/ImageEffect.h"
#include "imagefx/render/ImageEffectRenderer.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/TestMain.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QTemporaryDir>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>
#include <QtQml/QQmlListReference>
#include <QtQuick/QQuickView>
#include <QtTest/QSignalSpy>

#include <memory>

using namespace ko::imagefx;
using ko::imagefx::test::OffscreenGl;

namespace
{

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

int effectsIn(const QByteArray &json, QStringList *unknown)
{
    const EffectRegistry registry = EffectRegistry::complete();
    EffectStackReader reader(registry);
    const QList<ImageEffect *> effects = reader.readStack(QJsonDocument::fromJson(json).array());
    for (const ImageEffect *effect : effects) {
        delete effect->alphaMask();
    }
    qDeleteAll(effects);
    *unknown = reader.unknownIds();
    return effects.size();
}

} // namespace

// What the README shows works as it stands.
class ReadmeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theLiveQmlSnippetBrightensThePhotograph()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("live.qml"));
        QVERIFY(QFile::copy(QStringLiteral(SNIPPETS "/live.qml.inc"), path));
        QImage grey(600, 400, QImage::Format_RGB32);
        grey.fill(QColor(128, 128, 128));
        QVERIFY(grey.save(folder.filePath(QStringLiteral("photo.jpg")), nullptr, 100));
        imagefx_register_qml("Korvel.ImageFx");
        korvelcore_register_qml("Korvel.Core");
        QQuickView view(QUrl::fromLocalFile(path));
        QVERIFY2(view.errors().isEmpty(), "the snippet has errors");
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        const QImage shown = view.grabWindow();
        QCOMPARE(shown.size(), QSize(800, 600));
        QVERIFY(qGray(shown.pixel(400, 300)) > 150);
        QCOMPARE(shown.pixel(10, 10), shown.pixel(400, 300));
    }

    void theQmlAndTheCppSnippetsDarkenTheCorners()
    {
        const QTemporaryDir folder;
        const QString formerFolder = QDir::currentPath();
        QVERIFY(QDir::setCurrent(folder.path()));
        QVERIFY(QFile::copy(QStringLiteral(SNIPPETS "/vignette.qml.inc"),
                            QStringLiteral("vignette.qml")));
        QImage white(101, 101, QImage::Format_RGB32);
        white.fill(Qt::white);
        QVERIFY(white.save(QStringLiteral("photo.jpg"), nullptr, 100));
        OffscreenGl gl;
        QVERIFY(gl.isValid());
        QImage fromEngine;
        {
#include "snippet.cpp.inc"
            // The README goes on with what is there by now.
#include "engine.cpp.inc"
            fromEngine = drawn;
        }
        const QImage result(QStringLiteral("vignette.png"));
        QVERIFY(QDir::setCurrent(formerFolder));
        QCOMPARE(result.size(), white.size());
        QCOMPARE(qGray(result.pixel(50, 50)), 255);
        QVERIFY(qGray(result.pixel(0, 0)) < 90);
        QVERIFY(qGray(result.pixel(0, 50)) < 255);
        QCOMPARE(fromEngine.size(), white.size());
        QCOMPARE(qGray(fromEngine.pixel(50, 50)), 255);
        QVERIFY(qGray(fromEngine.pixel(0, 0)) < 90);
    }

    void theQmlSnippetExportsThePhotograph()
    {
        const QTemporaryDir folder;
        const QByteArray snippet = contentOf(QStringLiteral(SNIPPETS "/export.qml.inc"));
        QVERIFY(snippet.count('\n') < 20);
        const QString path = folder.filePath(QStringLiteral("export.qml"));
        QVERIFY(QFile::copy(QStringLiteral(SNIPPETS "/export.qml.inc"), path));
        QImage grey(60, 40, QImage::Format_RGB32);
        grey.fill(QColor(128, 128, 128));
        QVERIFY(grey.save(folder.filePath(QStringLiteral("photo.jpg"))));
        imagefx_register_qml("Korvel.ImageFx");
        QQmlEngine engine;
        QSignalSpy quit(&engine, &QQmlEngine::quit);
        QSignalSpy exit(&engine, &QQmlEngine::exit);
        QQmlComponent component(&engine, QUrl::fromLocalFile(path));
        const std::unique_ptr<QObject> exporter(component.create());
        QVERIFY2(exporter, qPrintable(component.errorString()));
        QVERIFY(QTest::qWaitFor([&] { return quit.count() + exit.count() > 0; }, 30000));
        QCOMPARE(exit.count(), 0);
        const QImage result(folder.filePath(QStringLiteral("fargo.png")));
        QCOMPARE(result.size(), grey.size());
        QVERIFY(result.pixelColor(30, 20).lightness() > 140);
        QVERIFY(!result.allGray());
    }

    void theStackOfTheReadmeIsRead()
    {
        QStringList unknown;
        QCOMPARE(effectsIn(contentOf(QStringLiteral(SNIPPETS "/snippet.json.inc")), &unknown), 2);
        QCOMPARE(unknown, QStringList());
    }

    void everyExampleStackIsRead()
    {
        int count = 0;
        QDirIterator files(QStringLiteral(EXAMPLE_STACKS), {QStringLiteral("*.json")});
        while (files.hasNext()) {
            const QByteArray json = contentOf(files.next());
            QStringList unknown;
            QCOMPARE(effectsIn(json, &unknown), QJsonDocument::fromJson(json).array().size());
            QVERIFY(unknown.isEmpty());
            ++count;
        }
        QVERIFY(count >= 6);
    }

    void abstractTypesCannotBeCreated()
    {
        imagefx_register_qml("Korvel.ImageFx");
        QQmlEngine engine;
        for (const char *type : {"ImageEffect", "AlphaMask"}) {
            QQmlComponent component(&engine);
            component.setData(QByteArray("import Korvel.ImageFx 1.0\n") + type + " {}", QUrl());
            QVERIFY(component.isError());
            QVERIFY(component.errorString().contains(QLatin1String(type) +
                                                     QLatin1String(" is abstract")));
        }
        QQmlComponent newer(&engine);
        newer.setData("import Korvel.ImageFx 1.1\nHueAlphaMask {}", QUrl());
        QVERIFY(newer.isError());
    }

    // Registered or not, stacks are written and read alike.
    void stackSurvivesJsonWithTheTypesRegistered()
    {
        imagefx_register_qml("Korvel.ImageFx");
        const QByteArray json =
            R"([{"effectId": "ko.orvanto.imageeffect.Batch", "imageEffects": [{"effectId":
                "ko.orvanto.imageeffect.Blur", "radius": 4, "alphaMask": {"maskId":
                "ko.orvanto.alphamask.Hue", "gradientStops": [{"location": 0.25, "value": 0.5}],
                "gradientInterpolation": 1}}]}])";
        ImageEffect::initialize();
        const QList<ImageEffect *> effects =
            ImageEffect::unserialize(QJsonDocument::fromJson(json).array());
        QCOMPARE(effects.size(), 1);
        const QJsonObject written = ImageEffect::serialize(effects.first());
        auto *batch = qobject_cast<BatchImageEffect *>(effects.first());
        const QList<ImageEffect *> nested = batch->imageEffectList();
        delete batch;
        QCOMPARE(nested.size(), 1);
        delete nested.first()->alphaMask();
        delete nested.first();
        const QJsonObject blur =
            written.value(QLatin1String("imageEffects")).toArray().first().toObject();
        QCOMPARE(blur.value(QLatin1String("radius")), QJsonValue(4));
        const QJsonObject mask = blur.value(QLatin1String("alphaMask")).toObject();
        QCOMPARE(mask.value(QLatin1String("gradientInterpolation")), QJsonValue(1));
        QCOMPARE(mask.value(QLatin1String("gradientStops")).toArray().size(), 1);
    }

    // QML may destroy what is listed; the list lets go of it.
    void stopThatQmlDestroysLeavesItsMask()
    {
        imagefx_register_qml("Korvel.ImageFx");
        QQmlEngine engine;
        QQmlComponent component(&engine);
        component.setData("import QtQml 2.15\nimport Korvel.ImageFx 1.0\n"
                          "QtObject {\n"
                          "    property Component maker: AlphaGradientStop { value: 0 }\n"
                          "    property QtObject stop: maker.createObject(null)\n"
                          "    property QtObject mask: HueAlphaMask {}\n"
                          "    function dropIt() { stop.destroy() }\n"
                          "}\n",
                          QUrl());
        const std::unique_ptr<QObject> object(component.create());
        QVERIFY2(object, qPrintable(component.errorString()));
        auto *mask = object->property("mask").value<QObject *>();
        QQmlListReference stops(mask, "gradientStops", &engine);
        QVERIFY(stops.append(object->property("stop").value<QObject *>()));
        QCOMPARE(stops.count(), 1);
        QVERIFY(QMetaObject::invokeMethod(object.get(), "dropIt"));
        QTRY_COMPARE(stops.count(), 0);
    }
};

KORVEL_TEST_MAIN(ReadmeTest)

#include "tst_readme.moc"
