#pragma once

#include "tests/quick/FrameWatch.h"
#include "tests/quick/QuickScene.h"
#include "tests/quick/RenderLog.h"

#include <QtCore/QStringList>
#include <QtGui/QColor>

#include <atomic>
#include <functional>

namespace ko
{
class RenderScope;
}

namespace ko::imagefx
{
class PixelBuffer;
}

namespace ko::imagefx::test
{

// A scene that counts what a PixelBuffer asks for and what it draws: two plain pictures "red" and
// "lime" that are not shown themselves, "blue" as one they may change to, and, below a render
// scope, an item that shows the red one.
class FrameScene
{
public:
    FrameScene();
    ~FrameScene();

    // Empty when it is on the screen and nothing is left to draw; otherwise what went wrong.
    QByteArray show();

    // The colour that the whole item has; not valid when it has several.
    QColor color();
    // Lets events pass until no frame has come for a while.
    void waitForQuiet() const { m_watch.waitForQuiet(); }
    // How often the scene graph called upon the item while `act` was done, and after it until all
    // is quiet; waits for at least `expected` times. All must be quiet before. An item that asks
    // for nothing must not make the window draw either: -1 then.
    int repaints(const std::function<void()> &act, int expected);
    // The same since the scene was shown.
    int repaintCount() const { return m_repaints; }
    // What the item logged of the one repaint that `act` asks for.
    QStringList logged(const std::function<void()> &act);
    // The same of one that nothing but a call of update() asks for.
    QStringList loggedAgain();

    const FrameWatch &watch() const { return m_watch; }
    QuickScene &quick() { return m_scene; }

    RenderLog log;
    PixelBuffer *buffer = nullptr;
    RenderScope *scope = nullptr;
    QQuickItem *red = nullptr;
    QQuickItem *lime = nullptr;

private:
    Q_DISABLE_COPY(FrameScene)

    void listenToProvider();

    QObject m_context;
    std::atomic<int> m_repaints{0};
    bool m_listening = false;
    QuickScene m_scene;
    FrameWatch m_watch;
};

} // namespace ko::imagefx::test

// Shows a FrameScene of that name, or fails the running test function.
#define KORVEL_FRAME_SCENE(scene)                                                                  \
    FrameScene scene;                                                                              \
    {                                                                                              \
        const QByteArray failure_ = (scene).show();                                                \
        QVERIFY2(failure_.isEmpty(), failure_.constData());                                        \
    }
