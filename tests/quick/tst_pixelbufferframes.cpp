#include "core/RenderScope.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/quick/PixelBuffer.h"
#include "tests/quick/FrameScene.h"
#include "tests/support/SignalOrder.h"
#include "tests/support/TestEffect.h"
#include "tests/support/TestMain.h"

#include <QtCore/QElapsedTimer>
#include <QtTest/QSignalSpy>

using namespace ko;
using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr int debounce = 100; // in milliseconds

// Counts who listens to it.
class ListenedEffect : public TestEffect
{
public:
    int listeners = 0;

protected:
    void connectNotify(const QMetaMethod &signal) override
    {
        listeners += signal == QMetaMethod::fromSignal(&ImageEffect::updateRequired) ? 1 : 0;
    }
};

// Something done to the item, how many frames it asks for, also while the item is frozen, and the
// signals of the item that tell of it.
struct Operation {
    const char *name;
    std::function<void()> act;
    int frames;
    int frozenFrames;
    const char *signalNames;
};

int countOf(PixelBuffer *buffer)
{
    QQmlListProperty<ImageEffect> list = buffer->imageEffects();
    return list.count(&list);
}

} // namespace

class PixelBufferFramesTest : public QObject
{
    Q_OBJECT

private slots:
    // Which changes ask for a frame

    void everyChangeAsksForAFrameOrNot_data()
    {
        QTest::addColumn<bool>("frozen");
        QTest::newRow("running") << false;
        QTest::newRow("frozen") << true;
    }
    void everyChangeAsksForAFrameOrNot()
    {
        QFETCH(bool, frozen);
        KORVEL_FRAME_SCENE(scene);
        PixelBuffer *buffer = scene.buffer;
        ColorFillImageEffect first;
        ColorFillImageEffect second;
        ColorFillImageEffect disabled;
        disabled.setEnabled(false);
        ColorFillImageEffect unlisted;
        auto doomed = std::make_unique<ColorFillImageEffect>();

        const QVector<Operation> operations = {
            {"source", [&] { buffer->setSourceItem(scene.lime); }, 1, 0, "sourceItem"},
            {"same source", [&] { buffer->setSourceItem(scene.lime); }, 0, 0, ""},
            {"no source", [&] { buffer->setSourceItem(nullptr); }, 1, 0, "sourceItem"},
            {"rectangle",
             [&] {
                 buffer->setSourceRect({0, 0, 0.5, 1});
             },
             1, 0, "sourceRect"},
            {"same rectangle",
             [&] {
                 buffer->setSourceRect({0, 0, 0.5, 1});
             },
             0, 0, ""},
            {"reference",
             [&] {
                 buffer->setReferenceSize({40, 40});
             },
             1, 0, "referenceSize"},
            {"same reference",
             [&] {
                 buffer->setReferenceSize({40, 40});
             },
             0, 0, ""},
            {"mask", [&] { buffer->setMask(scene.lime); }, 1, 0, "mask"},
            {"same mask", [&] { buffer->setMask(scene.lime); }, 0, 0, ""},
            {"no mask", [&] { buffer->setMask(nullptr); }, 1, 0, "mask"},
            {"alpha", [&] { buffer->setImageEffectAlpha(0.5F); }, 1, 1, "imageEffectAlpha"},
            {"same alpha", [&] { buffer->setImageEffectAlpha(0.500001F); }, 0, 0, ""},
            {"off", [&] { buffer->setImageEffectsEnabled(false); }, 1, 1, "imageEffectsEnabled"},
            {"still off", [&] { buffer->setImageEffectsEnabled(false); }, 0, 0, ""},
            {"no effect", [&] { buffer->insertEffect(nullptr); }, 0, 0, ""},
            {"first effect", [&] { buffer->insertEffect(&first); }, 1, 0, "imageEffects"},
            {"disabled effect", [&] { buffer->insertEffect(&disabled, 0); }, 0, 0, "imageEffects"},
            {"appended effect",
             [&] {
                 QQmlListProperty<ImageEffect> list = buffer->imageEffects();
                 list.append(&list, &second);
             },
             1, 0, "imageEffects"},
            {"effect's colour", [&] { first.setColor(Qt::cyan); }, 1, 1, ""},
            {"effect's name", [&] { first.setName("first"); }, 0, 0, ""},
            {"disabled effect's colour", [&] { disabled.setColor(Qt::cyan); }, 1, 1, ""},
            {"unlisted effect's colour", [&] { unlisted.setColor(Qt::cyan); }, 0, 0, ""},
            {"mask view", [&] { buffer->setMaskViewLayer(&second); }, 1, 1, ""},
            {"same mask view", [&] { buffer->setMaskViewLayer(&second); }, 0, 0, ""},
            {"refused mask view", [&] { buffer->setMaskViewLayer(&unlisted); }, 1, 1, ""},
            {"refused once more", [&] { buffer->setMaskViewLayer(&unlisted); }, 1, 1, ""},
            {"no mask view still", [&] { buffer->setMaskViewLayer(nullptr); }, 0, 0, ""},
            {"remove", [&] { buffer->removeEffect(&first); }, 1, 0, "imageEffects"},
            {"remove again", [&] { buffer->removeEffect(&first); }, 0, 0, ""},
            {"removed effect's colour", [&] { first.setColor(Qt::blue); }, 0, 0, ""},
            {"clear", [&] { buffer->clearEffects(); }, 1, 0, "imageEffects"},
            {"clear again", [&] { buffer->clearEffects(); }, 0, 0, ""},
            {"cleared effect's colour", [&] { second.setColor(Qt::blue); }, 0, 0, ""},
            {"doomed effect", [&] { buffer->insertEffect(doomed.get()); }, 1, 0, "imageEffects"},
            {"destroyed effect", [&] { doomed.reset(); }, 1, 0, ""},
        };

        if (frozen) {
            QCOMPARE(scene.repaints([&] { buffer->freeze(); }, 0), 0);
        }
        SignalOrder order;
        order.listen(buffer, &PixelBuffer::sourceItemChanged, "sourceItem");
        order.listen(buffer, &PixelBuffer::sourceRectChanged, "sourceRect");
        order.listen(buffer, &PixelBuffer::referenceSizeChanged, "referenceSize");
        order.listen(buffer, &PixelBuffer::frozenChanged, "frozen");
        order.listen(buffer, &PixelBuffer::imageEffectsChanged, "imageEffects");
        order.listen(buffer, &PixelBuffer::imageEffectsEnabledChanged, "imageEffectsEnabled");
        order.listen(buffer, &PixelBuffer::imageEffectAlphaChanged, "imageEffectAlpha");
        order.listen(buffer, &PixelBuffer::maskViewLayerChanged, "maskViewLayer");
        order.listen(buffer, &PixelBuffer::maskChanged, "mask");
        order.listen(buffer, &PixelBuffer::renderScaleChanged, "renderScale");
        for (const Operation &operation : operations) {
            scene.log.taken();
            const int expected = frozen ? operation.frozenFrames : operation.frames;
            const int frames = scene.repaints(operation.act, expected);
            QVERIFY2(frames == expected,
                     qPrintable(QStringLiteral("%1: %2 frames").arg(operation.name).arg(frames)));
            const int rendered = scene.log.takenFrames();
            QVERIFY2(
                rendered == (frozen ? 0 : expected),
                qPrintable(QStringLiteral("%1 rendered %2").arg(operation.name).arg(rendered)));
            const QString signalNames = order.taken();
            QVERIFY2(signalNames == QLatin1String(operation.signalNames),
                     qPrintable(QStringLiteral("%1: %2").arg(operation.name, signalNames)));
        }
    }

