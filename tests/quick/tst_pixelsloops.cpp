#include "headless/HeadlessImport.h"
#include "tests/quick/QuickScene.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/PictureTester.h"

#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtGui/QGuiApplication>
#include <QtTest/QTest>

using namespace ko::imagefx::test;

namespace
{

constexpr const char *picturePath = "KORVEL_GRAB_TO";

// What an application would show: every way of drawing of Qt Quick around an item with effects.
constexpr const char *sceneText = R"(
    Rectangle {
        gradient: Gradient {
            GradientStop { position: 0; color: 'steelblue' }
            GradientStop { position: 1; color: 'khaki' }
        }
        Image { id: photograph; source: 'image://test/photograph'; visible: false }
        PixelBuffer {
            x: 10; y: 20; width: 122; height: 94
            sourceItem: photograph
            maskViewLayer: shift
            imageEffects: [
                BlurImageEffect { radius: 6.3 },
                HSVImageEffect {
                    id: shift
                    hue: 0.3
                    alphaMask: DistanceAlphaMask {
                        gradientStops: [ AlphaGradientStop { location: 0.2; value: 0 },
                                         AlphaGradientStop { location: 0.9; value: 1 } ]
                    }
                },
                ExposureImageEffect { exposure: 0.4; darkTones: -0.2 }
            ]
        }
        Text {
            x: 20; y: 120; text: 'Before and after'; color: 'white'
        }
    })";

int grabTo(const QString &path)
{
    QuickScene scene(QSize(160, 150));
    scene.addPicture(QStringLiteral("photograph"), opaquePicture());
    const QByteArray failure = scene.show(sceneText);
    if (!failure.isEmpty()) {
        qWarning("%s", failure.constData());
        return 1;
    }
    return scene.grab().save(path) && scene.warnings().isEmpty() ? 0 : 1;
}

} // namespace

// One scene, drawn by programs with different render loops.
class PixelsLoopsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bothRenderLoopsDrawTheSamePicture();
};

void PixelsLoopsTest::bothRenderLoopsDrawTheSamePicture()
{
    const QTemporaryDir folder;
    QVERIFY(folder.isValid());
    QVector<QImage> pictures;
    for (const char *loop : {"basic", "threaded", "basic", "threaded"}) {
        const QString path = folder.filePath(QString::number(pictures.size()) + ".png");
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QSG_RENDER_LOOP"), QString::fromLatin1(loop));
        environment.insert(QString::fromLatin1(picturePath), path);
        // The order of a hash decides where Qt Quick keeps the glyphs of a text, and where decides
        // how they are rounded: one level here and there, from one run to the next.
        environment.insert(QStringLiteral("QT_HASH_SEED"), QStringLiteral("0"));
        program.setProcessEnvironment(environment);
        program.setProcessChannelMode(QProcess::MergedChannels);
        program.start(QCoreApplication::applicationFilePath(), QStringList());
        QVERIFY(program.waitForFinished());
        QVERIFY2(program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0,
                 program.readAll().constData());
        pictures.append(QImage(path));
        QCOMPARE(pictures.last().size(), QSize(160, 150));
        KORVEL_COMPARE_PICTURES(pictures.last(), pictures.first(), 0.0);
    }
}

int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "headless");
    }
    const QGuiApplication application(argc, argv);
    if (qEnvironmentVariableIsSet(picturePath)) {
        return grabTo(qEnvironmentVariable(picturePath));
    }
    PixelsLoopsTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_pixelsloops.moc"
