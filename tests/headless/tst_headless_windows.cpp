#include "HeadlessFixture.h"

#include <HeadlessImport.h>

#include <QtCore/QElapsedTimer>
#include <QtGui/QBackingStore>
#include <QtGui/QPainter>
#include <QtGui/QRasterWindow>
#include <QtGui/QScreen>

namespace
{

// Shown, because Qt has a warning for every frame that goes to a hidden window.
bool showForOpenGL(QWindow *window, const QSize &size)
{
    window->setSurfaceType(QSurface::OpenGLSurface);
    window->resize(size);
    window->show();
    return QTest::qWaitForWindowExposed(window);
}

class RedWindow : public QRasterWindow
{
protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter(this).fillRect(QRect(QPoint(), size()), Qt::red);
    }
};

} // namespace

class tst_headless_windows : public QObject
{
    Q_OBJECT

private slots:
    void windowIsExposedAndActivated();
    void hidingActivatesTheWindowBelow();
    void tooltipsAreNotActivated();
    void fullScreenFillsTheScreenAndReturns();
    void windowSurfaceKeepsWhatWasDrawn();
    void windowSurfaceFollowsTheSize();
    void windowTakesTheSamplesOfItsContext();
    void swapBuffersKeepsSixtyFramesASecond();
    void swapIntervalZeroLiftsTheLimit();
    void rasterWindowCanBeGrabbed();
    void translucentRasterWindowStartsTransparent();
};