    void unfreezingAsksForAFrameAndFreezingDoesNot()
    {
        KORVEL_FRAME_SCENE(scene);
        QSignalSpy spy(scene.buffer, &PixelBuffer::frozenChanged);
        QCOMPARE(scene.repaints([&] { scene.buffer->freeze(); }, 0), 0);
        QCOMPARE(scene.repaints([&] { scene.buffer->freeze(); }, 0), 0);
        QCOMPARE(spy.size(), 1);
        QCOMPARE(scene.repaints([&] { scene.buffer->unfreeze(); }, 1), 1);
        QCOMPARE(scene.repaints([&] { scene.buffer->unfreeze(); }, 0), 0);
        QCOMPARE(spy.size(), 2);
        QCOMPARE(scene.repaints([&] { scene.buffer->setFrozen(true); }, 0), 0);
        QCOMPARE(scene.repaints([&] { scene.buffer->setFrozen(false); }, 1), 1);
        QCOMPARE(scene.log.takenShort(), QStringList({"/1", "/1"}));
    }

    // While its item has no contents update() does nothing: the slot lets through only a request
    // that came before the signal.
    void removingSignalsBeforeItAsksAndClearingAfter()
    {
        KORVEL_FRAME_SCENE(scene);
        ColorFillImageEffect first;
        ColorFillImageEffect second;
        scene.buffer->insertEffect(&first);
        scene.buffer->insertEffect(&second);
        scene.waitForQuiet();
        connect(scene.buffer, &PixelBuffer::imageEffectsChanged, this,
                [&] { scene.buffer->setFlag(QQuickItem::ItemHasContents, false); });
        const auto framesOf = [&scene](const std::function<void()> &act, int expected) {
            return scene.repaints(
                [&] {
                    act();
                    scene.buffer->setFlag(QQuickItem::ItemHasContents);
                },
                expected);
        };
        QCOMPARE(framesOf([&] { scene.buffer->removeEffect(&first); }, 0), 0);
        QCOMPARE(framesOf([&] { scene.buffer->clearEffects(); }, 1), 1);
        QCOMPARE(framesOf([&] { scene.buffer->insertEffect(&first); }, 1), 1);
        QCOMPARE(countOf(scene.buffer), 1);
    }

