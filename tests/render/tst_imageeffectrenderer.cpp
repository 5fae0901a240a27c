#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/ChannelShiftImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/ExposureImageEffect.h"
#include "imagefx/effects/LookupTableImageEffect.h"
#include "imagefx/effects/SelectiveSaturationImageEffect.h"
#include "imagefx/effects/SharpenImageEffect.h"
#include "imagefx/model/DistanceAlphaMask.h"
#include "imagefx/render/ImageEffectRenderer.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TestEffect.h"
#include "tests/support/TestMain.h"

#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr double exactly = 0.0;
// A colour that passes through a shader and is rounded to 8 bits again.
constexpr double oneLevel = 1.0;

const QColor a(255, 0, 0);
const QColor b(0, 200, 0);
const QColor c(0, 0, 150);
const QColor d(255, 255, 100);

QImage render(const QList<ImageEffect *> &effects, const QImage &image)
{
    QOpenGLFramebufferObject target(image.size(), GL_TEXTURE_2D);
    ImageEffectRenderer(effects).render(image, &target);
    return readBack(&target);
}

QImage opaquePicture(const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            image.setPixel(x, y, qRgb(x * 5 % 256, y * 11 % 256, (x + y) * 3 % 256));
        }
    }
    return image;
}

} // namespace

class ImageEffectRendererTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_gl.isValid()); }

    void settingsHaveTheirDefaultsAndAreStoredAsTheyAre()
    {
        ImageEffectRenderer renderer({});
        QCOMPARE(renderer.subRect(), QRectF(0, 0, 1, 1));
        QCOMPARE(renderer.relativeScale(), 1.0F);
        QCOMPARE(renderer.globalAlpha(), 1.0F);
        renderer.setSubRect(QRectF(-1, 2, 3, 4));
        renderer.setRelativeScale(-0.5F);
        renderer.setGlobalAlpha(9.0F);
        QCOMPARE(renderer.subRect(), QRectF(-1, 2, 3, 4));
        QCOMPARE(renderer.relativeScale(), -0.5F);
        QCOMPARE(renderer.globalAlpha(), 9.0F);
    }

    // Rows are four-byte aligned on upload: widths that are no multiple of four tell.
    void noEffectsGiveTheSource_data()
    {
        QTest::addColumn<QSize>("size");
        for (const int width : {1, 2, 3, 4, 5, 97, 98, 99, 100}) {
            QTest::newRow(QByteArray::number(width).constData()) << QSize(width, 13);
        }
    }

    void noEffectsGiveTheSource()
    {
        QFETCH(QSize, size);
        const QImage image = opaquePicture(size);
        KORVEL_COMPARE_PICTURES(render({}, image), image, exactly);
    }

    void imageWithoutAlphaComesBackOpaque()
    {
        QImage image(3, 1, QImage::Format_RGB32);
        image.fill(0x00102030);
        const QImage result = render({}, image);
        QCOMPARE(result.pixelColor(2, 0), QColor(0x10, 0x20, 0x30, 255));
    }

    void translucentImageIsTakenAsPremultiplied()
    {
        const QImage image = picture({{QColor(200, 100, 50, 128)}});
        KORVEL_COMPARE_PICTURES(render({}, image), image, exactly);
    }

    void firstScanLineIsRowZero()
    {
        const QImage image = picture({{a, a}, {b, b}, {c, c}});
        KORVEL_COMPARE_PICTURES(render({}, image), image, exactly);
        TestEffect nothing;
        KORVEL_COMPARE_PICTURES(render({&nothing}, image), image, exactly);
    }

    // An odd number of draws ends in the temporary framebuffer, an even one in the target.
    void resultEndsInTheTarget_data()
    {
        QTest::addColumn<int>("count");
        for (int count = 0; count < 6; ++count) {
            QTest::newRow(QByteArray::number(count).constData()) << count;
        }
    }

    void resultEndsInTheTarget()
    {
        QFETCH(int, count);
        QList<ImageEffect *> effects;
        for (int i = 0; i < count; ++i) {
            auto *shift = new ChannelShiftImageEffect(this);
            shift->setRed(20.0F / 255.0F);
            effects.append(shift);
        }
        const QImage result = render(effects, picture({{QColor(100, 50, 0)}}));
        qDeleteAll(effects);
        KORVEL_COMPARE_PICTURES(result, picture({{QColor(100 + 20 * count, 50, 0)}}), exactly);
    }

    void effectsApplyInTheirOrder()
    {
        ColorFillImageEffect fill;
        fill.setColor(QColor(10, 20, 30));
        ChannelShiftImageEffect shift;
        shift.setGreen(100.0F / 255.0F);
        KORVEL_COMPARE_PICTURES(render({&fill, &shift}, picture({{a}})),
                                picture({{QColor(10, 120, 30)}}), exactly);
        KORVEL_COMPARE_PICTURES(render({&shift, &fill}, picture({{a}})),
                                picture({{QColor(10, 20, 30)}}), exactly);
    }

    void subRectangleFillsTheTarget()
    {
        const GLuint texture = uploadRgba(picture({{a, b}, {c, d}}));
        QOpenGLFramebufferObject target(2, 2, GL_TEXTURE_2D);
        ImageEffectRenderer renderer({});
        renderer.setSubRect(QRectF(0, 0, 0.5, 0.5));
        renderer.render(texture, &target);
        KORVEL_COMPARE_PICTURES(readBack(&target), picture({{a, a}, {a, a}}), exactly);
        TestEffect nothing;
        ImageEffectRenderer with({&nothing});
        with.setSubRect(QRectF(0.5, 0.5, 0.5, 0.5));
        with.render(texture, &target);
        KORVEL_COMPARE_PICTURES(readBack(&target), picture({{d, d}, {d, d}}), exactly);
        m_gl.context()->functions()->glDeleteTextures(1, &texture);
    }

    // With an even and an odd number of effects the result is in another one of the framebuffers.
    void drawingInPlaceGivesTheSame()
    {
        const QImage image = opaquePicture(QSize(37, 21));
        ColorFillImageEffect fill;
        fill.setAlpha(0.5F);
        ChannelShiftImageEffect shift;
        shift.setGreen(100.0F / 255.0F);
        const QList<QList<ImageEffect *>> stacks = {{}, {&shift}, {&shift, &fill}};
        for (const QList<ImageEffect *> &effects : stacks) {
            QOpenGLFramebufferObject picture(image.size(), GL_TEXTURE_2D);
            QOpenGLFramebufferObject spare(image.size(), GL_TEXTURE_2D);
            ImageEffectRenderer({}).render(image, &picture);
            QOpenGLFramebufferObject *result =
                ImageEffectRenderer(effects).renderInPlace(&picture, &spare);
            QCOMPARE(result, effects.size() % 2 == 0 ? &picture : &spare);
            KORVEL_COMPARE_PICTURES(readBack(result), render(effects, image), exactly);
        }
    }

    void globalAlphaZeroMakesEveryEffectACopy()
    {
        ColorFillImageEffect fill;
        ChannelShiftImageEffect shift;
        shift.setBlue(0.5F);
        const QImage image = picture({{a, b}, {c, d}});
        const GLuint texture = uploadRgba(image);
        QOpenGLFramebufferObject target(image.size(), GL_TEXTURE_2D);
        ImageEffectRenderer renderer({&fill, &shift});
        renderer.setGlobalAlpha(0.0F);
        renderer.render(texture, &target);
        KORVEL_COMPARE_PICTURES(readBack(&target), image, exactly);
        renderer.setGlobalAlpha(0.5F);
        renderer.render(texture, &target);
        QVERIFY(readBack(&target) != image);
        m_gl.context()->functions()->glDeleteTextures(1, &texture);
    }

    void disabledAndNeutralEffectsAreDrawnAllTheSame()
    {
        ColorFillImageEffect fill;
        fill.setColor(QColor(10, 20, 30));
        fill.setEnabled(false);
        KORVEL_COMPARE_PICTURES(render({&fill}, picture({{a}})), picture({{QColor(10, 20, 30)}}),
                                exactly);
    }

    void transparentPixelsStayTransparent()
    {
        const QImage image = picture({{QColor(0, 0, 0, 0), QColor(0, 0, 0, 0)}});
        for (const char *expression :
             {"colorSample", "vec3(1.0)", "colorSample / 0.0", "vec3(0.0) / 0.0"}) {
            TestEffect effect(TestEffect::pieceOf(expression), QLatin1String(expression));
            const QImage result = render({&effect, &effect}, image);
            QCOMPARE(qAlpha(result.pixel(0, 0)), 0);
        }
        TestEffect white(TestEffect::pieceOf("vec3(1.0)"), QStringLiteral("white"));
        KORVEL_COMPARE_PICTURES(render({&white}, image), image, exactly);
    }

    void alphaOfTheSourceIsKept()
    {
        TestEffect white(TestEffect::pieceOf("vec3(1.0)"), QStringLiteral("white"));
        KORVEL_COMPARE_PICTURES(render({&white}, picture({{QColor(10, 20, 30, 100)}})),
                                picture({{QColor(100, 100, 100, 100)}}), oneLevel);
    }

    void maskTableIsFreshAfterAnEffectThatNeedsNone()
    {
        DistanceAlphaMask mask;
        mask.setGradientInterpolation(AlphaMask::ConstantInterpolation);
        mask.addGradientStop(0.0F, 0.0F);
        ColorFillImageEffect masked;
        masked.setAlphaMask(&mask);
        TestEffect plain;
        const QImage image = picture({{b, c}});
        KORVEL_COMPARE_PICTURES(render({&plain, &masked, &plain, &masked}, image), image, exactly);
    }

    // A nested effect is prepared before it is asked whether it draws.
    void disabledNestedEffectIsPreparedButNotDrawn()
    {
        TestEffect white(TestEffect::pieceOf("vec3(1.0)"), QStringLiteral("nested.White"));
        white.setEnabled(false);
        BatchImageEffect batch;
        batch.setImageEffectList({&white});
        const QImage image = picture({{b, c}});
        KORVEL_COMPARE_PICTURES(render({&batch}, image), image, exactly);
        QCOMPARE(white.testState()->resolves, 1);
    }

    // Two effects with masks of their own, drawn in turn: each has its own table.
    void everyMaskHasItsOwnTable()
    {
        DistanceAlphaMask none;
        none.addGradientStop(0.0F, 0.0F);
        DistanceAlphaMask half;
        half.addGradientStop(0.0F, 0.5F);
        ColorFillImageEffect hidden;
        hidden.setAlphaMask(&none);
        ColorFillImageEffect shown;
        shown.setColor(Qt::blue);
        shown.setAlphaMask(&half);
        KORVEL_COMPARE_PICTURES(render({&shown, &hidden}, picture({{QColor(0, 0, 0)}})),
                                picture({{QColor(0, 0, 128)}}), oneLevel);
    }

    void modeWithoutAPieceDrawsNothing()
    {
        ColorFillImageEffect broken;
        QVERIFY(broken.setProperty("blendMode", 99));
        ChannelShiftImageEffect shift;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("fx_blend")));
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(QStringLiteral("Problematic Fragment")));
        // Nothing was drawn into the framebuffer that the next effect reads: transparent.
        KORVEL_COMPARE_PICTURES(render({&broken}, picture({{a, b}})),
                                picture({{Qt::transparent, Qt::transparent}}), exactly);
        KORVEL_COMPARE_PICTURES(render({&broken, &shift}, picture({{a, b}})),
                                picture({{Qt::transparent, Qt::transparent}}), exactly);
    }

    // What the draw before the last left there is what the next effect reads: never something
    // undefined.
    void modeWithoutAPieceLeavesAnOlderPicture()
    {
        ChannelShiftImageEffect first;
        first.setGreen(0.5F);
        ColorFillImageEffect broken;
        QVERIFY(broken.setProperty("blendMode", 99));
        TestEffect last;
        const QImage image = picture({{a, c}});
        KORVEL_COMPARE_PICTURES(render({&first, &broken, &last}, image), image, exactly);
    }

    void blendingOfTheCallerDoesNotLeakIn()
    {
        m_gl.context()->functions()->glEnable(GL_BLEND);
        const QImage image = picture({{QColor(20, 10, 5, 50)}});
        KORVEL_COMPARE_PICTURES(render({}, image), image, exactly);
        QVERIFY(!m_gl.context()->functions()->glIsEnabled(GL_BLEND));
    }

    void renderLeavesNoTextureAndNoFramebufferBehind()
    {
        QOpenGLFunctions *gl = m_gl.context()->functions();
        const auto living = [gl] {
            int count = 0;
            for (GLuint name = 1; name < 10000; ++name) {
                count += gl->glIsTexture(name) + gl->glIsFramebuffer(name);
            }
            return count;
        };
        const QImage image = picture({{a, b}});
        TestEffect nothing;
        render({&nothing}, image);
        const int before = living();
        for (int i = 0; i < 5; ++i) {
            render({&nothing}, image);
        }
        QCOMPARE(living(), before);
        QOpenGLFramebufferObject kept(1, 1, GL_TEXTURE_2D);
        QCOMPARE(living(), before + 2);
    }

    void renderEndsOnUnitZeroWithTheTargetUnbound()
    {
        QOpenGLFunctions *gl = m_gl.context()->functions();
        QOpenGLFramebufferObject target(1, 1, GL_TEXTURE_2D);
        DistanceAlphaMask mask;
        TestEffect effect;
        effect.setAlphaMask(&mask);
        ImageEffectRenderer({&effect}).render(picture({{a}}), &target);
        GLint unit = 0;
        gl->glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
        QCOMPARE(unit, GL_TEXTURE0);
        QVERIFY(!target.isBound());
    }

    void oneEffectListRendersInOneContextAfterAnother()
    {
        DistanceAlphaMask mask;
        mask.addGradientStop(0.0F, 0.5F);
        ColorFillImageEffect fill;
        fill.setAlphaMask(&mask);
        ExposureImageEffect exposure;
        exposure.setExposure(0.5F);
        LookupTableImageEffect grade;
        grade.setTable(QUrl(QStringLiteral("qrc:/imagefx/lib/lut/fargo.png")));
        SelectiveSaturationImageEffect saturation;
        saturation.setBlue(-0.5F);
        BlurImageEffect blur;
        SharpenImageEffect sharpen;
        ChannelShiftImageEffect shift;
        shift.setRed(0.25F);
        BatchImageEffect batch;
        batch.setImageEffectList({&shift});
        const QList<ImageEffect *> stack{&fill, &exposure, &grade, &saturation,
                                         &blur, &sharpen,  &batch};
        const QImage source = picture({{b, c, d}, {a, c, b}});
        const QImage here = render(stack, source);
        QVERIFY(here != source);
        {
            OffscreenGl other;
            QVERIFY(other.isValid());
            KORVEL_COMPARE_PICTURES(render(stack, source), here, exactly);
        }
        QVERIFY(m_gl.makeCurrent());
        KORVEL_COMPARE_PICTURES(render(stack, source), here, exactly);
    }

private:
    OffscreenGl m_gl;
};

KORVEL_TEST_MAIN(ImageEffectRendererTest)

#include "tst_imageeffectrenderer.moc"
