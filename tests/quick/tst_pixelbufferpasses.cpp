#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/quick/PixelBuffer.h"
#include "tests/quick/FrameScene.h"
#include "tests/support/TestMain.h"

#include <QtCore/QLoggingCategory>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

class PixelBufferPassesTest : public QObject
{
    Q_OBJECT

private slots:
    // Frozen

    void aFrozenPictureStaysUntilItIsUnfrozen()
    {
        KORVEL_FRAME_SCENE(scene);
        PixelBuffer *buffer = scene.buffer;
        ColorFillImageEffect effect;
        effect.setColor(Qt::blue);
        buffer->freeze();
        const QVector<std::function<void()>> changes = {
            [&] { buffer->setSourceItem(scene.lime); },
            [&] { buffer->setImageEffectAlpha(0.0F); },
            [&] { buffer->insertEffect(&effect); },
            [&] { buffer->setImageEffectAlpha(1.0F); },
            [&] { effect.setBlendMode(ImageEffect::Add); },
            [&] { buffer->setImageEffectsEnabled(false); },
            [&] { buffer->setImageEffectsEnabled(true); },
            [&] {
                buffer->setSourceRect({0.5, 0.5, 0.5, 0.5});
            },
            [&] { buffer->setMask(scene.red); },
        };
        for (const auto &change : changes) {
            change();
            scene.repaints([&] { buffer->update(); }, 1);
            QCOMPARE(scene.color(), QColor(Qt::red));
        }
        QCOMPARE(scene.log.taken(), QStringList());
        QCOMPARE(scene.logged([&] { buffer->unfreeze(); }), QStringList({"0", "/2"}));
        QCOMPARE(scene.color(), QColor(Qt::cyan));
    }

    void freezingHoldsBackWhatWasAskedForInTheSameFrame()
    {
        KORVEL_FRAME_SCENE(scene);
        QCOMPARE(scene.repaints(
                     [&] {
                         scene.buffer->setSourceItem(scene.lime);
                         scene.buffer->freeze();
                     },
                     1),
                 1);
        QCOMPARE(scene.log.taken(), QStringList());
        QCOMPARE(scene.color(), QColor(Qt::red));
    }

    void aFrozenPictureIsStretchedWithTheItem()
    {
        KORVEL_FRAME_SCENE(scene);
        scene.buffer->freeze();
        scene.buffer->setSourceItem(scene.lime);
        scene.buffer->setSize({30, 10});
        QCOMPARE(scene.color(), QColor(Qt::red));
        QCOMPARE(scene.log.taken(), QStringList());
        scene.buffer->unfreeze();
        QCOMPARE(scene.color(), QColor(0, 255, 0));
    }

    // The log

    void passesAreLoggedByTheirPlaceInTheList()
    {
        KORVEL_FRAME_SCENE(scene);
        ColorFillImageEffect first;
        ColorFillImageEffect disabled;
        disabled.setEnabled(false);
        HSVImageEffect neutral;
        ColorFillImageEffect invisible;
        invisible.setAlpha(0.001F);
        ColorFillImageEffect last;
        const auto logged = [&] { return scene.loggedAgain(); };

        QCOMPARE(logged(), QStringList({"/1"}));
        for (ImageEffect *effect : QList<ImageEffect *>{&first, &disabled, &neutral, &invisible}) {
            scene.buffer->insertEffect(effect);
        }
        QCOMPARE(logged(), QStringList({"0", "/5"}));
        scene.buffer->insertEffect(&last);
        QCOMPARE(logged(), QStringList({"0", "4", "/6"}));
        disabled.setEnabled(true);
        QCOMPARE(logged(), QStringList({"0", "1", "4", "/6"}));
        scene.buffer->setMask(scene.lime);
        QCOMPARE(logged(), QStringList({"0", "1", "4", "/6"}));
        scene.buffer->setImageEffectAlpha(0.0F);
        QCOMPARE(logged(), QStringList({"0", "1", "4", "/6"}));
        scene.buffer->setSourceItem(nullptr);
        QCOMPARE(logged(), QStringList({"/6"}));
        scene.buffer->setImageEffectsEnabled(false);
        QCOMPARE(logged(), QStringList({"/1"}));
    }

    // Neutrality is judged by the blend mode of the update before.
    void aNeutralEffectIsSkippedFromTheSecondUpdateInModeNormal()
    {
        KORVEL_FRAME_SCENE(scene);
        HSVImageEffect effect;
        effect.setBlendMode(ImageEffect::Add);
        scene.buffer->insertEffect(&effect);
        scene.waitForQuiet();
        const auto logged = [&] { return scene.logged([&] { Q_EMIT effect.updateRequired(); }); };
        const QStringList drawn({"0", "/2"});
        QCOMPARE(logged(), drawn);
        QCOMPARE(scene.logged([&] { effect.setBlendMode(ImageEffect::Normal); }), drawn);
        QCOMPARE(logged(), QStringList({"/2"}));
    }

    void theTimeOfAFrameIsNoLessThanThatOfItsPasses()
    {
        KORVEL_FRAME_SCENE(scene);
        ColorFillImageEffect effect;
        scene.buffer->insertEffect(&effect);
        scene.waitForQuiet();
        scene.log.taken();
        scene.repaints([&] { scene.buffer->update(); }, 1);
        const QStringList messages = scene.log.taken();
        QCOMPARE(messages.size(), 2);
        const double pass = messages.at(0).section(' ', 4, 4).toDouble();
        const double frame = messages.at(1).section(' ', 5, 5).toDouble();
        QVERIFY(pass > 0.0);
        QVERIFY(frame >= pass);
        QVERIFY2(frame < 5000.0, "not milliseconds");
    }

    void nothingIsLoggedUnlessAskedFor()
    {
        KORVEL_FRAME_SCENE(scene);
        QLoggingCategory::setFilterRules(QString());
        ColorFillImageEffect effect;
        scene.repaints([&] { scene.buffer->insertEffect(&effect); }, 1);
        QCOMPARE(scene.log.taken(), QStringList());
    }

    // Where the picture ends

    void thePictureEndsInTheItemAfterAnyNumberOfPasses()
    {
        KORVEL_FRAME_SCENE(scene);
        ColorFillImageEffect add;
        add.setColor(QColor(0, 255, 0));
        add.setBlendMode(ImageEffect::Add);
        ColorFillImageEffect invert;
        invert.setColor(Qt::white);
        invert.setBlendMode(ImageEffect::Difference);
        QCOMPARE(scene.color(), QColor(Qt::red));
        scene.buffer->insertEffect(&add);
        QCOMPARE(scene.color(), QColor(Qt::yellow));
        scene.buffer->insertEffect(&invert);
        QCOMPARE(scene.color(), QColor(Qt::blue));
        scene.buffer->insertEffect(&add);
        QCOMPARE(scene.color(), QColor(Qt::cyan));
        invert.setEnabled(false);
        QCOMPARE(scene.color(), QColor(Qt::yellow));
        scene.buffer->setImageEffectsEnabled(false);
        QCOMPARE(scene.color(), QColor(Qt::red));
    }
};

KORVEL_TEST_MAIN(PixelBufferPassesTest)

#include "tst_pixelbufferpasses.moc"
