#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/model/DistanceAlphaMask.h"
#include "imagefx/model/HueAlphaMask.h"
#include "imagefx/model/LuminanceAlphaMask.h"
#include "imagefx/render/AlphaMaskState.h"
#include "imagefx/render/ImageEffectState.h"
#include "imagefx/render/PixelBufferState.h"
#include "imagefx/render/TextureUnits.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/EffectTester.h"
#include "tests/support/EngineRendering.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/TestMain.h"

#include <QtGui/QOpenGLFunctions>

#include <memory>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

// A mask whose gradient lets nothing through below `location` and everything from there on.
template <class Mask>
std::unique_ptr<Mask> threshold(float location)
{
    auto mask = std::make_unique<Mask>();
    mask->setGradientInterpolation(AlphaMask::ConstantInterpolation);
    mask->addGradientStop(0.0F, 0.0F);
    mask->addGradientStop(location, 1.0F);
    mask->addGradientStop(1.0F, 1.0F);
    return mask;
}

// Texels from one coordinate of a 512th to the next.
float location(int texel)
{
    return float(texel) / 512.0F;
}

// True when a mask of that kind looks a colour up in exactly that texel.
template <class Mask>
bool looksUp(const QVector<int> &color, int texel)
{
    ColorFillImageEffect fill;
    fill.setColor(QColor(255 - color.at(0), 255 - color.at(1), 255 - color.at(2)));
    const QVector<int> filled = {255 - color.at(0), 255 - color.at(1), 255 - color.at(2), 255};
    const auto reached = threshold<Mask>(location(texel));
    fill.setAlphaMask(reached.get());
    if (rendered(&fill, color) != filled) {
        return false;
    }
    const auto missed = threshold<Mask>(location(texel + 1));
    fill.setAlphaMask(missed.get());
    return texel == 511 || rendered(&fill, color) == color;
}

// Binds a texture of its own in place of the gradient.
class TwoRowMaskState : public AlphaMaskState
{
public:
    explicit TwoRowMaskState(GLuint textureId)
        : AlphaMaskState(QStringLiteral("test.TwoRows")), m_textureId(textureId)
    {
    }
    void updatePass(const QSharedPointer<ImageEffectPass> &, const PixelBufferState *) override
    {
        bindTexture(maskGradientUnit, m_textureId);
    }
    QByteArray shaderCode() const override
    {
        return ImageEffect::readShader(QStringLiteral("am_luminance.frag"));
    }

private:
    const GLuint m_textureId;
};

class TwoRowMask : public AlphaMask
{
public:
    explicit TwoRowMask(GLuint textureId)
        : AlphaMask(QStringLiteral("test.TwoRows"), 0, nullptr), m_textureId(textureId)
    {
    }

protected:
    AlphaMaskState *createState() const override { return new TwoRowMaskState(m_textureId); }

private:
    const GLuint m_textureId;
};

} // namespace

class MasksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void distanceIsZeroInTheCentreAndOneInTheCorners();
    void hueOfPureColors();
    void luminanceWeighsEachChannelWithAThousandthLessThanAThird();
    void redHasOneOpacityAtBothEndsOfTheHueCircle();
    void onlyTheHueGradientReturnsToItsStart();
    void onlyRowZeroAndTheAlphaOfTheGradientCount();
    void theMaskSeesTheSourceNotTheEffect();
    void aDisabledMaskLetsTheWholeEffectThrough();
    void theLuminanceStateCarriesTheHueId();
    void everyStateGivesItsPiece();

private:
    std::unique_ptr<OffscreenGl> m_gl;
};

// Hue and luminance masks share passes within a context.
void MasksTest::init()
{
    m_gl = std::make_unique<OffscreenGl>();
    QVERIFY(m_gl->isValid());
}

void MasksTest::cleanup()
{
    m_gl.reset();
}

