#include "imagefx/render/TableTexture.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/TestMain.h"

#include <QtGui/QOpenGLFunctions>
#include <QtTest/QTest>

#include <memory>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr int unit = 3;

QOpenGLFunctions *gl()
{
    return QOpenGLContext::currentContext()->functions();
}

GLuint boundTexture()
{
    GLint texture = 0;
    gl()->glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
    return GLuint(texture);
}

// The bytes of the bound texture as red, green and blue; empty when it cannot be read.
QByteArray texels(int width)
{
    GLuint framebuffer = 0;
    gl()->glGenFramebuffers(1, &framebuffer);
    gl()->glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl()->glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D,
                                 boundTexture(), 0);
    QByteArray rgba(4 * width, '\0');
    gl()->glReadPixels(0, 0, width, 1, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
    gl()->glBindFramebuffer(GL_FRAMEBUFFER, 0);
    gl()->glDeleteFramebuffers(1, &framebuffer);
    QByteArray rgb;
    for (int i = 0; i < width && gl()->glGetError() == GL_NO_ERROR; ++i) {
        rgb += rgba.mid(4 * i, 3);
    }
    return rgb;
}

void setTexels(TableTexture *table, const QByteArray &rgb)
{
    table->setTexels(reinterpret_cast<const uchar *>(rgb.constData()), int(rgb.size()) / 3);
}

} // namespace

// A table that several contexts show, which share nothing.
class TableTextureTest : public QObject
{
    Q_OBJECT

private slots:
    void everyContextHasTheTexels()
    {
        OffscreenGl first;
        TableTexture table(unit, GL_RGB);
        setTexels(&table, "abcdef");
        QCOMPARE(texels(2), QByteArray("abcdef"));
        OffscreenGl second;
        QVERIFY(first.isValid() && second.isValid());
        table.bind();
        QCOMPARE(texels(2), QByteArray("abcdef"));

        // New ones reach the other context, too.
        setTexels(&table, "uvwxyz012");
        QCOMPARE(texels(3), QByteArray("uvwxyz012"));
        QVERIFY(first.makeCurrent());
        table.bind();
        QCOMPARE(texels(3), QByteArray("uvwxyz012"));
    }

    // Two windows that show an effect in turns cost no texture at every turn.
    void everyContextKeepsOneTexture()
    {
        OffscreenGl first;
        TableTexture table(unit, GL_RGB);
        setTexels(&table, "abc");
        const GLuint inFirst = boundTexture();
        OffscreenGl second;
        QVERIFY(first.isValid() && second.isValid());
        table.bind();
        const GLuint inSecond = boundTexture();
        for (int i = 0; i < 3; ++i) {
            QVERIFY(first.makeCurrent());
            table.bind();
            QCOMPARE(boundTexture(), inFirst);
            QVERIFY(second.makeCurrent());
            table.bind();
            QCOMPARE(boundTexture(), inSecond);
        }
    }

    void contextsOfOneGroupShareIt()
    {
        OffscreenGl first;
        TableTexture table(unit, GL_RGB);
        setTexels(&table, "abc");
        const GLuint texture = boundTexture();
        OffscreenGl second(QSurfaceFormat(), first.context());
        QVERIFY(first.isValid() && second.isValid());
        table.bind();
        QCOMPARE(boundTexture(), texture);
        QCOMPARE(texels(1), QByteArray("abc"));
    }

    void itOutlivesItsContexts()
    {
        auto first = std::make_unique<OffscreenGl>();
        TableTexture table(unit, GL_RGB);
        setTexels(&table, "abcdef");
        for (int i = 0; i < 3; ++i) {
            first.reset();
            first = std::make_unique<OffscreenGl>();
            QVERIFY(first->isValid());
            table.bind();
            QCOMPARE(texels(2), QByteArray("abcdef"));
        }
    }

    void itGoesWithItsTexture()
    {
        OffscreenGl first;
        QVERIFY(first.isValid());
        GLuint texture = 0;
        {
            TableTexture table(unit, GL_RGB);
            setTexels(&table, "abc");
            texture = boundTexture();
            QVERIFY(gl()->glIsTexture(texture));
        }
        QVERIFY(!gl()->glIsTexture(texture));
    }
};

KORVEL_TEST_MAIN(TableTextureTest)

#include "tst_tabletexture.moc"
