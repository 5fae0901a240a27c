#include "engine/EffectEngine.h"
#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/effects/SharpenImageEffect.h"
#include "imagefx/model/DistanceAlphaMask.h"
#include "tests/engine/EngineTester.h"
#include "tests/support/EffectCases.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/PictureTester.h"
#include "tests/support/RandomStack.h"
#include "tests/support/TestEffect.h"
#include "tests/support/TestMain.h"

#include <QtCore/QThread>

#include <atomic>
#include <cstring>
#include <limits>
#include <thread>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr unsigned firstSeed = 9000001;
constexpr int never = -1;

// A picture's rows, which end before row number `failing`.
class PictureRows : public RowSource
{
public:
    explicit PictureRows(const QImage &picture, int failing = never)
        : m_picture(picture), m_failing(failing)
    {
    }

    bool read(uchar *rows, std::ptrdiff_t stride, int count) override
    {
        onlyHere = onlyHere && QThread::currentThread() == m_thread;
        asked = asked && count > 0 && given + count <= m_picture.height() && !ended;
        if (!asked || (m_failing != never && given + count > m_failing)) {
            ended = true;
            return false;
        }
        for (int i = 0; i < count; ++i) {
            std::memcpy(rows + i * stride, m_picture.constScanLine(given++),
                        size_t(4) * size_t(m_picture.width()));
        }
        return true;
    }

    int given = 0;
    bool ended = false;
    // Whether every call was in order: in range, and none after an end.
    bool asked = true;
    bool onlyHere = true;

private:
    const QImage m_picture;
    const int m_failing;
    const QThread *const m_thread = QThread::currentThread();
};

// Collects rows until it has had `failing` of them.
class CollectedRows : public RowSink
{
public:
    explicit CollectedRows(const QSize &size, int failing = never)
        : picture(size, QImage::Format_RGBA8888), m_failing(failing)
    {
    }

    bool write(const uchar *row) override
    {
        onlyHere = onlyHere && QThread::currentThread() == m_thread;
        asked = asked && taken < picture.height() && !ended;
        if (!asked || taken == m_failing) {
            ended = true;
            return false;
        }
        std::memcpy(picture.scanLine(taken++), row, size_t(4) * size_t(picture.width()));
        return true;
    }

    QImage picture;
    int taken = 0;
    bool ended = false;
    bool asked = true;
    bool onlyHere = true;

private:
    const int m_failing;
    const QThread *const m_thread = QThread::currentThread();
};

// Neighbours in both directions, point effects before and behind, and a batch.
OwnedEffects tallStack()
{
    const QVector<EngineCase> cases = engineCases();
    QList<ImageEffect *> effects;
    for (const int number : {5, 8, 3, 10, 9, 6}) {
        effects.append(cases.at(number).create().release());
    }
    return OwnedEffects(effects);
}

} // namespace

// Has the id of a kind of the library's own, but may draw otherwise.
class DerivedFill : public ColorFillImageEffect
{
    Q_OBJECT
};

// What EffectEngine promises beside its pictures.
class EngineInterfaceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noEffectsCopyThePicture();
    void aNullPictureStaysNull();
    void everyImageFormatIsDrawnAsGlDrawsIt_data();
    void everyImageFormatIsDrawnAsGlDrawsIt();
    void kindsOfOthersAreRefused();
    void masksOfOthersAreRefused();
    void derivedKindsAreRefused();
    void effectsMayGoBeforeTheRendering();
    void effectsMayChangeBeforeTheRendering();
    void anEngineCanBeMoved();
    void threadsDrawTheSameBytes();
    void manyThreadsMayRenderAtOnce();
    void rowsInAndOutAreThePicture_data();
    void rowsInAndOutAreThePicture();
    void opaqueRowsAreDrawnLikeTranslucentOnesOfFullAlpha();
    void aSourceThatEndsEndsTheRendering();
    void aSinkThatEndsEndsTheRendering();
    void anEmptySizeIsNoPicture();
    void picturesBeyondWhatGlCanHold();
    void aWidthWithoutEndIsRefused();
    void reachesBeyondStripsAndBands_data();
    void reachesBeyondStripsAndBands();
    void unknownBlendModesLeaveThePicture();
    void aResultCanBeDrawnOnceMore();
};

