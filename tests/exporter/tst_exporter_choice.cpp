#include "exporter/EffectStack.h"
#include "exporter/EngineChoice.h"
#include "exporter/OffscreenGl.h"
#include "imagefx/model/EffectRegistry.h"
#include "tests/support/TestEffect.h"

#include <QtCore/QDir>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>
#include <QtCore/QTemporaryDir>
#include <QtGui/QColor>
#include <QtTest/QtTest>

#include <unistd.h>

using namespace ko::exporter;
using Engine = ExportOptions::Engine;

namespace
{

const QString homeMadeId = QStringLiteral("com.example.HomeMade");
const QString picture = QStringLiteral("picture.jpg");
const QString stackName = QStringLiteral("look.json");

ko::imagefx::ImageEffect *makeHomeMade()
{
    return new ko::imagefx::test::TestEffect(QByteArray(), homeMadeId);
}

// A stack of one effect, which is the library's own or one that only GL can draw.
void readStack(EffectStack *stack, bool homeMade)
{
    ko::imagefx::EffectRegistry registry = ko::imagefx::EffectRegistry::complete();
    registry.insertEffect(homeMadeId, makeHomeMade);
    const QString id = homeMade ? homeMadeId : QStringLiteral("ko.orvanto.imageeffect.ColorFill");
    stack->read({QJsonObject{{QStringLiteral("effectId"), id},
                             {QStringLiteral("color"), QStringLiteral("#00ff00")}}},
                QString(), registry);
}

void makeFile(const QString &path)
{
    QFile file(path);
    QVERIFY(QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly));
}

void makeDevice(const QTemporaryDir &devices)
{
    makeFile(devices.path() + QStringLiteral("/dri/renderD128"));
}

// The program has no application object until GL is started.
bool wasGlStarted()
{
    return QCoreApplication::instance() != nullptr;
}

} // namespace

class tst_exporter_choice : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aGraphicsDeviceIsARenderNode_data();
    void aGraphicsDeviceIsARenderNode();
    void aDeviceOfOthersDoesNotCount();
    void softwareRenderersAreKnown_data();
    void softwareRenderersAreKnown();
    void withoutADeviceOpenGlIsNotAsked();
    void aDeviceWithASoftwareRendererIsNotUsed();
    void aDeviceWithoutOpenGlIsNotUsed();
    void onlyAnAutomaticChoiceLooksForDevices_data();
    void onlyAnAutomaticChoiceLooksForDevices();
    void theProcessorRefusesWhatItDoesNotKnow();
    void whatTheProcessorDoesNotKnowGoesToOpenGl();
    void anEmptyStackAsksNobody();
};

void tst_exporter_choice::aGraphicsDeviceIsARenderNode_data()
{
    QTest::addColumn<QString>("node");
    QTest::addColumn<bool>("counts");
    QTest::newRow("render node") << QStringLiteral("/dri/renderD128") << true;
    QTest::newRow("second render node") << QStringLiteral("/dri/renderD129") << true;
    QTest::newRow("node of a driver of its own") << QStringLiteral("/nvidia0") << true;
    QTest::newRow("display alone") << QStringLiteral("/dri/card0") << false;
    QTest::newRow("control node") << QStringLiteral("/nvidiactl") << false;
    QTest::newRow("something else") << QStringLiteral("/null") << false;
}

void tst_exporter_choice::aGraphicsDeviceIsARenderNode()
{
    QFETCH(QString, node);
    QFETCH(bool, counts);
    const QTemporaryDir devices;
    QVERIFY(!hasGraphicsDevice(devices.path()));
    makeFile(devices.path() + node);
    QCOMPARE(hasGraphicsDevice(devices.path()), counts);
}

void tst_exporter_choice::aDeviceOfOthersDoesNotCount()
{
    if (geteuid() == 0) {
        QSKIP("Everything is open to this user.");
    }
    const QTemporaryDir devices;
    const QString node = devices.path() + QStringLiteral("/dri/renderD128");
    makeFile(node);
    QVERIFY(QFile::setPermissions(node, {}));
    QVERIFY(!hasGraphicsDevice(devices.path()));
}

void tst_exporter_choice::softwareRenderersAreKnown_data()
{
    QTest::addColumn<QByteArray>("renderer");
    QTest::addColumn<bool>("isSoftware");
    const auto row = [](const char *renderer, bool isSoftware) {
        QTest::newRow(renderer) << QByteArray(renderer) << isSoftware;
    };
    row("llvmpipe (LLVM 15.0.6, 256 bits)", true);
    row("softpipe", true);
    row("Software Rasterizer", true);
    row("Mesa Intel(R) UHD Graphics 620 (KBL GT2)", false);
    row("AMD Radeon RX 6600 (navi23, LLVM 15.0.6, DRM 3.49)", false);
    row("NVIDIA H100 80GB HBM3/PCIe/SSE2", false);
    row("virgl (AMD Radeon)", false);
}

void tst_exporter_choice::softwareRenderersAreKnown()
{
    QFETCH(QByteArray, renderer);
    QFETCH(bool, isSoftware);
    QCOMPARE(isSoftwareRenderer(renderer), isSoftware);
}

void tst_exporter_choice::withoutADeviceOpenGlIsNotAsked()
{
    const QTemporaryDir devices;
    OffscreenGl gl(QStringLiteral("headless"));
    EffectStack stack;
    readStack(&stack, false);
    EngineChoice choice(Engine::Automatic, gl, stack, 1, devices.path());
    QVERIFY(!choice.asksGl());
    QVERIFY(!choice.make(picture, stackName));
    QVERIFY(choice.processor() != nullptr);
    QVERIFY(!wasGlStarted());
}

