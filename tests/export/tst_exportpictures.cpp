#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/effects/SharpenImageEffect.h"
#include "imagefx/quick/PixelBuffer.h"
#include "tests/export/ExportBench.h"
#include "tests/network/HttpServer.h"
#include "tests/quick/OffscreenReference.h"
#include "tests/quick/QuickScene.h"
#include "tests/support/EffectCases.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/EffectTester.h"
#include "tests/support/PictureTester.h"
#include "tests/support/RandomStack.h"
#include "tests/support/TestMain.h"

#include <QtCore/QFileInfo>
#include <QtCore/QMap>
#include <QtGui/QImageReader>

#include <algorithm>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr QSize photoSize(150, 100);
// The tool computes what the item computes, with the same shaders on the same driver; but Qt Quick
// draws the item's texture once more into the window, and a driver may round that copy to either of
// the nearest two levels.
constexpr double copyTolerance = 1.0;
// What is drawn by another engine may round otherwise in more than one pass.
constexpr double stackTolerance = 2.0;
constexpr int updatesUntilRest = 2;
constexpr unsigned firstSeed = 77;
constexpr int randomStacks = 6;

using Effect = std::unique_ptr<ImageEffect>;

struct Stack {
    QString name;
    OwnedEffects effects;
};

Effect hsv(float hue)
{
    auto effect = std::make_unique<HSVImageEffect>();
    effect->setHue(hue);
    effect->setSaturation(0.2F);
    return effect;
}

Effect fill(const QColor &color)
{
    auto effect = std::make_unique<ColorFillImageEffect>();
    effect->setColor(color);
    return effect;
}

Effect blur(float radius)
{
    auto effect = std::make_unique<BlurImageEffect>();
    effect->setRadius(radius);
    return effect;
}

Effect sharpen(float strength)
{
    auto effect = std::make_unique<SharpenImageEffect>();
    effect->setStrength(strength);
    effect->setRadius(2.0F);
    return effect;
}

Effect masked(Effect effect, ModelMaskKind kind)
{
    effect->setAlphaMask(maskCases(kind).first().create().release());
    return effect;
}

Effect blended(Effect effect, ImageEffect::BlendMode mode, float alpha = 1.0F)
{
    effect->setBlendMode(mode);
    effect->setAlpha(alpha);
    return effect;
}

template <class... Effects>
Stack stack(const char *name, Effects... effects)
{
    return {QString::fromLatin1(name), OwnedEffects(QList<ImageEffect *>{effects.release()...})};
}

Effect batch(const QList<ImageEffect *> &members)
{
    auto effect = std::make_unique<BatchImageEffect>();
    effect->setImageEffectList(members);
    return effect;
}

// The second of each kind's cases; the first may be neutral.
std::vector<Stack> everyEffectOnce()
{
    std::vector<Stack> stacks;
    QList<ImageEffect *> all{blur(3.0F).release(), sharpen(0.8F).release()};
    for (const QString &kind : effectKinds()) {
        const EffectCase effect = effectCases(kind).at(1);
        stacks.push_back({kind, OwnedEffects({effect.create().release()})});
        if (kind != QLatin1String("ColorFill")) {
            all.append(effect.create().release());
        }
    }
    stacks.push_back(stack("Blur", blur(4.0F)));
    stacks.push_back(stack("Sharpen", sharpen(1.5F)));
    stacks.push_back({QStringLiteral("all of them"), OwnedEffects(all)});
    return stacks;
}

std::vector<Stack> everyBlendMode()
{
    std::vector<Stack> stacks;
    for (int mode = ImageEffect::Normal; mode <= ImageEffect::DarkenOnly; ++mode) {
        stacks.push_back(
            {QStringLiteral("blend mode %1").arg(mode),
             OwnedEffects({blended(hsv(0.3F), ImageEffect::BlendMode(mode), 0.8F).release()})});
    }
    return stacks;
}

std::vector<Stack> masksAndBatches()
{
    std::vector<Stack> stacks;
    stacks.push_back(stack("distance", masked(hsv(0.4F), ModelMaskKind::Distance)));
    stacks.push_back(stack("hue", masked(hsv(-0.4F), ModelMaskKind::Hue)));
    stacks.push_back(stack("luminance", masked(fill(Qt::blue), ModelMaskKind::Luminance)));
    Effect inner =
        blended(batch({blur(2.0F).release(), hsv(0.1F).release()}), ImageEffect::Overlay, 0.7F);
    stacks.push_back(
        stack("batch", sharpen(0.5F), hsv(0.2F),
              masked(batch({hsv(-0.3F).release(), inner.release()}), ModelMaskKind::Distance)));
    return stacks;
}