void EngineInterfaceTest::noEffectsCopyThePicture()
{
    const EffectEngine engine({});
    QCOMPARE(engine.unsupported(), QString());
    const QImage translucent = translucentPicture();
    QCOMPARE(engine.render(translucent).format(), QImage::Format_RGBA8888_Premultiplied);
    QCOMPARE(renderWithEngine({}, translucent), translucent);
    QImage opaque(7, 5, QImage::Format_RGB32);
    opaque.fill(QColor(1, 200, 30));
    QCOMPARE(engine.render(opaque).format(), QImage::Format_RGBX8888);
    QCOMPARE(engine.render(opaque).convertToFormat(QImage::Format_RGB32), opaque);
}

void EngineInterfaceTest::aNullPictureStaysNull()
{
    QVERIFY(EffectEngine({}).render(QImage()).isNull());
    const OwnedEffects effects = tallStack();
    QVERIFY(EffectEngine(effects.list()).render(QImage()).isNull());
}

void EngineInterfaceTest::everyImageFormatIsDrawnAsGlDrawsIt_data()
{
    QTest::addColumn<int>("format");
    QTest::newRow("RGB32") << int(QImage::Format_RGB32);
    QTest::newRow("ARGB32") << int(QImage::Format_ARGB32);
    QTest::newRow("ARGB32, premultiplied") << int(QImage::Format_ARGB32_Premultiplied);
    QTest::newRow("RGBA8888, premultiplied") << int(QImage::Format_RGBA8888_Premultiplied);
    QTest::newRow("RGB888") << int(QImage::Format_RGB888);
    QTest::newRow("grey") << int(QImage::Format_Grayscale8);
    QTest::newRow("palette") << int(QImage::Format_Indexed8);
    QTest::newRow("one bit") << int(QImage::Format_Mono);
    QTest::newRow("16 bits a channel") << int(QImage::Format_RGBA64);
    QTest::newRow("RGB565") << int(QImage::Format_RGB16);
}

// 61 pixels of three bytes need padding behind each row.
void EngineInterfaceTest::everyImageFormatIsDrawnAsGlDrawsIt()
{
    QFETCH(int, format);
    const OffscreenGl gl;
    QVERIFY(gl.isValid());
    const QImage source = translucentPicture().convertToFormat(QImage::Format(format));
    const std::unique_ptr<ImageEffect> effect = engineCases().at(5).create();
    EngineTester tester(EngineTester::onePass);
    KORVEL_CHECK(tester.compare(renderWithEngine({effect.get()}, source),
                                renderImage({effect.get()}, source)));
}

void EngineInterfaceTest::kindsOfOthersAreRefused()
{
    const QString id = QStringLiteral("test.Effect");
    TestEffect other;
    ColorFillImageEffect fill;
    BatchImageEffect batch;
    batch.setImageEffectList({&fill, &other});
    const QImage source = opaquePicture({3, 2});
    for (const QList<ImageEffect *> &effects :
         {QList<ImageEffect *>{&other}, {&fill, &other}, {&other, &fill}, {&batch}}) {
        const EffectEngine engine(effects);
        QCOMPARE(engine.unsupported(), id);
        QVERIFY(engine.render(source).isNull());
        PictureRows rows(source);
        CollectedRows sink(source.size());
        QVERIFY(!engine.render(source.size(), true, &rows, &sink));
        QCOMPARE(rows.given, 0);
        QCOMPARE(sink.taken, 0);
    }
    QCOMPARE(EffectEngine({&fill}).unsupported(), QString());
}

