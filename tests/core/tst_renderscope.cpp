#include "core/RenderScope.h"
#include "tests/core/SecondScreen.h"
#include "tests/support/TestMain.h"

#include <QtQuick/QQuickRenderControl>
#include <QtQuick/QQuickWindow>
#include <QtTest/QSignalSpy>

#include <limits>
#include <memory>

using ko::RenderScope;

namespace
{

// The ratio of the screen: the test runs once for each of several.
qreal screenRatio()
{
    return qEnvironmentVariable("QT_SCALE_FACTOR", QStringLiteral("1")).toDouble();
}

// Before there is an application: a screen's resolution decides upon its ratio.
void scaleByResolution()
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
}
Q_CONSTRUCTOR_FUNCTION(scaleByResolution)

// A render control whose scene is shown by another window, as within a widget.
class EmbeddingControl : public QQuickRenderControl
{
public:
    explicit EmbeddingControl(QWindow *shownBy) : m_shownBy(shownBy) {}
    QWindow *renderWindow(QPoint *) override { return m_shownBy; }

private:
    QWindow *m_shownBy;
};

} // namespace

class RenderScopeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findReturnsTheNearestScopeAboveTheItem()
    {
        RenderScope outer;
        QQuickItem between(&outer);
        RenderScope inner(&between);
        QQuickItem deeper(&inner);
        QQuickItem deepest(&deeper);
        QCOMPARE(RenderScope::find(&between), &outer);
        QCOMPARE(RenderScope::find(&deeper), &inner);
        QCOMPARE(RenderScope::find(&deepest), &inner);
    }

    void scopeIsNotItsOwn()
    {
        RenderScope outer;
        RenderScope inner(&outer);
        QCOMPARE(RenderScope::find(&inner), &outer);
        QCOMPARE(RenderScope::find(&outer), nullptr);
    }

    void findReturnsNullWithoutAScopeAbove()
    {
        QQuickItem root;
        QQuickItem child(&root);
        RenderScope sibling(&root);
        QCOMPARE(RenderScope::find(&child), nullptr);
        QCOMPARE(RenderScope::find(nullptr), nullptr);
    }

    void findFollowsAnItemThatMoves()
    {
        RenderScope first;
        RenderScope second;
        QQuickItem item(&first);
        item.setParentItem(&second);
        QCOMPARE(RenderScope::find(&item), &second);
        item.setParentItem(nullptr);
        QCOMPARE(RenderScope::find(&item), nullptr);
    }

    void nestedScopesKeepTheirOwnRatios()
    {
        QQuickWindow window;
        RenderScope outer(window.contentItem());
        RenderScope inner(&outer);
        outer.setPixelRatio(3.0);
        QCOMPARE(outer.effectivePixelRatio(), 3.0);
        QCOMPARE(inner.effectivePixelRatio(), screenRatio());
    }

    void outsideAWindowTheRatioIsOne()
    {
        const RenderScope scope;
        QCOMPARE(scope.pixelRatio(), 0.0);
        QCOMPARE(scope.effectivePixelRatio(), 1.0);
    }

    void insideAWindowTheRatioIsItsScreens()
    {
        QQuickWindow window;
        const RenderScope scope(window.contentItem());
        QCOMPARE(scope.effectivePixelRatio(), screenRatio());
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(scope.effectivePixelRatio(), screenRatio());
        QCOMPARE(window.effectiveDevicePixelRatio(), screenRatio());
    }

    void enteringAndLeavingAWindowTellsWhenTheRatioChanges()
    {
        const int changes = screenRatio() == 1.0 ? 0 : 1;
        QQuickWindow window;
        RenderScope scope;
        QSignalSpy spy(&scope, &RenderScope::pixelRatioChanged);
        scope.setParentItem(window.contentItem());
        QCOMPARE(scope.effectivePixelRatio(), screenRatio());
        QCOMPARE(spy.count(), changes);
        scope.setParentItem(nullptr);
        QCOMPARE(scope.effectivePixelRatio(), 1.0);
        QCOMPARE(spy.count(), 2 * changes);
    }

    void enteringWithinASubtreeIsNoticed()
    {
        QQuickWindow window;
        QQuickItem subtree;
        const RenderScope scope(&subtree);
        subtree.setParentItem(window.contentItem());
        QCOMPARE(scope.effectivePixelRatio(), screenRatio());
        subtree.setParentItem(nullptr);
        QCOMPARE(scope.effectivePixelRatio(), 1.0);
    }

    void scopeThatOutlivesItsWindowIsOutsideOfOne()
    {
        RenderScope scope;
        {
            QQuickWindow window;
            scope.setParentItem(window.contentItem());
            QCOMPARE(scope.effectivePixelRatio(), screenRatio());
        }
        QCOMPARE(scope.effectivePixelRatio(), 1.0);
    }

    void scopeFollowsItsWindowToAnotherScreen_data()
    {
        QTest::addColumn<bool>("shown");
        QTest::newRow("hidden") << false;
        QTest::newRow("shown") << true;
    }

    void scopeFollowsItsWindowToAnotherScreen()
    {
        QFETCH(const bool, shown);
        const SecondScreen second(2);
        QQuickWindow window;
        QQuickItem item(window.contentItem());
        const RenderScope scope(&item);
        if (shown) {
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
        }
        QSignalSpy spy(&scope, &RenderScope::pixelRatioChanged);
        QScreen *first = window.screen();
        window.setScreen(second.screen());
        QCOMPARE(scope.effectivePixelRatio(), 2.0 * screenRatio());
        QCOMPARE(spy.count(), 1);
        window.setScreen(first);
        QCOMPARE(scope.effectivePixelRatio(), screenRatio());
        QCOMPARE(spy.count(), 2);
    }

    void screenOfTheSameRatioIsNoChange()
    {
        const SecondScreen second(1);
        QQuickWindow window;
        const RenderScope scope(window.contentItem());
        QSignalSpy spy(&scope, &RenderScope::pixelRatioChanged);
        window.setScreen(second.screen());
        QCOMPARE(spy.count(), 0);
    }

    void scopeFollowsTheSettingOfItsScreen()
    {
        SecondScreen second(2);
        QQuickWindow window;
        window.setScreen(second.screen());
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const RenderScope scope(window.contentItem());
        QSignalSpy spy(&scope, &RenderScope::pixelRatioChanged);
        second.setRatio(3);
        QCOMPARE(window.effectiveDevicePixelRatio(), 3.0 * screenRatio());
        QCOMPARE(scope.effectivePixelRatio(), 3.0 * screenRatio());
        QCOMPARE(spy.count(), 1);
    }

    void leftWindowIsNoLongerFollowed()
    {
        const SecondScreen second(2);
        QQuickWindow window;
        RenderScope scope(window.contentItem());
        scope.setParentItem(nullptr);
        QSignalSpy spy(&scope, &RenderScope::pixelRatioChanged);
        window.setScreen(second.screen());
        QCOMPARE(scope.effectivePixelRatio(), 1.0);
        QCOMPARE(spy.count(), 0);
    }

    void ratioAskedForHoldsOnEveryScreen()
    {
        const SecondScreen second(2);
        QQuickWindow window;
        RenderScope scope(window.contentItem());
        scope.setPixelRatio(0.5);
        QSignalSpy spy(&scope, &RenderScope::pixelRatioChanged);
        window.setScreen(second.screen());
        QCOMPARE(scope.effectivePixelRatio(), 0.5);
        QCOMPARE(spy.count(), 0);
        scope.setPixelRatio(0.0);
        QCOMPARE(scope.effectivePixelRatio(), 2.0 * screenRatio());
        QCOMPARE(spy.count(), 1);
    }

    void embeddedSceneHasTheRatioOfTheWindowThatShowsIt()
    {
        const SecondScreen second(2);
        QWindow shownBy(second.screen());
        EmbeddingControl control(&shownBy);
        QQuickWindow window(&control);
        const RenderScope scope(window.contentItem());
        QCOMPARE(scope.effectivePixelRatio(), 2.0 * screenRatio());
    }

    void askingForTheRatioInForceIsSilent()
    {
        QQuickWindow window;
        RenderScope scope(window.contentItem());
        QSignalSpy inForce(&scope, &RenderScope::pixelRatioChanged);
        QSignalSpy askedFor(&scope, &RenderScope::requestedPixelRatioChanged);
        scope.setPixelRatio(screenRatio());
        QCOMPARE(scope.pixelRatio(), screenRatio());
        QCOMPARE(inForce.count(), 0);
        QCOMPARE(askedFor.count(), 1);
        scope.setPixelRatio(2.0 * screenRatio());
        QCOMPARE(scope.effectivePixelRatio(), 2.0 * screenRatio());
        QCOMPARE(inForce.count(), 1);
        QCOMPARE(askedFor.count(), 2);
        scope.setPixelRatio(2.0 * screenRatio());
        QCOMPARE(inForce.count(), 1);
        QCOMPARE(askedFor.count(), 2);
    }

    void eachSignalFindsBothRatiosUpToDate()
    {
        RenderScope scope;
        int calls = 0;
        const auto check = [&scope, &calls] {
            ++calls;
            QCOMPARE(scope.pixelRatio(), 2.0);
            QCOMPARE(scope.effectivePixelRatio(), 2.0);
        };
        connect(&scope, &RenderScope::pixelRatioChanged, this, check);
        connect(&scope, &RenderScope::requestedPixelRatioChanged, this, check);
        scope.setPixelRatio(2.0);
        QCOMPARE(calls, 2);
    }

    void whatIsNoRatioCountsAsNone_data()
    {
        QTest::addColumn<qreal>("ratio");
        QTest::newRow("NaN") << std::numeric_limits<qreal>::quiet_NaN();
        QTest::newRow("infinite") << std::numeric_limits<qreal>::infinity();
        QTest::newRow("negative") << -2.0;
        QTest::newRow("negative infinite") << -std::numeric_limits<qreal>::infinity();
        QTest::newRow("negative zero") << -0.0;
    }

    void whatIsNoRatioCountsAsNone()
    {
        QFETCH(const qreal, ratio);
        QQuickWindow window;
        RenderScope scope(window.contentItem());
        QSignalSpy inForce(&scope, &RenderScope::pixelRatioChanged);
        QSignalSpy askedFor(&scope, &RenderScope::requestedPixelRatioChanged);
        scope.setPixelRatio(ratio);
        QCOMPARE(inForce.count() + askedFor.count(), 0);
        scope.setPixelRatio(4.0);
        scope.setPixelRatio(ratio);
        QCOMPARE(scope.pixelRatio(), 0.0);
        QCOMPARE(scope.effectivePixelRatio(), screenRatio());
        QCOMPARE(inForce.count(), 2);
        QCOMPARE(askedFor.count(), 2);
    }

    void adjustedSizeCountsDevicePixels_data()
    {
        const int largest = std::numeric_limits<int>::max();
        QTest::addColumn<qreal>("ratio");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QSize>("adjusted");
        QTest::newRow("one") << 1.0 << QSize(640, 480) << QSize(640, 480);
        QTest::newRow("two") << 2.0 << QSize(640, 480) << QSize(1280, 960);
        QTest::newRow("halves round up") << 1.5 << QSize(3, 5) << QSize(5, 8);
        QTest::newRow("quarters round down") << 1.25 << QSize(1, 5) << QSize(1, 6);
        QTest::newRow("three quarters round up") << 1.75 << QSize(1, 5) << QSize(2, 9);
        QTest::newRow("a coarse half") << 0.25 << QSize(10, 9) << QSize(3, 2);
        QTest::newRow("never nothing") << 0.01 << QSize(1, 200) << QSize(1, 2);
        QTest::newRow("tiniest ratio") << 5e-324 << QSize(4000, 1) << QSize(1, 1);
        QTest::newRow("beyond what a size holds")
            << 1e300 << QSize(1, 2) << QSize(largest, largest);
        QTest::newRow("below what a size holds") << 1e300 << QSize(-1, -2) << QSize(0, 0);
        QTest::newRow("empty") << 2.0 << QSize(0, 0) << QSize(0, 0);
        QTest::newRow("no width") << 2.0 << QSize(0, 7) << QSize(0, 14);
        QTest::newRow("no height") << 1.5 << QSize(3, 0) << QSize(5, 0);
        QTest::newRow("invalid") << 2.0 << QSize(-1, -1) << QSize(0, 0);
        QTest::newRow("negative width") << 2.0 << QSize(-3, 4) << QSize(0, 8);
    }

    void adjustedSizeCountsDevicePixels()
    {
        QFETCH(const qreal, ratio);
        QFETCH(const QSize, size);
        QFETCH(const QSize, adjusted);
        RenderScope scope;
        scope.setPixelRatio(ratio);
        QCOMPARE(scope.adjustedSize(size), adjusted);
        QCOMPARE(adjusted.isEmpty(), size.isEmpty());
    }

    void adjustedSizeFollowsTheWindow()
    {
        QQuickWindow window;
        const RenderScope scope(window.contentItem());
        QCOMPARE(scope.adjustedSize(QSize(10, 5)),
                 QSize(qRound(10 * screenRatio()), qRound(5 * screenRatio())));
    }
};

KORVEL_TEST_MAIN(RenderScopeTest)

#include "tst_renderscope.moc"
