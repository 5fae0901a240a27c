#include "imagefx/quick/PixelBuffer.h"
#include "imagefx/render/BasePass.h"
#include "imagefx/render/GlStateGuard.h"
#include "imagefx/render/TextureUnits.h"
#include "tests/quick/FrameWatch.h"
#include "tests/quick/GlSnapshot.h"
#include "tests/quick/QuickScene.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TestMain.h"

#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>
#include <QtGui/QPainter>

#include <array>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr double none = 0.0;

// Too wide for the texture atlas, in which a picture would have neighbours.
constexpr QSize pictureSize(300, 30);
constexpr QSize windowSize(160, 120);
// Of the item in question, in the window.
constexpr QRect place(60, 40, 40, 40);

QImage maskPicture()
{
    QImage image(pictureSize, QImage::Format_RGBA8888);
    QPainter painter(&image);
    QLinearGradient gradient(0, 0, image.width(), 0);
    gradient.setColorAt(0, Qt::black);
    gradient.setColorAt(1, Qt::red);
    painter.fillRect(image.rect(), gradient);
    return image;
}

void addPictures(QuickScene &scene)
{
    scene.addPicture("photo", opaquePicture(pictureSize));
    scene.addPicture("mask", maskPicture());
}

// Items of every kind around those in the middle.
QByteArray surroundings(const QByteArray &middle)
{
    return "import '" + QUrl::fromLocalFile(KORVEL_QUICK_TESTS).toEncoded() +
           "'\nSurroundings { id: all; " + middle + " }";
}

QImage without(const QImage &picture, const QRect &rect)
{
    QImage rest = picture;
    QPainter painter(&rest);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(rect, Qt::transparent);
    return rest;
}

const char *const everything = "EverythingBuffer { }";

// Leaves a state in which nothing could be drawn before the frame of a window, looks at it when the
// items have rendered, and cleans up, since the scene graph itself could not draw so.
class Disturbance
{
public:
    explicit Disturbance(QQuickWindow *window) : m_window(window)
    {
        // Before any item of the window listens to the same signal ...
        QObject::connect(
            window, &QQuickWindow::beforeRendering, &m_context, [this] { disturb(); },
            Qt::DirectConnection);
        // ... and after all of them.
        QObject::connect(
            window, &QQuickWindow::afterSynchronizing, &m_context, [this] { listen(); },
            Qt::DirectConnection);
    }

    // To be asked when the window draws no more.
    int frames() const { return m_frames; }
    QStringList differences() const { return m_differences; }

private:
    void disturb()
    {
        m_odd = std::make_unique<OddState>();
        m_odd->set(false);
        m_before = snapshot();
    }

    void listen()
    {
        if (!m_listening) {
            m_listening = true;
            QObject::connect(
                m_window, &QQuickWindow::beforeRendering, &m_context, [this] { compare(); },
                Qt::DirectConnection);
        }
    }

    void compare()
    {
        ++m_frames;
        const QString found = difference(snapshot(), m_before);
        if (!found.isEmpty()) {
            m_differences.append(QStringLiteral("frame %1: %2").arg(m_frames).arg(found));
        }
        m_odd.reset();
        m_window->resetOpenGLState();
        QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
        gl->glBlendEquation(GL_FUNC_ADD);
        gl->glCullFace(GL_BACK);
    }

    QQuickWindow *const m_window;
    QObject m_context;
    std::unique_ptr<OddState> m_odd;
    GlSnapshot m_before;
    bool m_listening = false;
    int m_frames = 0;
    QStringList m_differences;
};

} // namespace

class PixelBufferStateTest : public QObject
{
    Q_OBJECT

private slots:
    // The items around it

