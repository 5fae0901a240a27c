#include "imagefx/effects/BrightnessContrastImageEffect.h"
#include "imagefx/effects/ChannelShiftImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/GrayScaleImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/model/DistanceAlphaMask.h"
#include "imagefx/model/EffectStackReader.h"
#include "imagefx/model/HueAlphaMask.h"
#include "imagefx/model/LuminanceAlphaMask.h"
#include "imagefx/render/ImageEffectRenderer.h"
#include "imagefx/render/ImageEffectState.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/TestMain.h"

#include <QtCore/QJsonDocument>
#include <QtGui/QOpenGLFramebufferObject>

using namespace ko::imagefx;
using ko::imagefx::test::OffscreenGl;

// What an application does with the installed library.
class PublicInterfaceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void applicationRendersAStack()
    {
        OffscreenGl gl;
        QVERIFY(gl.isValid());
        ImageEffect::initialize();
        HueAlphaMask mask;
        ColorFillImageEffect fill;
        fill.setColor(Qt::green);
        fill.setAlphaMask(&mask);
        const QList<ImageEffect *> stack{&fill};
        const QList<ImageEffect *> read = ImageEffect::unserialize(ImageEffect::serialize(stack));
        QCOMPARE(read.size(), 1);
        QImage image(4, 4, QImage::Format_RGB32);
        image.fill(Qt::white);
        QOpenGLFramebufferObject target(image.size(), GL_TEXTURE_2D);
        ImageEffectRenderer(read).render(image, &target);
        QVERIFY(!read.first()->currentState()->passDisabled());
        delete read.first()->alphaMask();
        qDeleteAll(read);
        QCOMPARE(test::readBack(&target).pixelColor(3, 3), QColor(Qt::green));
    }

    void everyExportedClassCanBeUsed()
    {
        const EffectRegistry registry = EffectRegistry::complete();
        EffectStackReader reader(registry);
        QVERIFY(reader.readStack(QJsonArray()).isEmpty());
        QVERIFY(BrightnessContrastImageEffect().isNeutral());
        QVERIFY(ChannelShiftImageEffect().isNeutral());
        QVERIFY(HSVImageEffect().isNeutral());
        QVERIFY(!GrayScaleImageEffect().isNeutral());
        QVERIFY(DistanceAlphaMask().enabled());
        QVERIFY(LuminanceAlphaMask().enabled());
    }
};

KORVEL_TEST_MAIN(PublicInterfaceTest)

#include "tst_publicinterface.moc"