void tst_exporter_choice::aDeviceWithASoftwareRendererIsNotUsed()
{
    const QTemporaryDir devices;
    makeDevice(devices);
    OffscreenGl gl(QStringLiteral("headless"));
    EffectStack stack;
    readStack(&stack, false);
    EngineChoice choice(Engine::Automatic, gl, stack, 1, devices.path());
    QVERIFY(choice.asksGl());
    QVERIFY(!choice.make(picture, stackName));
    QVERIFY(wasGlStarted());
    const Outcome missing = gl.start(picture);
    QVERIFY2(!missing, missing ? qPrintable(missing->message) : "");
    if (!isSoftwareRenderer(gl.renderer())) {
        QVERIFY(choice.processor() == nullptr);
        QSKIP("OpenGL draws on a graphics card here.");
    }
    QVERIFY(choice.processor() != nullptr);
    QVERIFY(choice.note().startsWith(QStringLiteral("the processor draws, ")));
}

void tst_exporter_choice::aDeviceWithoutOpenGlIsNotUsed()
{
    const QTemporaryDir devices;
    makeDevice(devices);
    OffscreenGl gl(QStringLiteral("headless:display=none"));
    EffectStack known;
    readStack(&known, false);
    EngineChoice choice(Engine::Automatic, gl, known, 1, devices.path());
    QVERIFY(choice.asksGl());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("display=none")));
    const Outcome failure = choice.make(picture, stackName);
    QVERIFY2(!failure, failure ? qPrintable(failure->message) : "");
    QVERIFY(choice.processor() != nullptr);
    QImage drawn(3, 2, QImage::Format_RGB32);
    drawn.fill(Qt::white);
    QVERIFY(choice.processor()->draw(&drawn, 1.0F));
    QCOMPARE(drawn.pixelColor(2, 1), QColor(Qt::green));

    EffectStack unknown;
    readStack(&unknown, true);
    EngineChoice needed(Engine::Automatic, gl, unknown, 1, devices.path());
    EngineChoice forced(Engine::Gl, gl, known, 1, devices.path());
    for (EngineChoice *const withGlOnly : {&needed, &forced}) {
        const Outcome missing = withGlOnly->make(picture, stackName);
        QVERIFY(missing);
        QCOMPARE(missing->code, ExitCode::NoOpenGl);
    }
}

void tst_exporter_choice::onlyAnAutomaticChoiceLooksForDevices_data()
{
    QTest::addColumn<bool>("hasDevice");
    QTest::newRow("device") << true;
    QTest::newRow("no device") << false;
}

void tst_exporter_choice::onlyAnAutomaticChoiceLooksForDevices()
{
    QFETCH(bool, hasDevice);
    const QTemporaryDir devices;
    if (hasDevice) {
        makeDevice(devices);
    }
    OffscreenGl gl(QStringLiteral("headless"));
    EffectStack stack;
    readStack(&stack, false);
    QCOMPARE(EngineChoice(Engine::Automatic, gl, stack, 1, devices.path()).asksGl(), hasDevice);
    EngineChoice processor(Engine::Processor, gl, stack, 1, devices.path());
    QVERIFY(!processor.asksGl());
    QVERIFY(!processor.make(picture, stackName));
    QVERIFY(processor.processor() != nullptr);
    QVERIFY(!wasGlStarted());
    EngineChoice forced(Engine::Gl, gl, stack, 1, devices.path());
    QVERIFY(forced.asksGl());
    const Outcome failure = forced.make(picture, stackName);
    QVERIFY2(!failure, failure ? qPrintable(failure->message) : "");
    QVERIFY(forced.processor() == nullptr);
}

void tst_exporter_choice::theProcessorRefusesWhatItDoesNotKnow()
{
    OffscreenGl gl(QStringLiteral("headless"));
    EffectStack stack;
    readStack(&stack, true);
    QCOMPARE(stack.visibleEffects().size(), 1);
    EngineChoice choice(Engine::Processor, gl, stack, 1);
    QVERIFY(!choice.asksGl());
    const Outcome failure = choice.make(picture, stackName);
    QVERIFY(failure);
    QCOMPARE(failure->code, ExitCode::RenderingFailed);
    for (const QString &part : {stackName, homeMadeId, QStringLiteral("--engine=gl")}) {
        QVERIFY2(failure->message.contains(part), qPrintable(failure->message));
    }
}

void tst_exporter_choice::whatTheProcessorDoesNotKnowGoesToOpenGl()
{
    const QTemporaryDir devices;
    OffscreenGl gl(QStringLiteral("headless"));
    EffectStack unknown;
    readStack(&unknown, true);
    EngineChoice choice(Engine::Automatic, gl, unknown, 1, devices.path());
    QVERIFY(choice.asksGl());
    const Outcome failure = choice.make(picture, stackName);
    QVERIFY2(!failure, failure ? qPrintable(failure->message) : "");
    QVERIFY(choice.processor() == nullptr);
    QVERIFY(choice.note().startsWith(QStringLiteral("OpenGL draws, on ")));
}

void tst_exporter_choice::anEmptyStackAsksNobody()
{
    OffscreenGl gl(QStringLiteral("nonsense"));
    const EffectStack stack;
    for (const Engine engine : {Engine::Automatic, Engine::Gl, Engine::Processor}) {
        EngineChoice choice(engine, gl, stack, 1);
        QVERIFY(!choice.asksGl());
        QVERIFY(!choice.make(picture, stackName));
        QVERIFY(choice.processor()->isIdle());
    }
}

QTEST_APPLESS_MAIN(tst_exporter_choice)

#include "tst_exporter_choice.moc"
