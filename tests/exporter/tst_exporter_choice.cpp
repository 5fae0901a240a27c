#include "exporter/EffectStack.h"
#include "exporter/EngineChoice.h"
#include "exporter/OffscreenGl.h"
#include "imagefx/model/EffectRegistry.h"
#include "tests/support/TestEffect.h"

#include <QtCore/QDir>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>
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
    stack->read({QJsonObject{{QStringLiteral("effectId"), id}}}, QString(), registry);
}

void makeFile(const QString &path)
{
    QFile file(path);
    QVERIFY(QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly));
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
    OffscreenGl gl(QStringLiteral("headless"));
    {
        EffectStack known;
        readStack(&known, false);
        EngineChoice choice(Engine::Automatic, gl, known, 1);
        QCOMPARE(choice.asksGl(), hasGraphicsDevice());
        EngineChoice forced(Engine::Processor, gl, known, 1);
        QVERIFY(!forced.make(picture, stackName));
        QVERIFY(forced.processor() != nullptr);
    }
    EffectStack unknown;
    readStack(&unknown, true);
    EngineChoice choice(Engine::Automatic, gl, unknown, 1);
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
