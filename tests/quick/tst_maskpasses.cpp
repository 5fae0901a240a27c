#include "imagefx/model/DistanceAlphaMask.h"
#include "imagefx/quick/MaskGatherPass.h"
#include "imagefx/quick/MaskPass.h"
#include "imagefx/quick/MaskRenderPass.h"
#include "imagefx/render/AlphaMaskState.h"
#include "imagefx/render/BasePass.h"
#include "imagefx/render/GlStateGuard.h"
#include "tests/quick/MaskModel.h"
#include "tests/support/EffectCases.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/PictureTester.h"
#include "tests/support/StackTester.h"
#include "tests/support/TestMain.h"

#include <QtGui/QOpenGLExtraFunctions>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtQuick/QSGTexture>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr QRectF wholeTexture(0.0, 0.0, 1.0, 1.0);

class Texture : public QSGTexture
{
public:
    explicit Texture(const QImage &picture)
        : m_size(picture.size()), m_textureId(uploadRgba(picture))
    {
    }
    ~Texture() override
    {
        QOpenGLContext::currentContext()->functions()->glDeleteTextures(1, &m_textureId);
    }

    int textureId() const override { return int(m_textureId); }
    QSize textureSize() const override { return m_size; }
    bool hasAlphaChannel() const override { return true; }
    bool hasMipmaps() const override { return false; }
    void bind() override
    {
        QOpenGLContext::currentContext()->functions()->glBindTexture(GL_TEXTURE_2D, m_textureId);
    }

private:
    const QSize m_size;
    const GLuint m_textureId;
};

// Fills the framebuffer with the picture, and leaves its viewport set.
void fill(QOpenGLFramebufferObject *framebuffer, const QImage &picture)
{
    Texture texture(picture);
    framebuffer->bind();
    QOpenGLContext::currentContext()->functions()->glViewport(0, 0, framebuffer->width(),
                                                              framebuffer->height());
    BasePass::shared()->draw(&texture, wholeTexture);
    framebuffer->release();
}

QSize sizeOf(GLuint textureId)
{
    QOpenGLExtraFunctions *gl = QOpenGLContext::currentContext()->extraFunctions();
    gl->glBindTexture(GL_TEXTURE_2D, textureId);
    GLint width = 0;
    GLint height = 0;
    gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
    return {width, height};
}

QImage pictureOf(GLuint textureId, const QSize &size)
{
    QOpenGLFramebufferObject copy(size);
    copy.bind();
    BasePass::shared()->draw(textureId, wholeTexture);
    copy.release();
    return readBack(&copy);
}

std::unique_ptr<AlphaMask> flatMask(float value)
{
    auto mask = std::make_unique<DistanceAlphaMask>();
    mask->addGradientStop(0.0F, value);
    mask->addGradientStop(1.0F, value);
    return mask;
}

} // namespace

// The three passes by themselves, in a context without any window.
class MaskPassesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void aMaskScalesAllFourChannelsByItsRed();
    void aMaskOfAnotherSizeIsStretched();
    void gatheringMatchesTheModel_data();
    void gatheringMatchesTheModel();
    void theGatheredTextureHasTheSizeOfTheSource();
    void gatheringAgainReplacesTheTexture();
    void theTextureDiesWithThePass();
    void theMaskLivesAsLongAsThePass();
    void gatheringLeavesTheSourceAlone();
    void theOverlayFindsNoAttributesAndIsDrawnNevertheless();
    void theOverlayIsRedWhereTheMaskLetsLittleThrough();
    void theOverlayNeedsAGatheredMask();

private:
    std::unique_ptr<OffscreenGl> m_gl;
    std::unique_ptr<GlStateGuard> m_guard;
};

void MaskPassesTest::init()
{
    m_gl = std::make_unique<OffscreenGl>();
    QVERIFY(m_gl->isValid());
    m_guard = std::make_unique<GlStateGuard>();
}

void MaskPassesTest::cleanup()
{
    m_guard.reset();
    m_gl.reset();
}