void EngineInterfaceTest::masksOfOthersAreRefused()
{
    class OtherMask : public AlphaMask
    {
    public:
        OtherMask() : AlphaMask(QStringLiteral("test.Mask"), 0, nullptr) {}

    protected:
        AlphaMaskState *createState() const override { return nullptr; }
    };
    OtherMask mask;
    ColorFillImageEffect fill;
    fill.setAlphaMask(&mask);
    const EffectEngine engine({&fill});
    QCOMPARE(engine.unsupported(), QStringLiteral("test.Mask"));
    QVERIFY(engine.render(opaquePicture({3, 2})).isNull());
}

void EngineInterfaceTest::derivedKindsAreRefused()
{
    DerivedFill derived;
    const EffectEngine engine({&derived});
    QCOMPARE(engine.unsupported(), derived.effectId());
    QVERIFY(engine.render(opaquePicture({3, 2})).isNull());
}

void EngineInterfaceTest::effectsMayGoBeforeTheRendering()
{
    const QImage source = translucentPicture();
    std::unique_ptr<EffectEngine> engine;
    QImage expected;
    {
        const RandomStacks::Stack stack = RandomStacks(firstSeed).next();
        const OwnedEffects effects = tallStack();
        const QList<ImageEffect *> all = stack.effects.list() + effects.list();
        expected = EffectEngine(all).render(source);
        engine = std::make_unique<EffectEngine>(all);
    }
    QVERIFY(!expected.isNull());
    QCOMPARE(engine->render(source), expected);
}

void EngineInterfaceTest::effectsMayChangeBeforeTheRendering()
{
    const QImage source = opaquePicture();
    ColorFillImageEffect fill;
    DistanceAlphaMask mask;
    fill.setAlphaMask(&mask);
    const EffectEngine engine({&fill});
    const QImage expected = engine.render(source);
    fill.setColor(QColor(0, 255, 0));
    fill.setAlpha(0.5F);
    mask.addGradientStop(0.5F, 0.5F);
    QCOMPARE(engine.render(source), expected);
    QVERIFY(EffectEngine({&fill}).render(source) != expected);
}

void EngineInterfaceTest::anEngineCanBeMoved()
{
    const QImage source = opaquePicture();
    const OwnedEffects effects = tallStack();
    EffectEngine engine(effects.list());
    const QImage expected = engine.render(source);
    const EffectEngine moved = std::move(engine);
    QCOMPARE(moved.render(source), expected);
}

void EngineInterfaceTest::threadsDrawTheSameBytes()
{
    const QVector<QSize> sizes = {{1, 1}, {600, 400}, {3, 900}, {2000, 5}, {97, 61}};
    for (int number = 0; number < 40; ++number) {
        const RandomStacks::Stack stack = RandomStacks(firstSeed + unsigned(number)).next();
        const QSize size = number < sizes.size() ? sizes.at(number) : QSize(61, 47);
        const QImage source = number % 2 == 0 ? opaquePicture(size) : translucentPicture(size);
        const QImage expected = renderWithEngine(stack.effects.list(), source, {}, 1);
        QCOMPARE(expected.size(), size);
        for (const int threads : {2, 5, 0}) {
            QVERIFY2(renderWithEngine(stack.effects.list(), source, {}, threads) == expected,
                     qPrintable(QStringLiteral("stack %1, %2 threads").arg(number).arg(threads)));
        }
    }
}

