#include "engine/InstructionSets.h"
#include "engine/StackProgram.h"
#include "engine/pipeline/StageGraph.h"
#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/BrightnessContrastImageEffect.h"
#include "imagefx/effects/ExposureImageEffect.h"
#include "imagefx/effects/GrayScaleImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/effects/SharpenImageEffect.h"
#include "imagefx/model/HueAlphaMask.h"
#include "tests/support/TestMain.h"

using namespace ko::imagefx;
using namespace ko::imagefx::engine;

namespace
{

constexpr QSize pictureSize(800, 600);

// What becomes of a stack; the program has the tables that the stages point to.
struct Graph {
    explicit Graph(const QList<ImageEffect *> &effects, bool opaque = true, int threads = 1,
                   const QSize &size = pictureSize)
        : program(effects, 1.0F, 1.0F),
          graph(currentKernels(), program.steps(), size, opaque, threads)
    {
    }

    const std::vector<Stage> &stages() const { return graph.stages(); }

    const StackProgram program;
    const StageGraph graph;
};

QVector<PointOp::Kind> kindsOf(const PointOps &ops)
{
    QVector<PointOp::Kind> kinds;
    for (const PointOp &op : ops) {
        kinds.append(op.kind);
    }
    return kinds;
}

QVector<Stage::Head> headsOf(const std::vector<Stage> &stages)
{
    QVector<Stage::Head> heads;
    for (const Stage &stage : stages) {
        heads.append(stage.head);
    }
    return heads;
}

} // namespace

// How pictures are made, which they do not tell: a stack that falls off the fast path draws the
// same.
class EngineGraphTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void noEffectIsOneStage();
    void neighbouringTablesBecomeOne();
    void whatIsNoTableIsAPass();
    void aTableThatChangesNothingIsLeftOut();
    void pointEffectsStandInTheStageBeforeThem();
    void aBatchOfPointEffectsIsAnOp();
    void aBatchWithNeighboursReadsItsSourceTwice();
    void sumsAreWholeNumbersWhereTheyAreAsGood_data();
    void sumsAreWholeNumbersWhereTheyAreAsGood();
    void stagesKeepWhatIsStillToBeRead_data();
    void stagesKeepWhatIsStillToBeRead();

private:
    std::unique_ptr<BrightnessContrastImageEffect> m_levels;
    std::unique_ptr<ExposureImageEffect> m_exposure;
    std::unique_ptr<HSVImageEffect> m_hsv;
    std::unique_ptr<GrayScaleImageEffect> m_gray;
    std::unique_ptr<BlurImageEffect> m_blur;
};

void EngineGraphTest::init()
{
    m_levels = std::make_unique<BrightnessContrastImageEffect>();
    m_levels->setBrightness(0.25F);
    m_exposure = std::make_unique<ExposureImageEffect>();
    m_exposure->setExposure(1.0F);
    m_hsv = std::make_unique<HSVImageEffect>();
    m_hsv->setHue(0.5F);
    m_gray = std::make_unique<GrayScaleImageEffect>();
    m_blur = std::make_unique<BlurImageEffect>();
    m_blur->setRadius(16.0F);
}

void EngineGraphTest::noEffectIsOneStage()
{
    const Graph graph({});
    QCOMPARE(headsOf(graph.stages()), {Stage::Head::Source});
    QVERIFY(graph.stages().front().ops.empty());
}

void EngineGraphTest::neighbouringTablesBecomeOne()
{
    m_levels->setAlpha(0.5F);
    m_exposure->setBlendMode(ImageEffect::Overlay);
    const Graph graph({m_levels.get(), m_exposure.get(), m_hsv.get(), m_exposure.get()});
    QCOMPARE(headsOf(graph.stages()), {Stage::Head::Source});
    QCOMPARE(kindsOf(graph.stages().front().ops),
             (QVector<PointOp::Kind>{PointOp::Kind::LookUp, PointOp::Kind::Pass,
                                     PointOp::Kind::LookUp}));
}