void MaskPassesTest::aMaskScalesAllFourChannelsByItsRed()
{
    const QImage picture = translucentPicture();
    const QImage mask = opaquePicture();
    QOpenGLFramebufferObject source(picture.size());
    QOpenGLFramebufferObject target(picture.size());
    fill(&source, picture);
    Texture texture(mask);
    MaskPass pass;
    QVERIFY(pass.isLinked());
    pass.draw({&source, &target}, &texture);
    const auto expected = [&](int x, int y) {
        const uchar *pixel = picture.constScanLine(y) + ptrdiff_t(4) * x;
        const double red = mask.constScanLine(y)[ptrdiff_t(4) * x] / 255.0;
        PixelRange range;
        for (size_t i = 0; i < range.size(); ++i) {
            range[i].low = range[i].high = pixel[i] * red;
        }
        return range;
    };
    KORVEL_COMPARE_PICTURES(readBack(&target), ExpectedPixel(expected), roundingTolerance);
    KORVEL_COMPARE_PICTURES(readBack(&source), picture, 0.0);
}

void MaskPassesTest::aMaskOfAnotherSizeIsStretched()
{
    const QImage picture = translucentPicture(QSize(40, 20));
    QOpenGLFramebufferObject source(picture.size());
    QOpenGLFramebufferObject target(picture.size());
    fill(&source, picture);
    Texture texture(test::picture(
        {{QColor(0, 255, 255), QColor(255, 0, 0)}, {QColor(255, 255, 255), QColor(0, 0, 0)}}));
    MaskPass().draw({&source, &target}, &texture);
    QImage expected = picture;
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 40; ++x) {
            if ((x < 20) == (y < 10)) {
                std::fill_n(expected.scanLine(y) + ptrdiff_t(4) * x, 4, uchar(0));
            }
        }
    }
    KORVEL_COMPARE_PICTURES(readBack(&target), expected, 0.0);
}

void MaskPassesTest::gatheringMatchesTheModel_data()
{
    QTest::addColumn<int>("maskKind");
    for (const auto kind :
         {ModelMaskKind::Distance, ModelMaskKind::Hue, ModelMaskKind::Luminance}) {
        QTest::newRow(qPrintable(maskKindName(kind))) << int(kind);
    }
}

void MaskPassesTest::gatheringMatchesTheModel()
{
    QFETCH(const int, maskKind);
    const QImage picture = opaquePicture();
    QOpenGLFramebufferObject source(picture.size());
    fill(&source, picture);
    for (MaskCase mask : maskCases(ModelMaskKind(maskKind))) {
        const std::unique_ptr<AlphaMask> object = mask.create();
        MaskGatherPass pass(object->currentState());
        QVERIFY(pass.isLinked());
        pass.gather(&source);
        // It shows the mask, whether that is on or off.
        mask.enabled = true;
        KORVEL_COMPARE_PICTURES(pictureOf(pass.texture(), picture.size()),
                                modelMaskPicture(mask.model(), picture), roundingTolerance);
    }
}

void MaskPassesTest::theGatheredTextureHasTheSizeOfTheSource()
{
    const auto mask = flatMask(0.5F);
    MaskGatherPass pass(mask->currentState());
    QCOMPARE(pass.texture(), GLuint(0));
    for (const QSize &size : {QSize(61, 47), QSize(7, 90), QSize(1, 1)}) {
        QOpenGLFramebufferObject source(size);
        fill(&source, opaquePicture(size));
        pass.gather(&source);
        QCOMPARE(sizeOf(pass.texture()), size);
    }
}

void MaskPassesTest::gatheringAgainReplacesTheTexture()
{
    const auto mask = flatMask(0.5F);
    MaskGatherPass pass(mask->currentState());
    QOpenGLFramebufferObject source(8, 8);
    fill(&source, opaquePicture(QSize(8, 8)));
    pass.gather(&source);
    const GLuint first = pass.texture();
    QVERIFY(m_gl->context()->functions()->glIsTexture(first));
    pass.gather(&source);
    QVERIFY(pass.texture() != first);
    QVERIFY(!m_gl->context()->functions()->glIsTexture(first));
}

