#include "imagefx/render/BasePass.h"
#include "imagefx/render/DefaultImageEffectPass.h"
#include "imagefx/render/PixelBufferState.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TestEffect.h"
#include "tests/support/TestMain.h"

#include <QtCore/QMetaObject>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>

#include <memory>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr double exactly = 0.0;

QImage colourfulPicture(const QSize &size)
{
    QImage image(size, QImage::Format_RGBA8888);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const int alpha = (x * 7 + y * 3) % 256;
            // Premultiplied, as the bytes are taken.
            image.setPixel(x, y, qRgba(x * alpha / 255 % 256, alpha / 2, y % (alpha + 1), alpha));
        }
    }
    return image;
}

class Texture
{
public:
    explicit Texture(const QImage &image) : m_id(uploadRgba(image)) {}
    ~Texture() { QOpenGLContext::currentContext()->functions()->glDeleteTextures(1, &m_id); }
    Q_DISABLE_COPY(Texture)
    GLuint id() const { return m_id; }

private:
    GLuint m_id;
};

} // namespace

class PassesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_gl.isValid()); }

    void everyProgramHasItsAttributesAtTheFixedLocations()
    {
        const BasePass base;
        QVERIFY(base.isLinked());
        QCOMPARE(base.attributeLocation("a_vertex"), 0);
        QCOMPARE(base.attributeLocation("a_texCoord"), 1);
        TestEffect effect;
        const auto pass = effect.currentState()->effectPass(&m_pbs);
        QVERIFY(pass->isLinked());
        QCOMPARE(pass->attributeLocation("a_vertex"), 0);
        QCOMPARE(pass->attributeLocation("a_texCoord"), 1);
    }

    void passesHaveMetaObjectsOfTheirOwn()
    {
        QCOMPARE(QLatin1String(DefaultImageEffectPass::staticMetaObject.className()),
                 QLatin1String("ko::imagefx::DefaultImageEffectPass"));
        QCOMPARE(DefaultImageEffectPass::staticMetaObject.superClass(),
                 &ImageEffectPass::staticMetaObject);
    }

    void shadersAreChildrenOfTheirProgram()
    {
        const BasePass base;
        QCOMPARE(base.shaders().size(), 2);
        for (const QOpenGLShader *shader : base.shaders()) {
            QCOMPARE(shader->parent(), &base);
        }
    }

    void basePassCopiesATextureToThePixel_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("64 x 48") << QSize(64, 48);
        QTest::newRow("odd") << QSize(97, 61);
        QTest::newRow("one pixel") << QSize(1, 1);
        QTest::newRow("one row") << QSize(300, 1);
        QTest::newRow("one column") << QSize(1, 300);
    }

    void basePassCopiesATextureToThePixel()
    {
        QFETCH(QSize, size);
        const QImage image = colourfulPicture(size);
        const Texture texture(image);
        QOpenGLFramebufferObject target(size, GL_TEXTURE_2D);
        prepare(&target);
        BasePass base;
        base.draw(texture.id(), QRectF(0, 0, 1, 1));
        KORVEL_COMPARE_PICTURES(readBack(&target), image, exactly);
    }

    void basePassStretchesAPart()
    {
        const QColor a(255, 0, 0);
        const QColor b(0, 255, 0);
        const QColor c(0, 0, 255);
        const QColor d(255, 255, 0);
        const Texture texture(picture({{a, b}, {c, d}}));
        BasePass base;
        QOpenGLFramebufferObject target(2, 2, GL_TEXTURE_2D);
        prepare(&target);
        base.draw(texture.id(), QRectF(0.5, 0, 0.5, 1));
        KORVEL_COMPARE_PICTURES(readBack(&target), picture({{b, b}, {d, d}}), exactly);
        // The smaller y is row 0, the framebuffer's bottom.
        prepare(&target);
        base.draw(texture.id(), QRectF(0, 0, 1, 0.5));
        KORVEL_COMPARE_PICTURES(readBack(&target), picture({{a, b}, {a, b}}), exactly);
    }

    void basePassDrawsTheTextureBoundOnUnitZero()
    {
        const Texture texture(picture({{Qt::magenta}}));
        QOpenGLFramebufferObject target(1, 1, GL_TEXTURE_2D);
        prepare(&target);
        QOpenGLFunctions *gl = m_gl.context()->functions();
        gl->glActiveTexture(GL_TEXTURE0);
        gl->glBindTexture(GL_TEXTURE_2D, texture.id());
        BasePass base;
        base.draw(QRectF(0, 0, 1, 1));
        KORVEL_COMPARE_PICTURES(readBack(&target), picture({{Qt::magenta}}), exactly);
    }

    void basePassLeavesFramebufferAndViewportAlone()
    {
        const Texture texture(picture({{Qt::cyan}}));
        QOpenGLFramebufferObject target(2, 1, GL_TEXTURE_2D);
        prepare(&target);
        m_gl.context()->functions()->glViewport(0, 0, 1, 1);
        BasePass base;
        base.draw(texture.id(), QRectF(0, 0, 1, 1));
        QVERIFY(target.isBound());
        KORVEL_COMPARE_PICTURES(readBack(&target), picture({{Qt::cyan, Qt::transparent}}), exactly);
    }

    void basePassIsSharedWhileSomeoneHoldsIt()
    {
        auto first = BasePass::shared();
        QCOMPARE(BasePass::shared(), first);
        const QWeakPointer<BasePass> weak = first;
        first.reset();
        QVERIFY(weak.isNull());
        QVERIFY(BasePass::shared());
    }

    void basePassIsNotSharedBetweenContexts()
    {
        const auto here = BasePass::shared();
        {
            OffscreenGl other;
            QVERIFY(other.isValid());
            QVERIFY(BasePass::shared() != here);
        }
        QVERIFY(m_gl.makeCurrent());
    }

    void defaultPassDrawsIntoTheTargetAndLeavesNothingBound()
    {
        QOpenGLFunctions *gl = m_gl.context()->functions();
        const QImage image = picture({{Qt::red, Qt::green}, {Qt::blue, Qt::white}});
        const Texture texture(image);
        QOpenGLFramebufferObject source(image.size(), GL_TEXTURE_2D);
        QOpenGLFramebufferObject target(image.size(), GL_TEXTURE_2D);
        prepare(&source);
        BasePass().draw(texture.id(), QRectF(0, 0, 1, 1));
        source.release();
        TestEffect effect(TestEffect::pieceOf("colorSample.gbr"), QStringLiteral("passes.Rotate"));
        const auto state = effect.currentState();
        const auto pass = state->effectPass(&m_pbs);
        gl->glActiveTexture(GL_TEXTURE3);
        pass->render({&source, &target}, state.data(), &m_pbs);
        QVERIFY(!target.isBound());
        GLint value = -1;
        gl->glGetIntegerv(GL_CURRENT_PROGRAM, &value);
        QCOMPARE(value, 0);
        gl->glGetIntegerv(GL_ACTIVE_TEXTURE, &value);
        QCOMPARE(value, GL_TEXTURE0);
        KORVEL_COMPARE_PICTURES(readBack(&target),
                                picture({{Qt::blue, Qt::red}, {Qt::green, Qt::white}}), exactly);
    }

    // A pass without attributes of its own draws with what the one before it left.
    void attributeArraysStayEnabled()
    {
        const Texture texture(picture({{Qt::red}}));
        QOpenGLFramebufferObject target(1, 1, GL_TEXTURE_2D);
        prepare(&target);
        QOpenGLFunctions *gl = m_gl.context()->functions();
        gl->glDisableVertexAttribArray(0);
        gl->glDisableVertexAttribArray(1);
        BasePass base;
        base.draw(texture.id(), QRectF(0, 0, 1, 1));
        for (const GLuint location : {0U, 1U}) {
            GLint enabled = 0;
            gl->glGetVertexAttribiv(location, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &enabled);
            QCOMPARE(enabled, GL_TRUE);
        }
        target.release();
    }

    void boundVertexBufferDoesNotDisturbTheQuad()
    {
        QOpenGLFunctions *gl = m_gl.context()->functions();
        GLuint buffer = 0;
        gl->glGenBuffers(1, &buffer);
        gl->glBindBuffer(GL_ARRAY_BUFFER, buffer);
        gl->glBufferData(GL_ARRAY_BUFFER, 4, nullptr, GL_STATIC_DRAW);
        const Texture texture(picture({{Qt::yellow}}));
        QOpenGLFramebufferObject target(1, 1, GL_TEXTURE_2D);
        prepare(&target);
        BasePass base;
        base.draw(texture.id(), QRectF(0, 0, 1, 1));
        gl->glDeleteBuffers(1, &buffer);
        KORVEL_COMPARE_PICTURES(readBack(&target), picture({{Qt::yellow}}), exactly);
    }

    void programThatDidNotLinkDrawsNothing()
    {
        const Texture texture(picture({{Qt::red}}));
        QOpenGLFramebufferObject source(1, 1, GL_TEXTURE_2D);
        QOpenGLFramebufferObject target(1, 1, GL_TEXTURE_2D);
        prepare(&source);
        BasePass().draw(texture.id(), QRectF(0, 0, 1, 1));
        prepare(&target);
        m_gl.context()->functions()->glClearColor(0, 0, 1, 1);
        m_gl.context()->functions()->glClear(GL_COLOR_BUFFER_BIT);
        target.release();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("error")));
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(QStringLiteral("Problematic Fragment")));
        TestEffect effect("this is no shader\n", QStringLiteral("passes.Broken"));
        const auto state = effect.currentState();
        const auto pass = state->effectPass(&m_pbs);
        QVERIFY(!pass->isLinked());
        // Silent from here on: it is not linked again with every frame.
        QCOMPARE(state->effectPass(&m_pbs), pass);
        pass->render({&source, &target}, state.data(), &m_pbs);
        QVERIFY(!target.isBound());
        KORVEL_COMPARE_PICTURES(readBack(&target), picture({{Qt::blue}}), exactly);
        QCOMPARE(m_gl.context()->functions()->glGetError(), GLenum(GL_NO_ERROR));
    }

private:
    void prepare(QOpenGLFramebufferObject *framebuffer)
    {
        QOpenGLFunctions *gl = m_gl.context()->functions();
        framebuffer->bind();
        gl->glViewport(0, 0, framebuffer->width(), framebuffer->height());
        gl->glDisable(GL_BLEND);
        gl->glClearColor(0, 0, 0, 0);
        gl->glClear(GL_COLOR_BUFFER_BIT);
    }

    OffscreenGl m_gl;
    const PixelBufferState m_pbs{};
};

KORVEL_TEST_MAIN(PassesTest)

#include "tst_passes.moc"