void EngineGraphTest::whatIsNoTableIsAPass()
{
    const QVector<PointOp::Kind> passes = {PointOp::Kind::Pass, PointOp::Kind::Pass};
    const QList<ImageEffect *> effects = {m_levels.get(), m_exposure.get()};
    QCOMPARE(kindsOf(Graph(effects, false).stages().front().ops), passes);
    HueAlphaMask mask;
    m_levels->setAlphaMask(&mask);
    m_exposure->setAlphaMask(&mask);
    QCOMPARE(kindsOf(Graph(effects).stages().front().ops), passes);
}

void EngineGraphTest::aTableThatChangesNothingIsLeftOut()
{
    m_levels->setBrightness(0.0F);
    QVERIFY(Graph({m_levels.get()}).stages().front().ops.empty());
}

void EngineGraphTest::pointEffectsStandInTheStageBeforeThem()
{
    const Graph graph({m_hsv.get(), m_gray.get(), m_blur.get(), m_gray.get(), m_hsv.get()});
    QCOMPARE(headsOf(graph.stages()),
             (QVector<Stage::Head>{Stage::Head::Source, Stage::Head::Convolution,
                                   Stage::Head::Convolution}));
    QCOMPARE(graph.stages().at(0).ops.size(), size_t(2));
    QCOMPARE(graph.stages().at(1).ops.size(), size_t(0));
    QCOMPARE(graph.stages().at(2).ops.size(), size_t(2));
    QVERIFY(graph.stages().at(1).neighbours.vertical);
    QVERIFY(!graph.stages().at(2).neighbours.vertical);
}

void EngineGraphTest::aBatchOfPointEffectsIsAnOp()
{
    BatchImageEffect batch;
    batch.setImageEffectList({m_hsv.get(), m_gray.get()});
    const Graph graph({&batch});
    QCOMPARE(headsOf(graph.stages()), {Stage::Head::Source});
    QCOMPARE(kindsOf(graph.stages().front().ops), {PointOp::Kind::Batch});
    QCOMPARE(graph.stages().front().ops.front().nested.size(), size_t(2));
    BatchImageEffect tables;
    tables.setImageEffectList({m_levels.get(), m_exposure.get()});
    QCOMPARE(kindsOf(Graph({&tables}).stages().front().ops), {PointOp::Kind::LookUp});
}

void EngineGraphTest::aBatchWithNeighboursReadsItsSourceTwice()
{
    BatchImageEffect batch;
    batch.setImageEffectList({m_gray.get(), m_blur.get()});
    const Graph graph({m_hsv.get(), &batch});
    QCOMPARE(
        headsOf(graph.stages()),
        (QVector<Stage::Head>{Stage::Head::Source, Stage::Head::Points, Stage::Head::Convolution,
                              Stage::Head::Convolution, Stage::Head::Batch}));
    QCOMPARE(graph.stages().back().input, 0);
    QCOMPARE(graph.stages().back().second, 3);
    QCOMPARE(graph.stages().at(1).input, 0);
}

void EngineGraphTest::sumsAreWholeNumbersWhereTheyAreAsGood_data()
{
    QTest::addColumn<bool>("opaque");
    QTest::addColumn<bool>("masked");
    QTest::addColumn<float>("alpha");
    QTest::addColumn<int>("blendMode");
    QTest::addColumn<float>("strength");
    QTest::addColumn<bool>("blurred");
    QTest::addColumn<bool>("sharpened");
    const int normal = ImageEffect::Normal;
    QTest::newRow("plain") << true << false << 1.0F << normal << 0.5F << true << true;
    QTest::newRow("translucent") << false << false << 1.0F << normal << 0.5F << true << false;
    QTest::newRow("mask") << true << true << 1.0F << normal << 0.5F << true << true;
    QTest::newRow("alpha") << true << false << 0.5F << normal << 0.5F << true << true;
    QTest::newRow("alpha beyond 1") << true << false << 1.5F << normal << 0.5F << false << false;
    QTest::newRow("strong") << true << false << 1.0F << normal << 2.5F << true << false;
    for (const int mode : {ImageEffect::Multiply, ImageEffect::Overlay, ImageEffect::SoftLight}) {
        QTest::addRow("blend mode %d", mode)
            << true << false << 1.0F << mode << 0.5F << true << true;
    }
    for (const int mode : {ImageEffect::Divide, ImageEffect::HardLight, ImageEffect::LinearLight,
                           ImageEffect::ColorDodge, ImageEffect::ColorBurn}) {
        QTest::addRow("blend mode %d", mode)
            << true << false << 1.0F << mode << 0.5F << false << false;
    }
}