std::vector<Stack> whatDrawsNothing()
{
    const auto off = [](Effect effect) {
        effect->setEnabled(false);
        return effect;
    };
    std::vector<Stack> stacks;
    stacks.push_back(stack("nothing"));
    stacks.push_back(stack("neutral", std::make_unique<HSVImageEffect>(), hsv(0.2F),
                           std::make_unique<BlurImageEffect>()));
    // Unlike a neutral one that replaces, it shows.
    stacks.push_back(stack("neutral, blended",
                           blended(std::make_unique<HSVImageEffect>(), ImageEffect::Multiply)));
    stacks.push_back(stack("off", off(hsv(0.5F)), hsv(0.2F), off(fill(Qt::red))));
    stacks.push_back(stack("transparent", blended(fill(Qt::red), ImageEffect::Normal, 0.0F)));
    stacks.push_back(
        stack("batch of nothing", batch({off(hsv(0.5F)).release()}), batch({}), hsv(0.2F)));
    return stacks;
}

std::vector<Stack> random()
{
    std::vector<Stack> stacks;
    for (unsigned seed = firstSeed; seed < firstSeed + randomStacks; ++seed) {
        stacks.push_back({QStringLiteral("seed %1").arg(seed), RandomStacks(seed).next().effects});
    }
    return stacks;
}

QImage smallPhotograph()
{
    QImageReader reader(QStringLiteral(PHOTOGRAPHS "/mountains.jpg"));
    reader.setScaledSize(photoSize);
    return reader.read().convertToFormat(QImage::Format_RGB32);
}

// An effect may leave more colour than there is alpha, which only a texture can hold.
QImage asAFileHoldsIt(QImage picture)
{
    for (int y = 0; y < picture.height(); ++y) {
        uchar *pixel = picture.scanLine(y);
        for (int x = 0; x < picture.width(); ++x, pixel += 4) {
            std::transform(pixel, pixel + 3, pixel,
                           [alpha = pixel[3]](uchar level) { return std::min(level, alpha); });
        }
    }
    return picture;
}

void signalUpdates(const QList<ImageEffect *> &effects)
{
    for (ImageEffect *effect : effects) {
        if (const auto *batch = qobject_cast<const BatchImageEffect *>(effect)) {
            signalUpdates(batch->imageEffectList());
        }
        Q_EMIT effect->updateRequired();
    }
}

// A window with an item as large as the picture.
class Screen
{
public:
    QByteArray open(const QImage &photo)
    {
        m_scene.reset();
        m_scene = std::make_unique<QuickScene>(photo.size());
        // There the radii would be in pixels of the atlas.
        m_scene->keepOutOfAtlas();
        m_scene->addPicture(QStringLiteral("photo"), photo);
        return m_scene->show(R"(
            Item {
                Image { id: photo; source: 'image://test/photo'; visible: false }
                PixelBuffer { objectName: 'item'; anchors.fill: parent; sourceItem: photo }
            })");
    }

    // What the item shows with the effects once they are at rest: whether a neutral effect shows is
    // told from the blend mode of the update before, and of a batch from the one before that.
    QImage show(const QList<ImageEffect *> &effects)
    {
        auto *item = m_scene->find<PixelBuffer>(QStringLiteral("item"));
        item->clearEffects();
        for (ImageEffect *effect : effects) {
            item->insertEffect(effect);
        }
        for (int i = 0; i < updatesUntilRest; ++i) {
            m_scene->settle();
            signalUpdates(effects);
            item->update();
        }
        return m_scene->grab();
    }

    QStringList warnings() const { return m_scene->warnings(); }

private:
    std::unique_ptr<QuickScene> m_scene;
};

} // namespace

