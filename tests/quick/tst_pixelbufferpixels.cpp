#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/effects/SharpenImageEffect.h"
#include "imagefx/quick/PixelBuffer.h"
#include "tests/quick/OffscreenReference.h"
#include "tests/quick/QuickScene.h"
#include "tests/support/EffectCases.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/EffectTester.h"
#include "tests/support/PictureTester.h"
#include "tests/support/RandomStack.h"
#include "tests/support/StackTester.h"
#include "tests/support/TestMain.h"

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

using Effect = std::unique_ptr<ImageEffect>;
using CreateEffect = std::function<Effect()>;

} // namespace

Q_DECLARE_METATYPE(CreateEffect)

namespace
{

constexpr unsigned firstSeed = 411;
constexpr int randomStacks = 16;

// Two items side by side, one of an opaque picture and one of a translucent one, with the same
// effects.
class Pair
{
public:
    QByteArray show()
    {
        // There the radii would be in pixels of the atlas.
        m_scene.keepOutOfAtlas();
        m_scene.addPicture(QStringLiteral("opaque"), opaquePicture());
        m_scene.addPicture(QStringLiteral("translucent"), translucentPicture());
        return m_scene.show(R"(
            Item {
                Image { id: opaque; source: 'image://test/opaque'; visible: false }
                Image { id: translucent; source: 'image://test/translucent'; visible: false }
                PixelBuffer {
                    objectName: 'left'
                    width: parent.width / 2; height: parent.height
                    sourceItem: opaque
                }
                PixelBuffer {
                    objectName: 'right'
                    x: width; width: parent.width / 2; height: parent.height
                    sourceItem: translucent
                }
            })");
    }

    QVector<PixelBuffer *> items() const
    {
        return {m_scene.find<PixelBuffer>(QStringLiteral("left")),
                m_scene.find<PixelBuffer>(QStringLiteral("right"))};
    }

    void setEffects(const QList<ImageEffect *> &effects)
    {
        for (PixelBuffer *item : items()) {
            item->clearEffects();
            for (ImageEffect *effect : effects) {
                item->insertEffect(effect);
            }
        }
    }

    // Empty when both items show what the offscreen renderer makes of equal effects.
    QByteArray compare(const QList<ImageEffect *> &effects, float alpha = 1.0F,
                       double tolerance = windowTolerance)
    {
        const QImage window = m_scene.grabNow();
        const int width = testPictureSize.width();
        const QImage sources[] = {opaquePicture(), translucentPicture()};
        QByteArray difference;
        for (int i = 0; i < 2 && difference.isEmpty(); ++i) {
            const Showing showing{testPictureSize, {0.0, 0.0, 1.0, 1.0}, 1.0F, alpha};
            difference = comparePictures(window.copy(i * width, 0, width, testPictureSize.height()),
                                         m_reference.draw(effects, sources[i], showing), tolerance);
        }
        if (difference.isEmpty() && !m_scene.warnings().isEmpty()) {
            difference = m_scene.warnings().join(QLatin1Char('\n')).toUtf8();
        }
        return difference;
    }

    // The same effect in both ways of drawing.
    QByteArray compareEffect(const CreateEffect &create)
    {
        const Effect shown = create();
        const Effect expected = create();
        setEffects({shown.get()});
        QByteArray difference = compare({expected.get()});
        setEffects({});
        return difference;
    }

    QuickScene *scene() { return &m_scene; }

private:
    QuickScene m_scene{QSize(2 * testPictureSize.width(), testPictureSize.height())};
    OffscreenReference m_reference;
};

Effect blur(float radius)
{
    auto effect = std::make_unique<BlurImageEffect>();
    effect->setRadius(radius);
    return effect;
}

Effect sharpen(float strength, float radius)
{
    auto effect = std::make_unique<SharpenImageEffect>();
    effect->setStrength(strength);
    effect->setRadius(radius);
    return effect;
}

Effect hsv(float hue)
{
    auto effect = std::make_unique<HSVImageEffect>();
    effect->setHue(hue);
    effect->setSaturation(-0.2F);
    return effect;
}

Effect masked(Effect effect, const MaskCase &mask)
{
    AlphaMask *object = mask.create().release();
    if (object != nullptr) {
        object->setParent(effect.get());
    }
    effect->setAlphaMask(object);
    return effect;
}

// A batch with a blur and another batch, of a colour fill and a masked HSV, in it.
Effect nestedBatch()
{
    auto outer = std::make_unique<BatchImageEffect>();
    auto *inner = new BatchImageEffect(outer.get());
    auto *fill = new ColorFillImageEffect(inner);
    fill->setColor(QColor(200, 120, 40));
    fill->setAlpha(0.4F);
    ImageEffect *shift = masked(hsv(0.3F), maskCases(ModelMaskKind::Hue).first()).release();
    shift->setParent(inner);
    inner->setImageEffectList({fill, shift});
    inner->setBlendMode(ImageEffect::Overlay);
    ImageEffect *soft = blur(3.0F).release();
    soft->setParent(outer.get());
    outer->setImageEffectList({soft, inner});
    outer->setAlpha(0.8F);
    return masked(std::move(outer), maskCases(ModelMaskKind::Distance).first());
}

} // namespace