    void anUnchangedSceneIsNotDrawnAgain()
    {
        KORVEL_FRAME_SCENE(scene);
        ColorFillImageEffect effect;
        scene.buffer->insertEffect(&effect);
        scene.buffer->setMask(scene.lime);
        scene.buffer->setMaskViewLayer(&effect);
        // The last frame of the set-up may come late on a busy machine; a scene that draws itself
        // again and again never comes to rest.
        constexpr int rounds = 10;
        int before = -1;
        for (int i = 0; i < rounds && before != scene.watch().frames(); ++i) {
            scene.waitForQuiet();
            scene.log.taken();
            before = scene.watch().frames();
            QTest::qWait(500);
        }
        QCOMPARE(scene.watch().frames(), before);
        QCOMPARE(scene.log.taken(), QStringList());
        // A frame that somebody else asks for costs the item nothing either.
        QVERIFY(scene.quick().settle());
        QVERIFY(scene.watch().frames() > before);
        QCOMPARE(scene.log.taken(), QStringList());
    }

    // The debounced repaint

    void aBurstOfScheduledUpdatesGivesOneFrame_data()
    {
        QTest::addColumn<bool>("throughScope");
        QTest::newRow("slot") << false;
        QTest::newRow("render scope") << true;
    }
    void aBurstOfScheduledUpdatesGivesOneFrame()
    {
        QFETCH(bool, throughScope);
        KORVEL_FRAME_SCENE(scene);
        // A machine that is too busy to make two calls within the interval proves nothing.
        for (int attempt = 0; attempt < 5; ++attempt) {
            const int before = scene.repaintCount();
            QElapsedTimer sinceLast;
            sinceLast.start();
            qint64 longestPause = 0;
            for (int call = 0; call < 20; ++call) {
                longestPause = qMax(longestPause, sinceLast.restart());
                if (throughScope) {
                    scene.scope->setPixelRatio(1.0 + 0.01 * (attempt * 20 + call + 1));
                } else {
                    QVERIFY(QMetaObject::invokeMethod(scene.buffer, "scheduleUpdate"));
                }
                if (call < 19) {
                    QTest::qWait(50);
                }
            }
            if (longestPause > debounce * 8 / 10) {
                scene.waitForQuiet();
                continue;
            }
            QCOMPARE(scene.repaintCount(), before);
            QVERIFY(QTest::qWaitFor([&] { return scene.repaintCount() > before; }));
            const qint64 delay = sinceLast.elapsed();
            // The timer is a coarse one, 5 per cent early or late.
            QVERIFY2(delay >= debounce * 95 / 100 - 1, qPrintable(QString::number(delay)));
            scene.waitForQuiet();
            QCOMPARE(scene.repaintCount(), before + 1);
            return;
        }
        QSKIP("the machine is too busy for calls 50 ms apart");
    }

    void anotherPixelRatioRepaintsAFrozenItemToo()
    {
        KORVEL_FRAME_SCENE(scene);
        scene.buffer->freeze();
        QCOMPARE(scene.repaints([&] { scene.scope->setPixelRatio(2); }, 1), 1);
        QCOMPARE(scene.log.taken(), QStringList());
    }

    // The list

    void anEffectThatIsListedTwiceIsListenedToTwice()
    {
        KORVEL_FRAME_SCENE(scene);
        ListenedEffect effect;
        scene.buffer->insertEffect(&effect);
        scene.buffer->insertEffect(&effect);
        QCOMPARE(effect.listeners, 2);
        QCOMPARE(countOf(scene.buffer), 2);
        QCOMPARE(scene.logged([&] { Q_EMIT effect.updateRequired(); }),
                 QStringList({"0", "1", "/3"}));
    }

    void removingAnEffectThatIsListedTwiceSilencesBothButTakesOneOff()
    {
        KORVEL_FRAME_SCENE(scene);
        ColorFillImageEffect effect;
        effect.setColor(Qt::green);
        scene.buffer->insertEffect(&effect);
        scene.buffer->insertEffect(&effect);
        QCOMPARE(scene.logged([&] { scene.buffer->removeEffect(&effect); }),
                 QStringList({"0", "/2"}));
        QCOMPARE(countOf(scene.buffer), 1);
        QCOMPARE(scene.repaints([&] { effect.setColor(Qt::blue); }, 0), 0);
        QCOMPARE(scene.color(), QColor(0, 255, 0));
        scene.buffer->update();
        QCOMPARE(scene.color(), QColor(Qt::blue));
    }