void MasksTest::distanceIsZeroInTheCentreAndOneInTheCorners()
{
    constexpr int size = 201;
    constexpr int centre = size / 2;
    constexpr int last = size - 1;
    QImage black(size, size, QImage::Format_RGBA8888);
    black.fill(Qt::black);
    const QColor filled(255, 0, 0);
    const QColor left(0, 0, 0);
    const auto becomes = [&](const QColor &color, float from, int x, int y) {
        const auto mask = threshold<DistanceAlphaMask>(from);
        ColorFillImageEffect fill;
        fill.setAlphaMask(mask.get());
        return renderTexture({&fill}, black).pixelColor(x, y) == color &&
               renderWithEngine({&fill}, black).pixelColor(x, y) == color;
    };
    QVERIFY(becomes(filled, 0.0F, centre, centre));
    QVERIFY(becomes(left, location(1), centre, centre));
    // The outermost pixels' centres are half a pixel inside: at 200 / 201 of the way.
    for (const QPoint &edge :
         {QPoint(0, centre), QPoint(last, centre), QPoint(centre, 0), QPoint(centre, last)}) {
        QVERIFY(becomes(filled, 0.7F, edge.x(), edge.y()));
        QVERIFY(becomes(left, 0.7071F, edge.x(), edge.y()));
    }
    for (const QPoint &corner :
         {QPoint(0, 0), QPoint(last, 0), QPoint(0, last), QPoint(last, last)}) {
        QVERIFY(becomes(filled, 0.99F, corner.x(), corner.y()));
        QVERIFY(becomes(left, 1.0F - location(1), corner.x(), corner.y()));
    }
}

void MasksTest::hueOfPureColors()
{
    QVERIFY(looksUp<HueAlphaMask>({255, 0, 0, 255}, 0));
    QVERIFY(looksUp<HueAlphaMask>({0, 255, 0, 255}, 512 / 3));
    QVERIFY(looksUp<HueAlphaMask>({0, 0, 255, 255}, 2 * 512 / 3));
    QVERIFY(looksUp<HueAlphaMask>({255, 255, 0, 255}, 512 / 6));
    QVERIFY(looksUp<HueAlphaMask>({255, 0, 255, 255}, 5 * 512 / 6));
    for (const int level : {0, 1, 77, 255}) {
        QVERIFY(looksUp<HueAlphaMask>({level, level, level, 255}, 0));
    }
}

// 0.333 * 512 = 170.496, twice that is 340.992, where a third would give 341.33.
void MasksTest::luminanceWeighsEachChannelWithAThousandthLessThanAThird()
{
    QVERIFY(looksUp<LuminanceAlphaMask>({0, 0, 0, 255}, 0));
    for (const QVector<int> &color :
         {QVector<int>{255, 0, 0, 255}, {0, 255, 0, 255}, {0, 0, 255, 255}}) {
        QVERIFY(looksUp<LuminanceAlphaMask>(color, 170));
    }
    for (const QVector<int> &color :
         {QVector<int>{255, 255, 0, 255}, {0, 255, 255, 255}, {255, 0, 255, 255}}) {
        QVERIFY(looksUp<LuminanceAlphaMask>(color, 340));
    }
    QVERIFY(looksUp<LuminanceAlphaMask>({255, 255, 255, 255}, 511));
}

// (255, 0, 1) is the last hue before the circle closes.
void MasksTest::redHasOneOpacityAtBothEndsOfTheHueCircle()
{
    HueAlphaMask mask;
    mask.addGradientStop(0.0F, 0.2F);
    mask.addGradientStop(0.5F, 0.8F);
    ColorFillImageEffect fill;
    fill.setColor(QColor(0, 255, 0));
    fill.setAlphaMask(&mask);
    QCOMPARE(rendered(&fill, {255, 0, 0, 255}), QVector<int>({204, 51, 0, 255}));
    QCOMPARE(rendered(&fill, {255, 0, 1, 255}), QVector<int>({204, 51, 1, 255}));
}

void MasksTest::onlyTheHueGradientReturnsToItsStart()
{
    HueAlphaMask hue;
    LuminanceAlphaMask luminance;
    DistanceAlphaMask distance;
    for (AlphaMask *mask : QVector<AlphaMask *>{&hue, &luminance, &distance}) {
        mask->addGradientStop(0.25F, 0.0F);
        mask->addGradientStop(0.5F, 1.0F);
        mask->currentState();
    }
    QCOMPARE(hue.intensityAtLocation(1.0F), 0.0F);
    QCOMPARE(luminance.intensityAtLocation(1.0F), 1.0F);
    QCOMPARE(distance.intensityAtLocation(1.0F), 1.0F);
}

