#include "imagefx/model/EffectRegistry.h"
#include "imagefx/model/EffectStackReader.h"
#include "imagefx/model/ImageEffect.h"
#include "tests/engine/EngineTester.h"
#include "tests/support/KnownStacks.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TestMain.h"

#include <QtCore/QJsonDocument>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr unsigned firstSeed = 1847;
constexpr int stacks = 200;
constexpr QSize pictureSize(43, 31);

OwnedEffects readBack(const QList<ImageEffect *> &effects)
{
    const QByteArray text = QJsonDocument(ImageEffect::serialize(effects)).toJson();
    // The library's own registry would drop brightness/contrast and HSV.
    const EffectRegistry registry = EffectRegistry::complete();
    return OwnedEffects(
        EffectStackReader(registry).readStack(QJsonDocument::fromJson(text).array()));
}

} // namespace

// Stacks of everything that there is, written to JSON, read back and drawn.
class RandomStacksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void everyStackMatchesItsCopyAndTheModel_data();
    void everyStackMatchesItsCopyAndTheModel();

private:
    std::unique_ptr<EngineTester> m_tester;
    KnownStacks m_stacks{firstSeed, stacks};
};

void RandomStacksTest::initTestCase()
{
    m_tester = std::make_unique<EngineTester>(EngineTester::aStack);
}

void RandomStacksTest::cleanupTestCase()
{
    m_tester.reset();
    QVERIFY(m_stacks.arePassedOverFew());
}

void RandomStacksTest::everyStackMatchesItsCopyAndTheModel_data()
{
    addStackNumbers(stacks);
}

// A context for every row, since in one context the same pass serves hue and luminance masks.
void RandomStacksTest::everyStackMatchesItsCopyAndTheModel()
{
    QFETCH(int, number);
    const OffscreenGl gl;
    QVERIFY(gl.isValid());
    const QImage source =
        number % 2 == 0 ? opaquePicture(pictureSize) : translucentPicture(pictureSize);
    const KnownStacks::Known known = m_stacks.at(number, source);
    const QList<ImageEffect *> &effects = known.stack.effects.list();
    const OwnedEffects copy = readBack(effects);
    QCOMPARE(copy.list().size(), effects.size());
    const QImage drawn = renderTexture(effects, source);
    constexpr double none = 0.0;
    KORVEL_COMPARE_PICTURES(renderTexture(copy.list(), source), drawn, none);
    const QImage drawnByEngine = renderWithEngine(effects, source);
    KORVEL_COMPARE_PICTURES(renderWithEngine(copy.list(), source), drawnByEngine, none);
    const QByteArray difference = m_tester->compare(drawnByEngine, drawn, known.expected, source);
    QVERIFY2(difference.isEmpty(), difference.constData());
}

KORVEL_TEST_MAIN(RandomStacksTest)
#include "tst_randomstacks.moc"
