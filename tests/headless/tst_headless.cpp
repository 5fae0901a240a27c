#include "HeadlessFixture.h"

#include <HeadlessImport.h>

#include <QtCore/QProcess>
#include <QtCore/QThread>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLTexture>
#include <QtGui/QScreen>

#include <memory>

#ifndef GL_CONTEXT_PROFILE_MASK
#define GL_CONTEXT_PROFILE_MASK 0x9126
#endif
#ifndef GL_CONTEXT_CORE_PROFILE_BIT
#define GL_CONTEXT_CORE_PROFILE_BIT 0x1
#endif

namespace
{

QColor clearedTo(QOpenGLFunctions *gl, const QColor &color)
{
    QOpenGLFramebufferObject target(4, 4);
    target.bind();
    gl->glClearColor(float(color.redF()), float(color.greenF()), float(color.blueF()),
                     float(color.alphaF()));
    gl->glClear(GL_COLOR_BUFFER_BIT);
    uchar pixel[4] = {};
    gl->glReadPixels(3, 3, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    target.release();
    return QColor(pixel[0], pixel[1], pixel[2], pixel[3]);
}

struct ProbeResult {
    int exitCode = -1;
    bool crashed = true;
    QByteArray output;
    QByteArray errors;
};

ProbeResult probe(const QString &platform, const QVector<QPair<QString, QString>> &environment = {})
{
    QProcess process;
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.remove(QStringLiteral("QT_QPA_PLATFORM"));
    variables.insert(QStringLiteral("QT_QPA_PLATFORM_PLUGIN_PATH"),
                     QStringLiteral(HEADLESS_PLUGIN_FOLDER));
    for (const auto &variable : environment)
        variables.insert(variable.first, variable.second);
    process.setProcessEnvironment(variables);
    process.start(QStringLiteral(HEADLESS_PROBE), {QStringLiteral("-platform"), platform});
    ProbeResult result;
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.exitCode = process.exitCode();
    result.crashed = process.exitStatus() != QProcess::NormalExit;
    result.output = process.readAllStandardOutput();
    result.errors = process.readAllStandardError();
    return result;
}

} // namespace

class tst_headless : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void contextIsNeverCoreUnlessAskedFor_data();
    void contextIsNeverCoreUnlessAskedFor();
    void coreProfileOnRequest();
    void everyContextHasEightBitsAChannel_data();
    void everyContextHasEightBitsAChannel();
    void openGLES2OnRequest();
    void offscreenSurfaceDrawsIntoFramebufferObjects();
    void contextWorksOnAnotherThread();
    void sharedContextsShareTextures();
    void globalShareContextIsShared();
    void nativeHandlesAreHandedOut();
    void sharedPluginServesAStockProgram_data();
    void sharedPluginServesAStockProgram();
    void screenSizeArgument();
    void argumentsThatAreNotUnderstoodLeaveNoOpenGL_data();
    void argumentsThatAreNotUnderstoodLeaveNoOpenGL();
    void missingDriverLeavesNoOpenGL();
};

void tst_headless::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), QStringLiteral("headless"));
    QCOMPARE(QGuiApplication::primaryScreen()->size(), QSize(1920, 1080));
    QCOMPARE(QGuiApplication::primaryScreen()->depth(), 32);
    QCOMPARE(QGuiApplication::primaryScreen()->refreshRate(), 60.0);
}

void tst_headless::contextIsNeverCoreUnlessAskedFor_data()
{
    QTest::addColumn<int>("major");
    QTest::addColumn<int>("minor");
    QTest::addColumn<int>("profile");
    QTest::addRow("default") << 2 << 0 << int(QSurfaceFormat::NoProfile);
    QTest::addRow("2.1") << 2 << 1 << int(QSurfaceFormat::NoProfile);
    QTest::addRow("3.0") << 3 << 0 << int(QSurfaceFormat::NoProfile);
    QTest::addRow("3.3") << 3 << 3 << int(QSurfaceFormat::NoProfile);
    QTest::addRow("3.3 compatibility") << 3 << 3 << int(QSurfaceFormat::CompatibilityProfile);
}