void MasksTest::onlyRowZeroAndTheAlphaOfTheGradientCount()
{
    QImage rows(1, 2, QImage::Format_RGBA8888);
    rows.setPixelColor(0, 0, QColor(255, 255, 255, 51));
    rows.setPixelColor(0, 1, QColor(0, 0, 0, 255));
    const GLuint textureId = uploadRgba(rows);
    TwoRowMask mask(textureId);
    ColorFillImageEffect fill;
    fill.setColor(Qt::white);
    fill.setAlphaMask(&mask);
    QCOMPARE(renderedByGl(&fill, {0, 0, 0, 255}), QVector<int>({51, 51, 51, 255}));
    m_gl->context()->functions()->glDeleteTextures(1, &textureId);
}

// A luminance threshold of 1/2: the effect's white would pass, the source's black does not.
void MasksTest::theMaskSeesTheSourceNotTheEffect()
{
    const auto mask = threshold<LuminanceAlphaMask>(0.5F);
    ColorFillImageEffect fill;
    fill.setAlphaMask(mask.get());
    fill.setColor(Qt::white);
    QCOMPARE(rendered(&fill, {0, 0, 0, 255}), QVector<int>({0, 0, 0, 255}));
    fill.setColor(Qt::black);
    QCOMPARE(rendered(&fill, {255, 255, 255, 255}), QVector<int>({0, 0, 0, 255}));
    // 60 of 100 un-premultiplied is above the threshold, though 60 of 255 is below.
    QCOMPARE(rendered(&fill, {60, 60, 60, 100}), QVector<int>({0, 0, 0, 100}));
}

void MasksTest::aDisabledMaskLetsTheWholeEffectThrough()
{
    const auto mask = threshold<LuminanceAlphaMask>(0.5F);
    ColorFillImageEffect fill;
    fill.setAlphaMask(mask.get());
    QCOMPARE(rendered(&fill, {0, 0, 0, 255}), QVector<int>({0, 0, 0, 255}));
    mask->setEnabled(false);
    QCOMPARE(rendered(&fill, {0, 0, 0, 255}), QVector<int>({255, 0, 0, 255}));
}

void MasksTest::theLuminanceStateCarriesTheHueId()
{
    const QString hueId = QStringLiteral("ko.orvanto.alphamask.Hue");
    const QString distanceId = QStringLiteral("ko.orvanto.alphamask.Distance");
    const DistanceAlphaMask distance;
    QCOMPARE(distance.maskId(), distanceId);
    QCOMPARE(distance.currentState()->maskId(), distanceId);
    const HueAlphaMask hue;
    QCOMPARE(hue.maskId(), hueId);
    QCOMPARE(hue.currentState()->maskId(), hueId);
    const LuminanceAlphaMask luminance;
    QCOMPARE(luminance.maskId(), QStringLiteral("ko.orvanto.alphamask.Luminance"));
    QCOMPARE(luminance.currentState()->maskId(), hueId);
}

void MasksTest::everyStateGivesItsPiece()
{
    const DistanceAlphaMask distance;
    const HueAlphaMask hue;
    const LuminanceAlphaMask luminance;
    const QVector<QPair<const AlphaMask *, QString>> pieces = {
        {&distance, QStringLiteral("am_distance.frag")},
        {&hue, QStringLiteral("am_hue.frag")},
        {&luminance, QStringLiteral("am_luminance.frag")}};
    for (const auto &[mask, file] : pieces) {
        const QByteArray piece = mask->currentState()->shaderCode();
        QCOMPARE(piece, ImageEffect::readShader(file));
        QVERIFY(piece.contains("lowp float fx_mask(lowp vec3 color, mediump vec2 texCoord, "
                               "mediump vec2 vertexCoord)\n{"));
    }
}

KORVEL_TEST_MAIN(MasksTest)
#include "tst_masks.moc"