// What a window shows against the offscreen renderer, which has tests of its own.
class PixelBufferPixelsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void anItemWithoutEffectsShowsItsSource();
    void everyEffect_data();
    void everyEffect();
    void everyMask_data();
    void everyMask();
    void everyBlendMode_data();
    void everyBlendMode();
    void batchesInBatches();
    void randomStacksOfEverything();
    void theOrderOfTheListIsTheOrderOfDrawing();
    void anEffectThatIsListedTwiceIsDrawnTwice();
    void imageEffectAlphaThinsEveryEffect();
    void imageEffectsDisabledShowsTheSource();
    void disabledEffectsAreLeftOut();
    void aBlendModeOutsideTheEnumerationDrawsNothing();

private:
    std::unique_ptr<Pair> m_pair;
};

// A new window for every row: hue and luminance masks share the passes of a context.
void PixelBufferPixelsTest::init()
{
    m_pair = std::make_unique<Pair>();
    KORVEL_CHECK(m_pair->show());
}

void PixelBufferPixelsTest::cleanup()
{
    m_pair.reset();
}

void PixelBufferPixelsTest::anItemWithoutEffectsShowsItsSource()
{
    const QImage window = m_pair->scene()->grab();
    const QRect left(QPoint(0, 0), testPictureSize);
    KORVEL_COMPARE_PICTURES(window.copy(left), opaquePicture(), 0.0);
    KORVEL_COMPARE_PICTURES(window.copy(left.translated(left.width(), 0)), translucentPicture(),
                            0.0);
}

void PixelBufferPixelsTest::everyEffect_data()
{
    QTest::addColumn<QVector<CreateEffect>>("cases");
    for (const QString &kind : effectKinds()) {
        QVector<CreateEffect> cases;
        for (const EffectCase &one : effectCases(kind)) {
            cases.append(one.create);
        }
        QTest::newRow(qPrintable(kind)) << cases;
    }
    QTest::newRow("Blur") << QVector<CreateEffect>{
        [] { return blur(1.0F); }, [] { return blur(6.5F); }, [] { return blur(40.0F); }};
    QTest::newRow("Sharpen") << QVector<CreateEffect>{[] { return sharpen(0.5F, 1.0F); },
                                                      [] { return sharpen(1.3F, 7.0F); }};
}

void PixelBufferPixelsTest::everyEffect()
{
    QFETCH(const QVector<CreateEffect>, cases);
    for (const CreateEffect &create : cases) {
        KORVEL_CHECK(m_pair->compareEffect(create));
    }
}

void PixelBufferPixelsTest::everyMask_data()
{
    addMaskKinds();
}

void PixelBufferPixelsTest::everyMask()
{
    QFETCH(const int, maskKind);
    for (const MaskCase &mask : maskCases(ModelMaskKind(maskKind))) {
        KORVEL_CHECK(m_pair->compareEffect([&mask] { return masked(hsv(0.37F), mask); }));
    }
}

void PixelBufferPixelsTest::everyBlendMode_data()
{
    addMaskKinds();
}

void PixelBufferPixelsTest::everyBlendMode()
{
    QFETCH(const int, maskKind);
    const MaskCase mask = maskCases(ModelMaskKind(maskKind)).first();
    for (int mode = ImageEffect::Normal; mode <= ImageEffect::DarkenOnly; ++mode) {
        KORVEL_CHECK(m_pair->compareEffect([&mask, mode] {
            Effect effect = masked(hsv(-0.2F), mask);
            effect->setBlendMode(ImageEffect::BlendMode(mode));
            return effect;
        }));
    }
}

void PixelBufferPixelsTest::batchesInBatches()
{
    KORVEL_CHECK(m_pair->compareEffect(nestedBatch));
}

void PixelBufferPixelsTest::randomStacksOfEverything()
{
    for (unsigned seed = firstSeed; seed < firstSeed + randomStacks; ++seed) {
        const RandomStacks::Stack shown = RandomStacks(seed).next();
        const RandomStacks::Stack expected = RandomStacks(seed).next();
        // The passes of hue and luminance masks would be mixed up by the stacks before.
        m_pair = std::make_unique<Pair>();
        KORVEL_CHECK(m_pair->show());
        m_pair->setEffects(shown.effects.list());
        const QByteArray difference = m_pair->compare(expected.effects.list());
        m_pair->setEffects({});
        QVERIFY2(difference.isEmpty(),
                 qPrintable(QStringLiteral("seed %1: ").arg(seed) + QString::fromUtf8(difference)));
    }
}