void MaskPassesTest::theTextureDiesWithThePass()
{
    const auto mask = flatMask(0.5F);
    auto pass = std::make_unique<MaskGatherPass>(mask->currentState());
    QOpenGLFramebufferObject source(8, 8);
    fill(&source, opaquePicture(QSize(8, 8)));
    pass->gather(&source);
    const GLuint texture = pass->texture();
    pass.reset();
    QVERIFY(!m_gl->context()->functions()->glIsTexture(texture));
}

void MaskPassesTest::theMaskLivesAsLongAsThePass()
{
    auto mask = flatMask(1.0F);
    MaskGatherPass pass(mask->currentState());
    mask.reset();
    const QImage picture = opaquePicture(QSize(8, 8));
    QOpenGLFramebufferObject source(picture.size());
    fill(&source, picture);
    pass.gather(&source);
    QImage white(picture.size(), QImage::Format_RGBA8888);
    white.fill(Qt::white);
    KORVEL_COMPARE_PICTURES(pictureOf(pass.texture(), picture.size()), white, 0.0);
}

void MaskPassesTest::gatheringLeavesTheSourceAlone()
{
    const auto mask = flatMask(0.3F);
    MaskGatherPass pass(mask->currentState());
    QOpenGLFramebufferObject source(testPictureSize);
    fill(&source, translucentPicture());
    pass.gather(&source);
    KORVEL_COMPARE_PICTURES(readBack(&source), translucentPicture(), 0.0);
}

void MaskPassesTest::theOverlayFindsNoAttributesAndIsDrawnNevertheless()
{
    const auto mask = flatMask(0.0F);
    MaskGatherPass gatherPass(mask->currentState());
    MaskRenderPass pass;
    QVERIFY(pass.isLinked());
    QCOMPARE(pass.attributeLocation("a_Vertex"), -1);
    QCOMPARE(pass.attributeLocation("a_TexCoord"), -1);
    QOpenGLFramebufferObject target(testPictureSize);
    fill(&target, opaquePicture());
    gatherPass.gather(&target);
    // The quad before may have shown a part of its texture only.
    Texture texture(opaquePicture());
    target.bind();
    BasePass::shared()->draw(&texture, QRectF(0.25, 0.25, 0.5, 0.5));
    BasePass::shared()->draw(&texture, wholeTexture);
    target.release();
    pass.draw(&target, &gatherPass);
    KORVEL_COMPARE_PICTURES(readBack(&target),
                            underOverlay(opaquePicture(),
                                         [](int, int) {
                                             return LevelRange{0.0, 0.0};
                                         }),
                            roundingTolerance);
    QVERIFY(m_gl->context()->functions()->glIsEnabled(GL_BLEND));
}

void MaskPassesTest::theOverlayIsRedWhereTheMaskLetsLittleThrough()
{
    const MaskCase mask = maskCases(ModelMaskKind::Distance).first();
    const std::unique_ptr<AlphaMask> object = mask.create();
    for (const QImage &picture : {opaquePicture(), translucentPicture()}) {
        m_guard = nullptr;
        m_guard = std::make_unique<GlStateGuard>();
        QOpenGLFramebufferObject target(picture.size());
        fill(&target, picture);
        MaskGatherPass gatherPass(object->currentState());
        gatherPass.gather(&target);
        MaskRenderPass().draw(&target, &gatherPass);
        const ExpectedPixel gathered = modelMaskPicture(mask.model(), opaquePicture());
        KORVEL_COMPARE_PICTURES(
            readBack(&target),
            underOverlay(picture, [&](int x, int y) { return gathered(x, y)[3]; }),
            roundingTolerance);
    }
}

void MaskPassesTest::theOverlayNeedsAGatheredMask()
{
    const auto mask = flatMask(0.0F);
    const MaskGatherPass gatherPass(mask->currentState());
    QOpenGLFramebufferObject target(testPictureSize);
    fill(&target, opaquePicture());
    MaskRenderPass().draw(&target, &gatherPass);
    KORVEL_COMPARE_PICTURES(readBack(&target), opaquePicture(), 0.0);
}

KORVEL_TEST_MAIN(MaskPassesTest)
#include "tst_maskpasses.moc"