    void whateverSurroundsTheItemLooksAsWithoutIt_data()
    {
        QTest::addColumn<QByteArray>("middle");
        QTest::newRow("no source") << QByteArray("PixelBuffer { objectName: 'buffer'\n"
                                                 "width: 40; height: 40 }");
        QTest::newRow("no effects") << QByteArray("PixelBuffer { objectName: 'buffer'\n"
                                                  "width: 40; height: 40; sourceItem: all.photo }");
        QTest::newRow("every pass") << QByteArray(everything);
        QTest::newRow("a layer as the source")
            << QByteArray("EverythingBuffer { sourceItem: layered }\n"
                          "Item { id: layered; width: 40; height: 40; layer.enabled: true\n"
                          "visible: false; Rectangle { anchors.fill: parent; color: 'teal' }\n"
                          "Text { text: 'layer' } }");
    }
    void whateverSurroundsTheItemLooksAsWithoutIt()
    {
        QFETCH(QByteArray, middle);
        constexpr int pictures = 8;
        QList<QImage> expected;
        {
            QuickScene scene(windowSize, Qt::white);
            addPictures(scene);
            const FrameWatch watch(scene.window(), pictures);
            KORVEL_SHOW(scene, surroundings("Item { }"));
            QVERIFY(QTest::qWaitFor([&] {
                scene.window()->update();
                return watch.frames() >= pictures;
            }));
            expected = watch.pictures();
            scene.window()->hide();
        }
        QuickScene scene(windowSize, Qt::white);
        addPictures(scene);
        const FrameWatch watch(scene.window(), pictures);
        KORVEL_SHOW(scene, surroundings(middle));
        auto *buffer = scene.find<PixelBuffer>("buffer");
        QVERIFY(QTest::qWaitFor([&] {
            buffer->update();
            return watch.frames() >= pictures;
        }));
        const QList<QImage> actual = watch.pictures();
        QCOMPARE(scene.warnings(), QStringList());
        scene.window()->hide();
        QCOMPARE(watch.glErrors(), QStringList());
        QCOMPARE(expected.size(), pictures);
        QCOMPARE(actual.size(), pictures);
        for (int i = 0; i < pictures; ++i) {
            KORVEL_COMPARE_PICTURES(without(actual.at(i), place), without(expected.at(i), place),
                                    none);
        }
    }

    void textThatIsNewAfterTheItemWasDrawnIsDrawnRight()
    {
        QImage expected;
        for (const char *middle : {"Item { }", everything}) {
            QuickScene scene(windowSize, Qt::white);
            addPictures(scene);
            KORVEL_SHOW(scene, surroundings(QByteArray(middle) +
                                            "\nText { objectName: 'text'; y: 40; x: -50 }"));
            for (const char *text : {"glyphs", "of many QWERTZ", "Kinds & SIZES 0123456789"}) {
                scene.item("text")->setProperty("text", text);
                if (auto *buffer = scene.find<PixelBuffer>("buffer")) {
                    buffer->update();
                }
                QVERIFY(scene.settle());
            }
            const QImage picture = without(scene.grab(), place);
            if (expected.isNull()) {
                expected = picture;
            }
            KORVEL_COMPARE_PICTURES(picture, expected, none);
        }
    }

    // The state itself

    void renderingGivesBackTheStateItFoundAndDrawsDespiteIt_data()
    {
        QTest::addColumn<QByteArray>("middle");
        QTest::newRow("no source") << QByteArray("PixelBuffer { objectName: 'buffer'\n"
                                                 "width: 40; height: 40 }");
        QTest::newRow("every pass") << QByteArray(everything);
    }
    void renderingGivesBackTheStateItFoundAndDrawsDespiteIt()
    {
        QFETCH(QByteArray, middle);
        QImage expected;
        {
            QuickScene scene(windowSize, Qt::white);
            addPictures(scene);
            KORVEL_SHOW(scene, surroundings(middle));
            expected = scene.grab();
        }
        QuickScene scene(windowSize, Qt::white);
        addPictures(scene);
        const Disturbance disturbance(scene.window());
        const FrameWatch watch(scene.window());
        KORVEL_SHOW(scene, surroundings(middle));
        auto *buffer = scene.find<PixelBuffer>("buffer");
        for (int i = 0; i < 3; ++i) {
            buffer->update();
            QVERIFY(scene.settle());
        }
        buffer->update();
        const QImage actual = scene.grab();
        scene.window()->hide();
        QVERIFY(disturbance.frames() > 8);
        QCOMPARE(disturbance.differences().join('\n'), QString());
        QCOMPARE(watch.glErrors(), QStringList());
        KORVEL_COMPARE_PICTURES(actual, expected, none);
    }

    void synchronizingGivesBackTheStateItFound()
    {
        QuickScene scene(windowSize, Qt::white);
        addPictures(scene);
        GlSnapshot before;
        QStringList differences;
        int frames = 0;
        std::unique_ptr<OddState> odd;
        QObject context;
        connect(
            scene.window(), &QQuickWindow::beforeSynchronizing, &context,
            [&] {
                odd = std::make_unique<OddState>();
                odd->set(false);
                before = snapshot();
                // The scene graph's own uploads go there.
                before.remove("texture of unit 0");
            },
            Qt::DirectConnection);
        connect(
            scene.window(), &QQuickWindow::afterSynchronizing, &context,
            [&] {
                const QString found = difference(snapshot(), before);
                differences += found.isEmpty() ? QStringList() : QStringList(found);
                ++frames;
                scene.window()->resetOpenGLState();
                QOpenGLContext::currentContext()->functions()->glBlendEquation(GL_FUNC_ADD);
                QOpenGLContext::currentContext()->functions()->glCullFace(GL_BACK);
                odd.reset();
            },
            Qt::DirectConnection);
        KORVEL_SHOW(scene, surroundings(everything));
        // In the first frame Qt Quick sets up its glyphs, and the renderer compiles its programs.
        differences.clear();
        auto *buffer = scene.find<PixelBuffer>("buffer");
        for (int size = 41; size < 44; ++size) {
            buffer->setWidth(size);
            QVERIFY(scene.settle());
        }
        scene.window()->hide();
        QVERIFY(frames > 8);
        QCOMPARE(differences.join('\n'), QString());
    }

