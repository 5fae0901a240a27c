#include "imagefx/effects/GrayScaleImageEffect.h"
#include "imagefx/model/HueAlphaMask.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/SignalOrder.h"
#include "tests/support/TestEffect.h"
#include "tests/support/TestMain.h"

#include <QtCore/QMetaEnum>
#include <QtCore/QMetaProperty>
#include <QtGui/QOpenGLFunctions>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

void listenToAll(SignalOrder &order, ImageEffect *effect)
{
    order.listen(effect, &ImageEffect::nameChanged, "name");
    order.listen(effect, &ImageEffect::enabledChanged, "enabled");
    order.listen(effect, &ImageEffect::alphaChanged, "alpha");
    order.listen(effect, &ImageEffect::blendModeChanged, "blendMode");
    order.listen(effect, &ImageEffect::alphaMaskChanged, "alphaMask");
    order.listen(effect, &ImageEffect::updateRequired, "update");
}

} // namespace

class ImageEffectTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_gl.isValid()); }

    void newEffectIsOnOpaqueNormalAndUnmasked()
    {
        const TestEffect effect;
        QCOMPARE(effect.effectId(), QStringLiteral("test.Effect"));
        QCOMPARE(effect.name(), QString());
        QVERIFY(effect.enabled());
        QCOMPARE(effect.alpha(), 1.0F);
        QCOMPARE(effect.blendMode(), ImageEffect::Normal);
        QCOMPARE(effect.alphaMask(), nullptr);
        QVERIFY(!effect.ImageEffect::isNeutral());
    }

    void blendModesHaveTheirNumbers()
    {
        const QStringList names =
            QStringLiteral(
                "Normal Add Subtract Difference Multiply Divide Screen Overlay HardLight SoftLight "
                "LinearLight ColorDodge ColorBurn LinearBurn LightenOnly DarkenOnly")
                .split(QLatin1Char(' '));
        const auto modes = QMetaEnum::fromType<ImageEffect::BlendMode>();
        QCOMPARE(modes.keyCount(), names.size());
        for (int i = 0; i < names.size(); ++i) {
            QCOMPARE(QLatin1String(modes.valueToKey(i)), names.at(i));
        }
    }

    void settersSignalThenAskForAnUpdate()
    {
        TestEffect effect;
        SignalOrder order;
        listenToAll(order, &effect);
        effect.setEnabled(false);
        QCOMPARE(order.taken(), QStringLiteral("enabled update"));
        effect.setEnabled(false);
        QCOMPARE(order.taken(), QString());
        effect.setAlpha(0.5F);
        QCOMPARE(order.taken(), QStringLiteral("alpha update"));
        effect.setBlendMode(ImageEffect::Screen);
        QCOMPARE(order.taken(), QStringLiteral("blendMode update"));
        effect.setBlendMode(ImageEffect::Screen);
        QCOMPARE(order.taken(), QString());
    }

    void alphaIsComparedLooselyAndNotClamped()
    {
        TestEffect effect;
        SignalOrder order;
        listenToAll(order, &effect);
        effect.setAlpha(1.000001F);
        QCOMPARE(order.taken(), QString());
        QCOMPARE(effect.alpha(), 1.0F);
        effect.setAlpha(-3.0F);
        QCOMPARE(effect.alpha(), -3.0F);
        effect.setAlpha(7.0F);
        QCOMPARE(effect.alpha(), 7.0F);
        QCOMPARE(order.taken(), QStringLiteral("alpha update alpha update"));
    }

    void blendModeTakesAnyNumber()
    {
        TestEffect effect;
        effect.setBlendMode(static_cast<ImageEffect::BlendMode>(15));
        QVERIFY(effect.setProperty("blendMode", 99));
        QCOMPARE(int(effect.blendMode()), 99);
    }

    void nameAsksForNoUpdate()
    {
        TestEffect effect;
        SignalOrder order;
        listenToAll(order, &effect);
        const auto state = effect.testState();
        effect.setName(QStringLiteral("Warm"));
        effect.setName(QStringLiteral("Warm"));
        QCOMPARE(order.taken(), QStringLiteral("name"));
        effect.currentState();
        QCOMPARE(state->updates, 1);
    }

    void stateIsMadeOnceAndUpdatedWhenDirty()
    {
        TestEffect effect;
        const auto state = effect.testState();
        QCOMPARE(state->updates, 1);
        QCOMPARE(effect.testState(), state);
        QCOMPARE(state->updates, 1);
        effect.setAlpha(0.5F);
        effect.setEnabled(false);
        QCOMPARE(state->updates, 1);
        QCOMPARE(effect.testState(), state);
        QCOMPARE(state->updates, 2);
        QCOMPARE(effect.createdStates, 1);
    }

    void updateRequiredAloneMarksTheEffectDirty()
    {
        TestEffect effect;
        const auto state = effect.testState();
        Q_EMIT effect.updateRequired();
        effect.currentState();
        QCOMPARE(state->updates, 2);
    }

    void stateOutlivesItsEffect()
    {
        QSharedPointer<ImageEffectState> state;
        {
            TestEffect effect;
            state = effect.currentState();
        }
        QCOMPARE(state->effectId(), QStringLiteral("test.Effect"));
    }

    void updateLeavesUnitZeroActive()
    {
        QOpenGLFunctions *gl = m_gl.context()->functions();
        HueAlphaMask mask;
        TestEffect effect;
        effect.setAlphaMask(&mask);
        gl->glActiveTexture(GL_TEXTURE2);
        effect.currentState();
        GLint unit = 0;
        gl->glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
        QCOMPARE(unit, GL_TEXTURE0);
    }

    void maskSignalsThenAsksForAnUpdate()
    {
        HueAlphaMask mask;
        TestEffect effect;
        SignalOrder order;
        listenToAll(order, &effect);
        effect.setAlphaMask(&mask);
        QCOMPARE(order.taken(), QStringLiteral("alphaMask update"));
        QCOMPARE(effect.alphaMask(), &mask);
        QCOMPARE(mask.parent(), nullptr);
        effect.setAlphaMask(&mask);
        QCOMPARE(order.taken(), QString());
        effect.setAlphaMask(nullptr);
        QCOMPARE(order.taken(), QStringLiteral("alphaMask update"));
        mask.setEnabled(false);
        QCOMPARE(order.taken(), QString());
    }

    void replacedMaskIsNoLongerHeard()
    {
        HueAlphaMask former;
        HueAlphaMask latter;
        TestEffect effect;
        effect.setAlphaMask(&former);
        effect.setAlphaMask(&latter);
        SignalOrder order;
        listenToAll(order, &effect);
        former.setEnabled(false);
        QCOMPARE(order.taken(), QString());
        latter.setEnabled(false);
        QCOMPARE(order.taken(), QStringLiteral("update"));
    }

    void stopOfASharedMaskDirtiesEveryEffect()
    {
        HueAlphaMask mask;
        AlphaGradientStop *stop = mask.addGradientStop(0.0F, 1.0F);
        TestEffect first;
        TestEffect second;
        first.setAlphaMask(&mask);
        second.setAlphaMask(&mask);
        const auto firstState = first.testState();
        const auto secondState = second.testState();
        stop->setValue(0.5F);
        first.currentState();
        second.currentState();
        QCOMPARE(firstState->updates, 2);
        QCOMPARE(secondState->updates, 2);
    }

    void destroyedMaskReadsAsNullWithoutASignal()
    {
        auto *mask = new HueAlphaMask;
        TestEffect effect;
        effect.setAlphaMask(mask);
        const auto state = effect.testState();
        SignalOrder order;
        listenToAll(order, &effect);
        delete mask;
        QCOMPARE(order.taken(), QString());
        QCOMPARE(effect.alphaMask(), nullptr);
        effect.currentState();
        QCOMPARE(state->updates, 1);
    }

    void effectsDoNotOwnTheirMask()
    {
        HueAlphaMask mask;
        {
            TestEffect effect;
            effect.setAlphaMask(&mask);
        }
        mask.setEnabled(false);
        QVERIFY(!mask.enabled());
    }

    void propertiesComeInTheirOrder()
    {
        const QMetaObject &meta = GrayScaleImageEffect::staticMetaObject;
        QStringList names;
        for (int i = ImageEffect::staticMetaObject.propertyOffset(); i < meta.propertyCount();
             ++i) {
            names.append(QLatin1String(meta.property(i).name()));
        }
        QCOMPARE(names.join(QLatin1Char(' ')),
                 QStringLiteral("effectId name enabled alpha blendMode alphaMask red green blue"));
        QVERIFY(meta.property(meta.indexOfProperty("effectId")).isConstant());
        QVERIFY(!meta.property(meta.indexOfProperty("effectId")).isWritable());
    }

private:
    OffscreenGl m_gl;
};

KORVEL_TEST_MAIN(ImageEffectTest)

#include "tst_imageeffect.moc"