void tst_headless::contextIsNeverCoreUnlessAskedFor()
{
    QFETCH(int, major);
    QFETCH(int, minor);
    QFETCH(int, profile);
    QSurfaceFormat format;
    format.setVersion(major, minor);
    format.setProfile(QSurfaceFormat::OpenGLContextProfile(profile));
    Current current(format);
    QVERIFY(current.current);
    QVERIFY(!current.context.isOpenGLES());
    QVERIFY(current.context.format().profile() != QSurfaceFormat::CoreProfile);
    GLint mask = 0;
    current.gl()->glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &mask);
    QCOMPARE(mask & GL_CONTEXT_CORE_PROFILE_BIT, 0);

    // The upload itself: neither core nor forward-compatible contexts take this format.
    const uchar alpha[4] = {10, 20, 30, 40};
    GLuint texture = 0;
    current.gl()->glGenTextures(1, &texture);
    current.gl()->glBindTexture(GL_TEXTURE_2D, texture);
    current.gl()->glTexImage2D(GL_TEXTURE_2D, 0, GL_ALPHA, 4, 1, 0, GL_ALPHA, GL_UNSIGNED_BYTE,
                               alpha);
    QCOMPARE(current.gl()->glGetError(), GLenum(GL_NO_ERROR));
    current.gl()->glDeleteTextures(1, &texture);
}

void tst_headless::coreProfileOnRequest()
{
    QSurfaceFormat format;
    format.setVersion(3, 3);
    format.setProfile(QSurfaceFormat::CoreProfile);
    Current current(format);
    QVERIFY(current.current);
    GLint mask = 0;
    current.gl()->glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &mask);
    QCOMPARE(mask, GL_CONTEXT_CORE_PROFILE_BIT);
}

void tst_headless::everyContextHasEightBitsAChannel_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("bits");
    QTest::addRow("default") << int(QSurfaceFormat::DefaultRenderableType) << -1;
    QTest::addRow("OpenGL, 8 bits") << int(QSurfaceFormat::OpenGL) << 8;
    QTest::addRow("OpenGL, 10 bits") << int(QSurfaceFormat::OpenGL) << 10;
    QTest::addRow("OpenGL ES") << int(QSurfaceFormat::OpenGLES) << -1;
}

void tst_headless::everyContextHasEightBitsAChannel()
{
    QFETCH(int, type);
    QFETCH(int, bits);
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::RenderableType(type));
    format.setRedBufferSize(bits);
    format.setGreenBufferSize(bits);
    format.setBlueBufferSize(bits);
    Current current(format);
    QVERIFY(current.current);
    const QSurfaceFormat actual = current.context.format();
    QCOMPARE(actual.redBufferSize(), 8);
    QCOMPARE(actual.greenBufferSize(), 8);
    QCOMPARE(actual.blueBufferSize(), 8);
    QCOMPARE(actual.alphaBufferSize(), 8);
    QVERIFY(actual.depthBufferSize() >= 24);
    QVERIFY(actual.stencilBufferSize() >= 8);
}

void tst_headless::openGLES2OnRequest()
{
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGLES);
    format.setVersion(2, 0);
    Current current(format);
    QVERIFY(current.current);
    QVERIFY(current.context.isOpenGLES());
    const char *version = reinterpret_cast<const char *>(current.gl()->glGetString(GL_VERSION));
    QVERIFY2(QByteArray(version).startsWith("OpenGL ES "), version);
    const QColor color(0, 102, 204);
    QCOMPARE(clearedTo(current.gl(), color), color);
}

void tst_headless::offscreenSurfaceDrawsIntoFramebufferObjects()
{
    Current current;
    QVERIFY(current.current);
    const QColor color(255, 102, 51, 153);
    QCOMPARE(clearedTo(current.gl(), color), color);
    QCOMPARE(current.gl()->glGetError(), GLenum(GL_NO_ERROR));
}

void tst_headless::contextWorksOnAnotherThread()
{
    // As platforms in general want it, the surface is made on the GUI thread.
    QOffscreenSurface surface;
    surface.create();
    const QColor color(51, 153, 255);
    QColor seen;
    QThread *ranOn = nullptr;
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        QOpenGLContext context;
        if (context.create() && context.makeCurrent(&surface)) {
            ranOn = QThread::currentThread();
            seen = clearedTo(context.functions(), color);
            context.doneCurrent();
        }
    }));
    thread->start();
    QVERIFY(thread->wait(60000));
    QCOMPARE(ranOn, thread.get());
    QCOMPARE(seen, color);
}

void tst_headless::sharedContextsShareTextures()
{
    Current first;
    QVERIFY(first.current);
    QImage red(2, 2, QImage::Format_RGBA8888);
    red.fill(Qt::red);
    auto texture = std::make_unique<QOpenGLTexture>(red, QOpenGLTexture::DontGenerateMipMaps);
    const GLuint id = texture->textureId();
    first.gl()->glFinish();
    QColor seen;
    {
        Current second({}, &first.context);
        QVERIFY(second.current);
        QCOMPARE(second.context.shareContext(), &first.context);
        QVERIFY(second.gl()->glIsTexture(id));
        GLuint framebuffer = 0;
        second.gl()->glGenFramebuffers(1, &framebuffer);
        second.gl()->glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        second.gl()->glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, id,
                                            0);
        uchar pixel[4] = {};
        second.gl()->glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
        second.gl()->glDeleteFramebuffers(1, &framebuffer);
        seen = QColor(pixel[0], pixel[1], pixel[2], pixel[3]);
    }
    QCOMPARE(seen, QColor(Qt::red));
    {
        Current stranger;
        QVERIFY(stranger.current);
        QVERIFY(!stranger.gl()->glIsTexture(id));
    }
    QVERIFY(first.context.makeCurrent(&first.surface));
    texture.reset();
}

