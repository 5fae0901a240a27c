#include "HeadlessFixture.h"

#include <HeadlessImport.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QThread>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickRenderControl>
#include <QtQuick/QQuickView>

#include <atomic>
#include <memory>

class tst_headless_quick : public QObject
{
    Q_OBJECT

private slots:
    void quickViewRendersOnTheExpectedThread();
    void quickViewCanBeGrabbed();
    void quickViewGrabFollowsTheSize();
    void quickViewSurvivesHidingAndShowing();
    void transparentQuickViewKeepsAlpha();
    void animationsDoNotRunFast();
    void renderControlDrawsIntoAFramebufferObject();

private:
    std::unique_ptr<QQuickView> quickView(const QByteArray &qml, const QColor &color = Qt::white);
};

std::unique_ptr<QQuickView> tst_headless_quick::quickView(const QByteArray &qml,
                                                          const QColor &color)
{
    auto view = std::make_unique<QQuickView>();
    view->setColor(color);
    view->setResizeMode(QQuickView::SizeRootObjectToView);
    auto *component = new QQmlComponent(view->engine(), view.get());
    component->setData("import QtQuick 2.15\n" + qml, QUrl());
    QObject *root = component->create();
    if (!root) {
        qWarning() << component->errors();
        return nullptr;
    }
    view->setContent(QUrl(), component, root);
    view->resize(120, 80);
    view->show();
    return QTest::qWaitForWindowExposed(view.get()) ? std::move(view) : nullptr;
}

void tst_headless_quick::quickViewRendersOnTheExpectedThread()
{
    std::atomic<QThread *> renderThread{nullptr};
    const auto view = quickView("Rectangle { color: 'red' }");
    QVERIFY(view);
    connect(
        view.get(), &QQuickWindow::beforeRendering, this,
        [&renderThread] { renderThread = QThread::currentThread(); }, Qt::DirectConnection);
    view->update();
    QTRY_VERIFY(renderThread != nullptr);
    // Threads are what this platform offers, so they are what Qt Quick takes by itself.
    const bool basic = qgetenv("QSG_RENDER_LOOP") == "basic";
    QCOMPARE(renderThread == QThread::currentThread(), basic);
}

void tst_headless_quick::quickViewCanBeGrabbed()
{
    const auto view = quickView("Rectangle { color: 'red' }");
    QVERIFY(view);
    const QImage image = view->grabWindow();
    QCOMPARE(image.size(), QSize(120, 80));
    QCOMPARE(image.pixelColor(0, 0), QColor(Qt::red));
    QCOMPARE(image.pixelColor(119, 79), QColor(Qt::red));
}

void tst_headless_quick::quickViewGrabFollowsTheSize()
{
    const auto view = quickView("Rectangle { color: 'lime' }");
    QVERIFY(view);
    QCOMPARE(view->grabWindow().size(), QSize(120, 80));
    const QSize sizes[] = {{300, 200}, {40, 60}};
    for (const QSize &size : sizes) {
        view->resize(size);
        QTRY_COMPARE(view->rootObject()->size(), QSizeF(size));
        const QImage image = view->grabWindow();
        QCOMPARE(image.size(), size);
        QCOMPARE(image.pixelColor(size.width() - 1, size.height() - 1), QColor(0, 255, 0));
        QCOMPARE(image.pixelColor(0, 0), QColor(0, 255, 0));
    }
}

void tst_headless_quick::quickViewSurvivesHidingAndShowing()
{
    const auto view = quickView("Rectangle { color: 'blue' }");
    QVERIFY(view);
    for (int i = 0; i < 3; ++i) {
        view->hide();
        QVERIFY(!view->isExposed());
        view->show();
        QVERIFY(QTest::qWaitForWindowExposed(view.get()));
        QCOMPARE(view->grabWindow().pixelColor(60, 40), QColor(Qt::blue));
    }
}

void tst_headless_quick::transparentQuickViewKeepsAlpha()
{
    const auto view = quickView("Item { Rectangle { width: 60; height: 80; color: '#8000ff00' } }",
                                Qt::transparent);
    QVERIFY(view);
    const QImage image = view->grabWindow();
    QCOMPARE(image.pixelColor(119, 0).alpha(), 0);
    QCOMPARE(image.pixelColor(0, 0).alpha(), 128);
}

void tst_headless_quick::animationsDoNotRunFast()
{
    const auto view = quickView("Rectangle { id: root; color: Qt.rgba(progress, 0, 0, 1)\n"
                                "property real progress: 0; property alias running: run.running\n"
                                "NumberAnimation { id: run; target: root; property: 'progress'\n"
                                "from: 0; to: 1; duration: 600 } }");
    QVERIFY(view);
    QElapsedTimer timer;
    timer.start();
    view->rootObject()->setProperty("running", true);
    QTRY_VERIFY(!view->rootObject()->property("running").toBool());
    const qint64 elapsed = timer.elapsed();
    QCOMPARE(view->rootObject()->property("progress").toReal(), 1.0);
    // A few frames short: the animation counts frames, and the first ones may come early.
    QVERIFY2(elapsed >= 450, qPrintable(QString::number(elapsed)));
}

void tst_headless_quick::renderControlDrawsIntoAFramebufferObject()
{
    Current current;
    QVERIFY(current.current);
    QQuickRenderControl control;
    QQuickWindow window(&control);
    window.setColor(Qt::yellow);
    window.setGeometry(0, 0, 20, 10);
    control.initialize(&current.context);
    QOpenGLFramebufferObject target(20, 10, QOpenGLFramebufferObject::CombinedDepthStencil);
    window.setRenderTarget(&target);
    control.polishItems();
    control.sync();
    control.render();
    const QImage image = target.toImage();
    QCOMPARE(image.size(), QSize(20, 10));
    QCOMPARE(image.pixelColor(19, 9), QColor(Qt::yellow));
    control.invalidate();
}

int main(int argc, char **argv)
{
    return runHeadlessTest<tst_headless_quick>(argc, argv);
}

#include "tst_headless_quick.moc"