    void aDestroyedEffectLeavesTheListAndThePicture()
    {
        KORVEL_FRAME_SCENE(scene);
        ColorFillImageEffect kept;
        kept.setColor(Qt::green);
        auto doomed = std::make_unique<ColorFillImageEffect>();
        doomed->setColor(Qt::blue);
        for (ImageEffect *effect :
             {static_cast<ImageEffect *>(&kept), static_cast<ImageEffect *>(doomed.get()),
              static_cast<ImageEffect *>(doomed.get())}) {
            scene.buffer->insertEffect(effect);
        }
        scene.buffer->setMaskViewLayer(doomed.get());
        QCOMPARE(scene.color(), QColor(Qt::blue));
        QCOMPARE(scene.logged([&] { doomed.reset(); }), QStringList({"0", "/2"}));
        QCOMPARE(countOf(scene.buffer), 1);
        QCOMPARE(scene.buffer->maskViewLayer(), nullptr);
        QCOMPARE(scene.color(), QColor(0, 255, 0));
    }

    // Source and mask

    void aNewPictureOfTheSourceIsShown()
    {
        KORVEL_FRAME_SCENE(scene);
        QCOMPARE(scene.repaints([&] { scene.red->setProperty("source", "image://test/blue"); }, 1),
                 1);
        QCOMPARE(scene.color(), QColor(Qt::blue));
    }

    void aNewPictureOfTheMaskIsUsed()
    {
        KORVEL_FRAME_SCENE(scene);
        scene.buffer->setMask(scene.lime);
        QCOMPARE(scene.color(), QColor(Qt::transparent));
        scene.waitForQuiet();
        QCOMPARE(scene.repaints([&] { scene.lime->setProperty("source", "image://test/red"); }, 1),
                 1);
        QCOMPARE(scene.color(), QColor(Qt::red));
    }

    void itemsThatAreNoLongerSourceOrMaskDoNotRepaint()
    {
        KORVEL_FRAME_SCENE(scene);
        const auto drawSeveralTimes = [&] {
            for (int i = 0; i < 3; ++i) {
                scene.repaints([&] { scene.buffer->update(); }, 1);
            }
            scene.log.taken();
        };
        drawSeveralTimes();
        scene.buffer->setSourceItem(scene.lime);
        drawSeveralTimes();
        scene.red->setProperty("source", "image://test/blue");
        QVERIFY(scene.quick().settle());
        scene.waitForQuiet();
        QCOMPARE(scene.log.taken(), QStringList());

        scene.buffer->setMask(scene.red);
        drawSeveralTimes();
        scene.buffer->setMask(nullptr);
        drawSeveralTimes();
        scene.red->setProperty("source", "image://test/red");
        QVERIFY(scene.quick().settle());
        scene.waitForQuiet();
        QCOMPARE(scene.log.taken(), QStringList());
    }

    void aSourceThatReturnsIsListenedToAgain()
    {
        KORVEL_FRAME_SCENE(scene);
        for (QQuickItem *source : {scene.lime, scene.red}) {
            QCOMPARE(scene.repaints([&] { scene.buffer->setSourceItem(source); }, 1), 1);
        }
        QCOMPARE(scene.repaints([&] { scene.red->setProperty("source", "image://test/blue"); }, 1),
                 1);
        QCOMPARE(scene.color(), QColor(Qt::blue));
    }

    void aDestroyedSourceLeavesATransparentPicture()
    {
        KORVEL_FRAME_SCENE(scene);
        QSignalSpy spy(scene.buffer, &PixelBuffer::sourceItemChanged);
        delete scene.red;
        QCOMPARE(scene.buffer->sourceItem(), nullptr);
        QCOMPARE(spy.size(), 0);
        QCOMPARE(scene.logged([&] { scene.buffer->update(); }), QStringList({"/1"}));
        QCOMPARE(scene.color(), QColor(Qt::transparent));
    }

    void aDestroyedMaskCutsNothing()
    {
        KORVEL_FRAME_SCENE(scene);
        scene.lime->setProperty("cache", false);
        scene.lime->setProperty("source", "image://test/blue");
        scene.buffer->setMask(scene.lime);
        QCOMPARE(scene.color(), QColor(Qt::transparent));
        QSignalSpy spy(scene.buffer, &PixelBuffer::maskChanged);
        delete scene.lime;
        QCOMPARE(scene.buffer->mask(), nullptr);
        QCOMPARE(spy.size(), 0);
        scene.repaints([&] { scene.buffer->update(); }, 1);
        scene.buffer->update();
        QCOMPARE(scene.color(), QColor(Qt::red));
    }
};

KORVEL_TEST_MAIN(PixelBufferFramesTest)

#include "tst_pixelbufferframes.moc"