void tst_headless::globalShareContextIsShared()
{
    QOpenGLContext *global = QOpenGLContext::globalShareContext();
    QVERIFY(global);
    Current current({}, global);
    QVERIFY(current.current);
    QVERIFY(QOpenGLContext::areSharing(global, &current.context));
}

void tst_headless::nativeHandlesAreHandedOut()
{
    Current current;
    QVERIFY(current.current);
    QVERIFY(current.context.nativeHandle().isValid());
    // An adopted context is the same one, so it knows the objects of the first.
    GLuint texture = 0;
    current.gl()->glGenTextures(1, &texture);
    current.gl()->glBindTexture(GL_TEXTURE_2D, texture);
    QOpenGLContext adopted;
    adopted.setNativeHandle(current.context.nativeHandle());
    QVERIFY(adopted.create());
    QVERIFY(adopted.makeCurrent(&current.surface));
    GLint bound = 0;
    adopted.functions()->glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    adopted.doneCurrent();
    QCOMPARE(GLuint(bound), texture);
    QVERIFY(current.context.makeCurrent(&current.surface));
    current.gl()->glDeleteTextures(1, &texture);
}

void tst_headless::sharedPluginServesAStockProgram_data()
{
    QTest::addColumn<QString>("platform");
    QTest::addColumn<QByteArray>("opened");
    QTest::addRow("automatic") << QStringLiteral("headless") << QByteArray(": in use");
    QTest::addRow("device") << QStringLiteral("headless:display=device")
                            << QByteArray("device 0: in use");
    QTest::addRow("surfaceless") << QStringLiteral("headless:display=surfaceless")
                                 << QByteArray("surfaceless: in use");
}

void tst_headless::sharedPluginServesAStockProgram()
{
    QFETCH(QString, platform);
    QFETCH(QByteArray, opened);
    const ProbeResult result =
        probe(platform, {{QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("headless.*=true")}});
    QVERIFY2(!result.crashed && result.exitCode == 0, result.errors.constData());
    QVERIFY2(result.errors.contains(opened), result.errors.constData());
    QVERIFY2(result.output.contains("platform: headless\n"), result.output.constData());
    QVERIFY2(result.output.contains("screen: 1920x1080\n"), result.output.constData());
    QVERIFY2(result.output.contains("pixel: #ff8000\n"), result.output.constData());
}

void tst_headless::screenSizeArgument()
{
    const ProbeResult result = probe(QStringLiteral("headless:size=800x600"));
    QVERIFY2(!result.crashed && result.exitCode == 0, result.errors.constData());
    QVERIFY2(result.output.contains("screen: 800x600\n"), result.output.constData());
}

void tst_headless::argumentsThatAreNotUnderstoodLeaveNoOpenGL_data()
{
    QTest::addColumn<QString>("argument");
    for (const char *argument : {"display=hologram", "display=", "display", "size=0x600",
                                 "size=800", "size=800x600x2", "size=99999x1", "colour=red"})
        QTest::addRow("%s", argument) << QString::fromLatin1(argument);
}

void tst_headless::argumentsThatAreNotUnderstoodLeaveNoOpenGL()
{
    QFETCH(QString, argument);
    const ProbeResult result = probe(QStringLiteral("headless:") + argument);
    QVERIFY2(!result.crashed, result.errors.constData());
    QCOMPARE(result.exitCode, 3);
    QVERIFY2(result.output.contains("context: none\n"), result.output.constData());
    QVERIFY2(result.errors.contains('"' + argument.toLatin1() + '"'), result.errors.constData());
    QVERIFY2(result.errors.contains("display=surfaceless"), result.errors.constData());
}

void tst_headless::missingDriverLeavesNoOpenGL()
{
    const ProbeResult result = probe(
        QStringLiteral("headless"),
        {{QStringLiteral("__EGL_VENDOR_LIBRARY_FILENAMES"), QStringLiteral("/nonexistent.json")}});
    QVERIFY2(!result.crashed, result.errors.constData());
    QCOMPARE(result.exitCode, 3);
    QVERIFY2(result.output.contains("context: none\n"), result.output.constData());
    QVERIFY2(result.errors.contains("no EGL display"), result.errors.constData());
}

int main(int argc, char **argv)
{
    return runHeadlessTest<tst_headless>(argc, argv);
}

#include "tst_headless.moc"
