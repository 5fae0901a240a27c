#include "imagefx/render/PassCache.h"
#include "imagefx/render/PixelBufferState.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/TestEffect.h"
#include "tests/support/TestMain.h"

#include <QtCore/QPointer>
#include <QtCore/QThread>

#include <memory>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

class NoPass : public ImageEffectPass
{
public:
    void render(const PassTargets &, ImageEffectState *, const PixelBufferState *) override {}
};

QSharedPointer<ImageEffectPass> newPass()
{
    return QSharedPointer<NoPass>::create();
}

QString key(int number)
{
    return QStringLiteral("key %1").arg(number);
}

} // namespace

// Every test function has a context of its own, and so an empty cache.
class PassCacheTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_gl = std::make_unique<OffscreenGl>();
        QVERIFY(m_gl->isValid());
    }

    void cleanup() { m_gl.reset(); }

    void unknownKeyGivesNull() { QVERIFY(cache().find(key(1)).isNull()); }

    void insertedPassIsFound()
    {
        const auto pass = newPass();
        cache().insert(key(1), pass);
        QCOMPARE(cache().find(key(1)), pass);
        QVERIFY(cache().find(key(2)).isNull());
    }

    void newerPassReplacesAnOlderOne()
    {
        const auto older = newPass();
        const auto newer = newPass();
        cache().insert(key(1), older);
        cache().insert(key(1), newer);
        QCOMPARE(cache().find(key(1)), newer);
    }

    void fiftyPassesAreHeld()
    {
        QList<QPointer<ImageEffectPass>> passes;
        for (int i = 0; i < 50; ++i) {
            const auto pass = newPass();
            passes.append(pass.data());
            cache().insert(key(i), pass);
        }
        QVERIFY(!passes.contains(nullptr));
    }

    void theFiftyFirstPassDropsTheOneUsedLongestAgo()
    {
        QList<QPointer<ImageEffectPass>> passes;
        for (int i = 0; i < 51; ++i) {
            const auto pass = newPass();
            passes.append(pass.data());
            cache().insert(key(i), pass);
            if (i == 49) {
                // Used again, the oldest is now the newest.
                QVERIFY(cache().find(key(0)));
            }
        }
        QVERIFY(passes.at(0));
        QVERIFY(passes.at(1).isNull());
        QVERIFY(passes.at(2));
        QVERIFY(cache().find(key(1)).isNull());
        QVERIFY(cache().find(key(0)));
    }

    void passThatSomeoneHoldsIsFoundAgain()
    {
        const auto held = newPass();
        cache().insert(key(0), held);
        for (int i = 1; i < 60; ++i) {
            cache().insert(key(i), newPass());
        }
        QCOMPARE(cache().find(key(0)), held);
    }

    void fiftyOneVariantsOfAnEffect()
    {
        const PixelBufferState pbs;
        QPointer<ImageEffectPass> first;
        for (int i = 0; i < 51; ++i) {
            TestEffect effect;
            effect.variant = QString::number(i);
            const auto pass = effect.currentState()->effectPass(&pbs);
            if (i == 0) {
                first = pass.data();
            }
        }
        QVERIFY(first.isNull());
    }

    void passServesItsContextAlone()
    {
        const auto pass = newPass();
        cache().insert(key(1), pass);
        {
            OffscreenGl other(QSurfaceFormat(), m_gl->context());
            QVERIFY(other.isValid());
            QVERIFY(cache().find(key(1)).isNull());
            const auto otherPass = newPass();
            cache().insert(key(1), otherPass);
            QCOMPARE(cache().find(key(1)), otherPass);
        }
        QVERIFY(m_gl->makeCurrent());
        QCOMPARE(cache().find(key(1)), pass);
    }

    void passesVanishWithTheirContext()
    {
        QPointer<ImageEffectPass> pass;
        {
            OffscreenGl other;
            QVERIFY(other.isValid());
            const auto shared = newPass();
            pass = shared.data();
            cache().insert(key(1), shared);
        }
        QVERIFY(pass.isNull());
        QVERIFY(m_gl->makeCurrent());
    }

    // The window is closed and another opened: the same effect goes on there.
    void stateRendersInTheNextContext()
    {
        const PixelBufferState pbs;
        TestEffect effect;
        QPointer<ImageEffectPass> first;
        {
            OffscreenGl other;
            QVERIFY(other.isValid());
            first = effect.currentState()->effectPass(&pbs).data();
            QVERIFY(first->isLinked());
        }
        OffscreenGl next;
        QVERIFY(next.isValid());
        const auto second = effect.currentState()->effectPass(&pbs);
        QVERIFY(second->isLinked());
        QVERIFY(second.data() != first);
        QCOMPARE(effect.testState()->resolves, 2);
    }

    void twoThreadsNeverShareAProgram()
    {
        const PixelBufferState pbs;
        TestEffect effect;
        const auto here = effect.currentState()->effectPass(&pbs);
        ImageEffectPass *there = here.data();
        bool valid = false;
        QOffscreenSurface surface;
        surface.create();
        const std::unique_ptr<QThread> thread(QThread::create([&] {
            QOpenGLContext context;
            valid = context.create() && context.makeCurrent(&surface);
            if (valid) {
                TestEffect alike;
                there = alike.currentState()->effectPass(&pbs).data();
            }
        }));
        thread->start();
        QVERIFY(thread->wait());
        QVERIFY(valid);
        QVERIFY(there != here.data());
    }

private:
    static PassCache &cache() { return PassCache::instance(); }

    std::unique_ptr<OffscreenGl> m_gl;
};

KORVEL_TEST_MAIN(PassCacheTest)

#include "tst_passcache.moc"