void EngineInterfaceTest::manyThreadsMayRenderAtOnce()
{
    constexpr int renderers = 6;
    const OwnedEffects effects = tallStack();
    EffectEngine::Options options;
    options.threads = 3;
    const EffectEngine engine(effects.list(), options);
    QVector<QImage> sources;
    QVector<QImage> expected;
    for (int i = 0; i < renderers; ++i) {
        const QSize size(50 + 31 * i, 400 - 50 * i);
        sources.append(i % 2 == 0 ? opaquePicture(size) : translucentPicture(size));
        expected.append(engine.render(sources.last()));
    }
    std::vector<std::thread> threads;
    threads.reserve(renderers);
    std::atomic<int> wrong{0};
    for (int i = 0; i < renderers; ++i) {
        threads.emplace_back([&engine, &wrong, source = sources.at(i), wanted = expected.at(i)] {
            for (int round = 0; round < 5; ++round) {
                wrong += engine.render(source) == wanted ? 0 : 1;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    QCOMPARE(wrong.load(), 0);
}

void EngineInterfaceTest::rowsInAndOutAreThePicture_data()
{
    QTest::addColumn<QSize>("size");
    for (const QSize &size : {QSize(1, 1), QSize(61, 47), QSize(700, 3), QSize(2, 1500)}) {
        QTest::addRow("%d x %d", size.width(), size.height()) << size;
    }
}

void EngineInterfaceTest::rowsInAndOutAreThePicture()
{
    QFETCH(QSize, size);
    const OwnedEffects effects = tallStack();
    for (const int threads : {1, 3}) {
        EffectEngine::Options options;
        options.threads = threads;
        const EffectEngine engine(effects.list(), options);
        const QImage source = translucentPicture(size);
        PictureRows rows(source);
        CollectedRows sink(size);
        QVERIFY(engine.render(size, false, &rows, &sink));
        QCOMPARE(sink.picture, renderWithEngine(effects.list(), source));
        QCOMPARE(rows.given, size.height());
        QCOMPARE(sink.taken, size.height());
        QVERIFY(rows.asked && sink.asked);
        QVERIFY(rows.onlyHere && sink.onlyHere);
    }
}

// The promise makes it faster, and a rounding may go the other way.
void EngineInterfaceTest::opaqueRowsAreDrawnLikeTranslucentOnesOfFullAlpha()
{
    const QImage source = opaquePicture();
    EngineTester tester(EngineTester::onePass);
    for (const EngineCase &made : engineCases()) {
        const std::unique_ptr<ImageEffect> effect = made.create();
        const EffectEngine engine({effect.get()});
        QVector<QImage> drawn;
        for (const bool opaque : {true, false}) {
            PictureRows rows(source);
            CollectedRows sink(source.size());
            QVERIFY(engine.render(source.size(), opaque, &rows, &sink));
            drawn.append(sink.picture);
        }
        KORVEL_CHECK(tester.compare(drawn.at(0), drawn.at(1)));
    }
}

void EngineInterfaceTest::aSourceThatEndsEndsTheRendering()
{
    const QImage source = opaquePicture({20, 900});
    const OwnedEffects effects = tallStack();
    const EffectEngine engine(effects.list());
    for (const int failing : {0, 1, 450, 899}) {
        PictureRows rows(source, failing);
        CollectedRows sink(source.size());
        QVERIFY(!engine.render(source.size(), true, &rows, &sink));
        QVERIFY(rows.asked && sink.asked);
        QVERIFY(sink.taken <= rows.given);
    }
}

void EngineInterfaceTest::aSinkThatEndsEndsTheRendering()
{
    const QImage source = opaquePicture({20, 900});
    const OwnedEffects effects = tallStack();
    const EffectEngine engine(effects.list());
    for (const int failing : {0, 1, 450, 899}) {
        PictureRows rows(source);
        CollectedRows sink(source.size(), failing);
        QVERIFY(!engine.render(source.size(), true, &rows, &sink));
        QVERIFY(sink.asked);
        QCOMPARE(sink.taken, failing);
    }
}

void EngineInterfaceTest::anEmptySizeIsNoPicture()
{
    const QImage source = opaquePicture({4, 4});
    for (const QSize &size : {QSize(0, 0), QSize(4, 0), QSize(0, 4), QSize(-1, 4), QSize()}) {
        PictureRows rows(source);
        CollectedRows sink({4, 4});
        QVERIFY(!EffectEngine({}).render(size, true, &rows, &sink));
        QCOMPARE(rows.given, 0);
        QCOMPARE(sink.taken, 0);
    }
}

// A texture has 16384 pixels a side at most; masks and blurs see the whole picture all the same.
void EngineInterfaceTest::picturesBeyondWhatGlCanHold()
{
    const EngineCase blur = engineCases().at(8);
    const MaskCase maskCase = maskCases(ModelMaskKind::Distance).at(0);
    const std::unique_ptr<ImageEffect> effect = blur.create();
    const std::unique_ptr<AlphaMask> mask = maskCase.create();
    effect->setAlphaMask(mask.get());
    const ModelMember model{blur.model, ImageEffect::Normal, 1.0, maskCase.model()};
    StackTester tester;
    for (const QSize &size : {QSize(20001, 2), QSize(2, 20001)}) {
        const QImage source = translucentPicture(size);
        KORVEL_CHECK(tester.compare(renderWithEngine({effect.get()}, source),
                                    StackPicture({model}, source), source));
    }
}

void EngineInterfaceTest::aWidthWithoutEndIsRefused()
{
    PictureRows rows(opaquePicture({4, 4}));
    CollectedRows sink({4, 4});
    const QSize size(std::numeric_limits<int>::max(), 1);
    QVERIFY(!EffectEngine({}).render(size, true, &rows, &sink));
    QCOMPARE(rows.given, 0);
}

void EngineInterfaceTest::reachesBeyondStripsAndBands_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("opaque");
    QTest::addColumn<int>("threads");
    for (const QSize &size : {QSize(3000, 3), QSize(3, 3000), QSize(1100, 5)}) {
        for (const bool opaque : {true, false}) {
            for (const int threads : {1, 3}) {
                QTest::addRow("%d x %d, %s, %d threads", size.width(), size.height(),
                              opaque ? "opaque" : "translucent", threads)
                    << size << opaque << threads;
            }
        }
    }
}

// Farther than a strip of a row is wide and a band is high.
void EngineInterfaceTest::reachesBeyondStripsAndBands()
{
    QFETCH(QSize, size);
    QFETCH(bool, opaque);
    QFETCH(int, threads);
    constexpr float radius = 100.0F;
    BlurImageEffect blur;
    blur.setRadius(radius);
    RenderSettings settings;
    settings.relativeScale = 4.0F;
    ModelFrame frame;
    frame.renderScale = 4.0;
    const QImage source = opaque ? opaquePicture(size) : translucentPicture(size);
    StackTester tester;
    for (const auto mode : {ImageEffect::Normal, ImageEffect::LinearLight}) {
        blur.setBlendMode(mode);
        const ModelMember model{modelBlur(double(radius)), mode, 1.0, {}};
        KORVEL_CHECK(tester.compare(renderWithEngine({&blur}, source, settings, threads),
                                    StackPicture({model}, source, frame), source));
    }
}

void EngineInterfaceTest::unknownBlendModesLeaveThePicture()
{
    const QImage source = translucentPicture();
    ColorFillImageEffect fill;
    BatchImageEffect batch;
    batch.setImageEffectList({&fill});
    for (const int mode : {-1, 16}) {
        fill.setBlendMode(ImageEffect::BlendMode(mode));
        QCOMPARE(renderWithEngine({&fill}, source), source);
        QCOMPARE(renderWithEngine({&batch}, source), renderWithEngine({}, source));
    }
}

void EngineInterfaceTest::aResultCanBeDrawnOnceMore()
{
    const QImage source = translucentPicture();
    const OwnedEffects effects = tallStack();
    for (int first = 0; first <= effects.list().size(); ++first) {
        QImage between = EffectEngine(effects.list().mid(0, first)).render(source);
        QVERIFY(between.reinterpretAsFormat(QImage::Format_RGBA8888));
        QCOMPARE(EffectEngine(effects.list().mid(first)).render(between),
                 EffectEngine(effects.list()).render(source));
    }
}

KORVEL_TEST_MAIN(EngineInterfaceTest)
#include "tst_engine_interface.moc"