// Of sharpening that is the last of its two sums.
void EngineGraphTest::sumsAreWholeNumbersWhereTheyAreAsGood()
{
    QFETCH(bool, opaque);
    QFETCH(bool, masked);
    QFETCH(float, alpha);
    QFETCH(int, blendMode);
    QFETCH(float, strength);
    QFETCH(bool, blurred);
    QFETCH(bool, sharpened);
    HueAlphaMask mask;
    SharpenImageEffect sharpen;
    sharpen.setStrength(strength);
    for (ImageEffect *effect :
         {static_cast<ImageEffect *>(m_blur.get()), static_cast<ImageEffect *>(&sharpen)}) {
        effect->setAlphaMask(masked ? &mask : nullptr);
        effect->setAlpha(alpha);
        effect->setBlendMode(ImageEffect::BlendMode(blendMode));
        const Graph graph({effect}, opaque);
        QCOMPARE(graph.stages().size(), size_t(3));
        QCOMPARE(graph.stages().back().neighbours.convolve.sums.integers,
                 effect == &sharpen ? sharpened : blurred);
        effect->setAlphaMask(nullptr);
    }
}

void EngineGraphTest::stagesKeepWhatIsStillToBeRead_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("threads");
    for (const QSize &size :
         {QSize(800, 600), QSize(6000, 4000), QSize(1, 1), QSize(3, 5000), QSize(20000, 2)}) {
        for (const int threads : {1, 2, 64}) {
            QTest::addRow("%d x %d, %d threads", size.width(), size.height(), threads)
                << size << threads;
        }
    }
}

// Of every stage that another one reads: from the highest row that is read for a band's first row
// to the lowest that was made for its last one.
void EngineGraphTest::stagesKeepWhatIsStillToBeRead()
{
    QFETCH(QSize, size);
    QFETCH(int, threads);
    BatchImageEffect batch;
    batch.setImageEffectList({m_gray.get(), m_blur.get()});
    SharpenImageEffect sharpen;
    sharpen.setRadius(7.0F);
    const Graph graph({&sharpen, &batch, &sharpen}, true, threads, size);
    const int band = graph.graph.bandRows();
    QVERIFY(band >= 1 && band <= size.height());
    const std::vector<Stage> &stages = graph.stages();
    QCOMPARE(stages.back().lead, qint64(0));
    for (size_t i = 0; i < stages.size(); ++i) {
        const Stage &reader = stages.at(i);
        const bool vertical = reader.neighbours.vertical;
        for (const int input : {reader.input, reader.second}) {
            if (input < 0) {
                continue;
            }
            QVERIFY(size_t(input) < i);
            const Stage &made = stages.at(size_t(input));
            const bool isCentre = input == reader.second;
            const int above = vertical && !isCentre ? reader.neighbours.before : 0;
            const int below = vertical && !isCentre ? reader.neighbours.after : 0;
            QVERIFY(made.lead >= reader.lead + below);
            // While they are read the source gives the rows of the next band.
            const int more = input == 0 ? band : 0;
            const qint64 needed = band + made.lead - reader.lead + above + more;
            QVERIFY(made.rows >= std::min(needed, qint64(size.height())));
        }
    }
}

KORVEL_TEST_MAIN(EngineGraphTest)
#include "tst_engine_graph.moc"