    // The guard

    void theGuardGivesBackWhateverIsSetUnderIt_data()
    {
        QTest::addColumn<bool>("attributeArrays");
        QTest::newRow("attribute arrays enabled") << true;
        QTest::newRow("attribute arrays disabled") << false;
    }
    void theGuardGivesBackWhateverIsSetUnderIt()
    {
        QFETCH(bool, attributeArrays);
        OffscreenGl gl;
        QVERIFY(gl.isValid());
        OddState odd;
        odd.set(attributeArrays);
        const GlSnapshot before = snapshot();
        {
            const GlStateGuard guard;
            useEverything(gl.context()->functions());
            QVERIFY(!difference(snapshot(), before).isEmpty());
        }
        QCOMPARE(difference(snapshot(), before), QString());
        QCOMPARE(gl.context()->functions()->glGetError(), GLenum(GL_NO_ERROR));
    }

    void theGuardGivesBackTheUsualStateToo()
    {
        OffscreenGl gl;
        QVERIFY(gl.isValid());
        const GlSnapshot before = snapshot();
        {
            const GlStateGuard guard;
            QCOMPARE(difference(snapshot(), before), QString());
            OddState odd;
            odd.set(true);
            // What the passes never touch, and the guard does not either.
            gl.context()->functions()->glScissor(
                int(before["scissor box"][0]), int(before["scissor box"][1]),
                int(before["scissor box"][2]), int(before["scissor box"][3]));
            gl.context()->functions()->glStencilFunc(GL_ALWAYS, 0, 0xff);
            gl.context()->functions()->glDepthFunc(GL_LESS);
            gl.context()->functions()->glCullFace(GL_BACK);
            gl.context()->functions()->glActiveTexture(GL_TEXTURE3);
            gl.context()->functions()->glBindTexture(GL_TEXTURE_2D, 0);
        }
        QCOMPARE(difference(snapshot(), before), QString());
    }

    void unitZeroIsActiveAfterTheGuard()
    {
        OffscreenGl gl;
        QVERIFY(gl.isValid());
        gl.context()->functions()->glActiveTexture(GL_TEXTURE6);
        {
            const GlStateGuard guard;
        }
        QCOMPARE(snapshot().value("active texture"), QVector<double>({double(GL_TEXTURE0)}));
    }

    void underTheGuardNoTestKeepsAPassFromDrawing()
    {
        OffscreenGl gl;
        QVERIFY(gl.isValid());
        const QImage photo = opaquePicture();
        const GLuint texture = uploadRgba(photo);
        QOpenGLFramebufferObject target(photo.size(),
                                        QOpenGLFramebufferObject::CombinedDepthStencil);
        target.bind();
        gl.context()->functions()->glViewport(0, 0, photo.width(), photo.height());
        OddState odd;
        odd.set(false);
        {
            const GlStateGuard guard;
            BasePass::shared()->draw(texture, QRectF(0, 0, 1, 1));
        }
        gl.context()->functions()->glDisable(GL_SCISSOR_TEST);
        KORVEL_COMPARE_PICTURES(readBack(&target), photo, none);
        gl.context()->functions()->glDeleteTextures(1, &texture);
    }

private:
    // As the passes do, and more of it.
    static void useEverything(QOpenGLFunctions *gl)
    {
        gl->glEnable(GL_BLEND);
        gl->glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE,
                                GL_ONE_MINUS_SRC_ALPHA);
        gl->glBlendEquation(GL_FUNC_ADD);
        gl->glClearColor(0.0F, 0.0F, 0.0F, 0.0F);
        for (const int unit : {sourceUnit, tableUnit, hueTableUnit, maskGradientUnit}) {
            bindTexture(unit, 0);
        }
        gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
        gl->glEnableVertexAttribArray(0);
        gl->glEnableVertexAttribArray(1);
        gl->glUseProgram(0);
    }
};

KORVEL_TEST_MAIN(PixelBufferStateTest)

#include "tst_pixelbufferstate.moc"