// The picture in the file is the picture on the screen.
class ExportPicturesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theExportIsWhatTheItemShows_data()
    {
        // Hue and luminance masks share their passes, so a window keeps to one of them.
        QTest::addColumn<int>("group");
        QTest::addColumn<bool>("mixesColorMasks");
        QTest::addColumn<QString>("program");
        QTest::addColumn<double>("tolerance");
        const QString gl = QString::fromLatin1(ExportBench::glTool);
        QTest::newRow("every effect once") << 0 << false << gl << copyTolerance;
        QTest::newRow("every blend mode") << 1 << false << gl << copyTolerance;
        QTest::newRow("masks and batches") << 2 << true << gl << copyTolerance;
        QTest::newRow("what draws nothing") << 3 << false << gl << copyTolerance;
        QTest::newRow("random stacks") << 4 << true << gl << copyTolerance;
        // The other groups have stacks that enlarge the level by which two engines may be apart;
        // the engine's own tests hold those against the formulas.
        const QString any = QString::fromLatin1(ExportBench::tool);
        QTest::newRow("every effect once, any engine") << 0 << false << any << stackTolerance;
        QTest::newRow("every blend mode, any engine") << 1 << false << any << stackTolerance;
        QTest::newRow("what draws nothing, any engine") << 3 << false << any << stackTolerance;
    }

    void theExportIsWhatTheItemShows()
    {
        QFETCH(const int, group);
        QFETCH(const bool, mixesColorMasks);
        QFETCH(const QString, program);
        QFETCH(const double, tolerance);
        using Make = std::vector<Stack> (*)();
        const Make groups[] = {everyEffectOnce, everyBlendMode, masksAndBatches, whatDrawsNothing,
                               random};
        const QImage photo = smallPhotograph();
        QCOMPARE(photo.size(), photoSize);
        compareExports(groups[group](), photo, program, mixesColorMasks, tolerance);
    }

    // Files hold straight colours, textures premultiplied ones.
    void aTranslucentExportIsWhatTheItemShows_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<double>("tolerance");
        QTest::newRow("OpenGL") << QString::fromLatin1(ExportBench::glTool) << copyTolerance;
        QTest::newRow("any engine") << QString::fromLatin1(ExportBench::tool) << stackTolerance;
    }

    void aTranslucentExportIsWhatTheItemShows()
    {
        QFETCH(const QString, program);
        QFETCH(const double, tolerance);
        const QImage picture = translucentPicture(photoSize).convertToFormat(QImage::Format_ARGB32);
        std::vector<Stack> stacks = everyEffectOnce();
        // All in a row would enlarge the level by which two programs may multiply apart.
        stacks.pop_back();
        compareExports(stacks, picture, program, false, tolerance);
    }

    // From the picture on a server to the file.
    void aRemotePictureIsExportedLikeALocalOne()
    {
        ExportBench bench(ExportBench::Maker::QmlEngine, ExportBench::tool);
        const QImage photo = smallPhotograph();
        QVERIFY(photo.save(bench.path("photo.png")));
        HttpServer server;
        server.serve("/photo.png", HttpAnswer::page(bench.read("photo.png")));
        const Effect effect = hsv(0.3F);
        QQmlListProperty<ImageEffect> list = bench.exporter()->imageEffects();
        list.append(&list, effect.get());
        bench.exporter()->setSource(server.url("/photo.png"));
        bench.exporter()->exportToFile(bench.target("remote.png"));
        bench.exporter()->setSource(bench.url("photo.png"));
        bench.exporter()->exportToFile(bench.target("local.png"));
        QVERIFY(bench.waitForReports(2));
        const QImage remote(bench.target("remote.png").toLocalFile());
        QCOMPARE(remote.size(), photoSize);
        KORVEL_COMPARE_PICTURES(remote, QImage(bench.target("local.png").toLocalFile()), 0.0);
        QVERIFY(!comparePictures(remote, photo, copyTolerance).isEmpty());
    }

    // The suffix is the format, and jpg is the default.
    void theSuffixIsTheFormat()
    {
        ExportBench bench(ExportBench::Maker::Cpp, ExportBench::tool);
        QVERIFY(smallPhotograph().save(bench.path("photo.png")));
        bench.exporter()->setSource(bench.url("photo.png"));
        bench.exporter()->exportToFile();
        bench.exporter()->exportToFile(QUrl(), QStringLiteral("webp"));
        bench.exporter()->exportToFile(bench.target("a.tif"), QStringLiteral("png"));
        QVERIFY(bench.waitForReports(3));
        // They run side by side, so any of them may end first.
        QMap<QString, QByteArray> formats;
        for (const Report &report : bench.reports()) {
            QVERIFY(report.finished);
            const QString path = report.target.toLocalFile();
            QImageReader reader(path);
            reader.setDecideFormatFromContent(true);
            QCOMPARE(reader.size(), photoSize);
            formats.insert(QFileInfo(path).suffix(), reader.format());
        }
        const QMap<QString, QByteArray> expected = {
            {QStringLiteral("jpg"), "jpeg"},
            {QStringLiteral("webp"), "webp"},
            {QStringLiteral("tif"), "tiff"},
        };
        QCOMPARE(formats, expected);
    }

private:
    // The exports of all stacks against what the item shows of them.
    static void compareExports(const std::vector<Stack> &stacks, const QImage &photo,
                               const QString &program, bool mixesColorMasks, double tolerance)
    {
        const QByteArray programName = program.toLatin1();
        ExportBench bench(ExportBench::Maker::Cpp, programName.constData());
        QVERIFY(photo.save(bench.path("photo.png")));
        bench.exporter()->setSource(bench.url("photo.png"));
        for (const Stack &stack : stacks) {
            QQmlListProperty<ImageEffect> list = bench.exporter()->imageEffects();
            list.clear(&list);
            for (ImageEffect *effect : stack.effects.list()) {
                list.append(&list, effect);
            }
            bench.exporter()->exportToFile(bench.target(stack.name + ".png"));
        }
        QVERIFY(bench.waitForReports(int(stacks.size())));

        Screen screen;
        KORVEL_CHECK(screen.open(photo));
        for (const Stack &stack : stacks) {
            if (mixesColorMasks) {
                KORVEL_CHECK(screen.open(photo));
            }
            const QImage exported =
                premultiplied(QImage(bench.target(stack.name + ".png").toLocalFile()));
            QVERIFY2(exported.size() == photoSize, qPrintable(stack.name));
            const QByteArray difference = comparePictures(
                exported, asAFileHoldsIt(screen.show(stack.effects.list())), tolerance);
            QVERIFY2(difference.isEmpty(), (stack.name.toUtf8() + ": " + difference).constData());
        }
        QCOMPARE(screen.warnings(), QStringList());
    }
};

KORVEL_TEST_MAIN(ExportPicturesTest)

#include "tst_exportpictures.moc"