void tst_headless_windows::windowIsExposedAndActivated()
{
    QWindow window;
    window.resize(200, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QCOMPARE(QGuiApplication::focusWindow(), &window);
    QCOMPARE(window.size(), QSize(200, 100));
    QVERIFY(window.winId() != 0);
    window.hide();
    QVERIFY(!window.isExposed());
    QTRY_COMPARE(QGuiApplication::focusWindow(), static_cast<QWindow *>(nullptr));
}

void tst_headless_windows::hidingActivatesTheWindowBelow()
{
    QWindow below;
    below.setGeometry(0, 0, 100, 100);
    below.show();
    QVERIFY(QTest::qWaitForWindowActive(&below));
    QWindow above;
    above.setGeometry(50, 0, 100, 100);
    above.show();
    QVERIFY(QTest::qWaitForWindowActive(&above));
    QVERIFY(!below.isActive());
    QCOMPARE(QGuiApplication::topLevelAt(QPoint(60, 10)), &above);
    QCOMPARE(QGuiApplication::topLevelAt(QPoint(10, 10)), &below);
    below.raise();
    QCOMPARE(QGuiApplication::topLevelAt(QPoint(60, 10)), &below);
    above.hide();
    QVERIFY(QTest::qWaitForWindowActive(&below));
}

void tst_headless_windows::tooltipsAreNotActivated()
{
    QWindow window;
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QWindow tip;
    tip.setFlags(Qt::ToolTip);
    tip.show();
    QVERIFY(QTest::qWaitForWindowExposed(&tip));
    QCoreApplication::processEvents();
    QCOMPARE(QGuiApplication::focusWindow(), &window);
}

void tst_headless_windows::fullScreenFillsTheScreenAndReturns()
{
    QWindow window;
    window.setGeometry(10, 20, 200, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.showFullScreen();
    QTRY_COMPARE(window.geometry(), window.screen()->geometry());
    window.showNormal();
    QTRY_COMPARE(window.geometry(), QRect(10, 20, 200, 100));
    window.showMinimized();
    QTRY_VERIFY(!window.isExposed());
    window.showNormal();
    QTRY_VERIFY(window.isExposed());
}

void tst_headless_windows::windowSurfaceKeepsWhatWasDrawn()
{
    QWindow window;
    QVERIFY(showForOpenGL(&window, QSize(32, 16)));
    QOpenGLContext context;
    QVERIFY(context.create());
    QVERIFY(context.makeCurrent(&window));
    QOpenGLFunctions *gl = context.functions();
    gl->glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
    gl->glClear(GL_COLOR_BUFFER_BIT);
    context.swapBuffers(&window);
    uchar pixel[4] = {};
    gl->glReadPixels(31, 15, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    QCOMPARE(QColor(pixel[0], pixel[1], pixel[2], pixel[3]), QColor(0, 255, 0));

    // Back from a surface without a default framebuffer, drawing must reach the window again.
    QOffscreenSurface offscreen;
    offscreen.create();
    QVERIFY(context.makeCurrent(&offscreen));
    QVERIFY(context.makeCurrent(&window));
    gl->glClearColor(0.0f, 0.0f, 1.0f, 1.0f);
    gl->glClear(GL_COLOR_BUFFER_BIT);
    gl->glReadPixels(31, 15, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    QCOMPARE(QColor(pixel[0], pixel[1], pixel[2], pixel[3]), QColor(0, 0, 255));
    context.doneCurrent();
}

void tst_headless_windows::windowSurfaceFollowsTheSize()
{
    QWindow window;
    QVERIFY(showForOpenGL(&window, QSize(16, 16)));
    QOpenGLContext context;
    QVERIFY(context.create());
    QOpenGLFunctions *gl = nullptr;
    const QSize sizes[] = {{16, 16}, {64, 48}, {8, 200}};
    for (const QSize &size : sizes) {
        window.resize(size);
        QVERIFY(context.makeCurrent(&window));
        gl = context.functions();
        gl->glViewport(0, 0, size.width(), size.height());
        gl->glClearColor(1.0f, 0.0f, 1.0f, 1.0f);
        gl->glClear(GL_COLOR_BUFFER_BIT);
        uchar pixel[4] = {};
        gl->glReadPixels(size.width() - 1, size.height() - 1, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE,
                         pixel);
        QCOMPARE(QColor(pixel[0], pixel[1], pixel[2], pixel[3]), QColor(255, 0, 255));
        context.swapBuffers(&window);
    }
    context.doneCurrent();
}

void tst_headless_windows::windowTakesTheSamplesOfItsContext()
{
    QSurfaceFormat smooth;
    smooth.setSamples(4);
    QWindow window;
    window.setFormat(smooth);
    QVERIFY(showForOpenGL(&window, QSize(32, 32)));
    const QSurfaceFormat formats[] = {smooth, QSurfaceFormat(), smooth};
    for (const QSurfaceFormat &format : formats) {
        QOpenGLContext context;
        context.setFormat(format);
        QVERIFY(context.create());
        QVERIFY(context.makeCurrent(&window));
        GLint samples = -1;
        GLint largest = 0;
        context.functions()->glGetIntegerv(GL_SAMPLES, &samples);
        context.functions()->glGetIntegerv(GL_MAX_SAMPLES, &largest);
        context.doneCurrent();
        QCOMPARE(samples, format.samples() == 4 && largest >= 4 ? 4 : 0);
    }
}

void tst_headless_windows::swapBuffersKeepsSixtyFramesASecond()
{
    QWindow window;
    QVERIFY(showForOpenGL(&window, QSize(16, 16)));
    QOpenGLContext context;
    QVERIFY(context.create());
    QVERIFY(context.makeCurrent(&window));
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 30; ++i)
        context.swapBuffers(&window);
    const qint64 elapsed = timer.elapsed();
    context.doneCurrent();
    QVERIFY2(elapsed >= 400, qPrintable(QString::number(elapsed)));
}

void tst_headless_windows::swapIntervalZeroLiftsTheLimit()
{
    QSurfaceFormat format;
    format.setSwapInterval(0);
    QWindow window;
    window.setFormat(format);
    QVERIFY(showForOpenGL(&window, QSize(16, 16)));
    QCOMPARE(window.format().swapInterval(), 0);
    QOpenGLContext context;
    context.setFormat(format);
    QVERIFY(context.create());
    QVERIFY(context.makeCurrent(&window));
    QElapsedTimer timer;
    timer.start();
    const int frames = 240;
    for (int i = 0; i < frames; ++i)
        context.swapBuffers(&window);
    const qint64 elapsed = timer.elapsed();
    context.doneCurrent();
    // Half the time that the limit would take: room for a busy machine.
    QVERIFY2(elapsed < frames * 1000 / 60 / 2, qPrintable(QString::number(elapsed)));
}

void tst_headless_windows::rasterWindowCanBeGrabbed()
{
    RedWindow window;
    window.setGeometry(300, 200, 40, 30);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCoreApplication::processEvents();
    QScreen *screen = window.screen();
    const QImage own = screen->grabWindow(window.winId()).toImage();
    QCOMPARE(own.size(), QSize(40, 30));
    QCOMPARE(own.pixelColor(39, 29), QColor(Qt::red));
    const QImage all = screen->grabWindow(0).toImage();
    QCOMPARE(all.size(), screen->size());
    QCOMPARE(all.pixelColor(339, 229), QColor(Qt::red));
    QCOMPARE(all.pixelColor(340, 230), QColor(Qt::black));
    QCOMPARE(all.pixelColor(299, 199), QColor(Qt::black));
    window.resize(80, 60);
    QTRY_COMPARE(screen->grabWindow(window.winId()).toImage().pixelColor(79, 59), QColor(Qt::red));
}

void tst_headless_windows::translucentRasterWindowStartsTransparent()
{
    QSurfaceFormat format;
    format.setAlphaBufferSize(8);
    QWindow window;
    window.setFormat(format);
    window.resize(10, 10);
    window.create();
    QBackingStore store(&window);
    store.resize(window.size());
    for (int pass = 0; pass < 2; ++pass) {
        store.beginPaint(QRect(0, 0, 10, 10));
        QPainter painter(store.paintDevice());
        painter.fillRect(0, 0, 5, 10, QColor(0, 0, 255, 128));
        painter.end();
        store.endPaint();
    }
    const auto *image = static_cast<QImage *>(store.paintDevice());
    QCOMPARE(image->pixelColor(9, 0).alpha(), 0);
    QCOMPARE(image->pixelColor(0, 0).alpha(), 128);
}

int main(int argc, char **argv)
{
    return runHeadlessTest<tst_headless_windows>(argc, argv);
}

#include "tst_headless_windows.moc"