void PixelBufferPixelsTest::theOrderOfTheListIsTheOrderOfDrawing()
{
    const Effect shown[] = {blur(5.0F), hsv(0.3F), sharpen(1.0F, 2.0F)};
    const Effect expected[] = {blur(5.0F), hsv(0.3F), sharpen(1.0F, 2.0F)};
    m_pair->setEffects({shown[0].get(), shown[1].get()});
    KORVEL_CHECK(m_pair->compare({expected[0].get(), expected[1].get()}));
    for (PixelBuffer *item : m_pair->items()) {
        item->insertEffect(shown[2].get(), 0);
    }
    KORVEL_CHECK(m_pair->compare({expected[2].get(), expected[0].get(), expected[1].get()}));
    for (PixelBuffer *item : m_pair->items()) {
        item->removeEffect(shown[0].get());
    }
    KORVEL_CHECK(m_pair->compare({expected[2].get(), expected[1].get()}));
    m_pair->setEffects({});
}

void PixelBufferPixelsTest::anEffectThatIsListedTwiceIsDrawnTwice()
{
    const Effect shown = hsv(0.3F);
    const Effect expected = hsv(0.3F);
    m_pair->setEffects({shown.get(), shown.get()});
    KORVEL_CHECK(m_pair->compare({expected.get(), expected.get()}));
    m_pair->setEffects({});
}

void PixelBufferPixelsTest::imageEffectAlphaThinsEveryEffect()
{
    const Effect shown[] = {blur(5.0F), hsv(0.3F), nestedBatch()};
    const Effect expected[] = {blur(5.0F), hsv(0.3F), nestedBatch()};
    m_pair->setEffects({shown[0].get(), shown[1].get(), shown[2].get()});
    for (const float alpha : {1.0F, 0.6F, 0.2F}) {
        for (PixelBuffer *item : m_pair->items()) {
            item->setImageEffectAlpha(alpha);
        }
        KORVEL_CHECK(
            m_pair->compare({expected[0].get(), expected[1].get(), expected[2].get()}, alpha));
    }
    for (PixelBuffer *item : m_pair->items()) {
        item->setImageEffectAlpha(0.0F);
    }
    KORVEL_CHECK(m_pair->compare({}));
    m_pair->setEffects({});
}

void PixelBufferPixelsTest::imageEffectsDisabledShowsTheSource()
{
    const Effect shown = hsv(0.3F);
    const Effect expected = hsv(0.3F);
    m_pair->setEffects({shown.get()});
    for (const bool enabled : {true, false, true}) {
        for (PixelBuffer *item : m_pair->items()) {
            item->setImageEffectsEnabled(enabled);
        }
        if (enabled) {
            KORVEL_CHECK(m_pair->compare({expected.get()}));
        } else {
            KORVEL_CHECK(m_pair->compare({}, 1.0F, 0.0));
        }
    }
    m_pair->setEffects({});
}

void PixelBufferPixelsTest::disabledEffectsAreLeftOut()
{
    const Effect shown[] = {hsv(0.3F), blur(4.0F), hsv(-0.1F)};
    const Effect expected[] = {hsv(0.3F), blur(4.0F), hsv(-0.1F)};
    m_pair->setEffects({shown[0].get(), shown[1].get(), shown[2].get()});
    // Every choice of the three: pictures end in either of the two framebuffers.
    for (int choice = 0; choice < 8; ++choice) {
        QList<ImageEffect *> drawn;
        for (int i = 0; i < 3; ++i) {
            const bool enabled = (choice >> i & 1) != 0;
            shown[i]->setEnabled(enabled);
            if (enabled) {
                drawn.append(expected[i].get());
            }
        }
        KORVEL_CHECK(m_pair->compare(drawn));
    }
    shown[0]->setAlpha(0.001F);
    KORVEL_CHECK(m_pair->compare({expected[1].get(), expected[2].get()}));
    m_pair->setEffects({});
}

// Its program does not link. What is shown instead is defined: nothing.
void PixelBufferPixelsTest::aBlendModeOutsideTheEnumerationDrawsNothing()
{
    for (const int mode : {16, -1, 1000}) {
        const auto create = [mode] {
            Effect effect = hsv(0.3F);
            effect->setBlendMode(ImageEffect::BlendMode(mode));
            return effect;
        };
        const Effect shown = create();
        const Effect expected = create();
        m_pair->setEffects({shown.get()});
        const QImage window = m_pair->scene()->grab();
        QImage transparent(window.size(), window.format());
        transparent.fill(Qt::transparent);
        KORVEL_COMPARE_PICTURES(window, transparent, 0.0);
        m_pair->setEffects({});
    }
}

KORVEL_TEST_MAIN(PixelBufferPixelsTest)
#include "tst_pixelbufferpixels.moc"
