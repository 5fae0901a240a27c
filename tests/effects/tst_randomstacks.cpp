#include "imagefx/model/EffectRegistry.h"
#include "imagefx/model/EffectStackReader.h"
#include "imagefx/model/ImageEffect.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/PictureTester.h"
#include "tests/support/RandomStack.h"
#include "tests/support/StackTester.h"
#include "tests/support/TestMain.h"

#include <QtCore/QJsonDocument>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr unsigned firstSeed = 1847;
constexpr int stacks = 200;
constexpr QSize pictureSize(43, 31);
// A stack may amplify a rounding that may go either way until the model says too little about its
// picture; the next seed stands in for it then. Many more would mean that the model is too vague.
constexpr int mostPassedOver = stacks / 4;

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
    std::unique_ptr<StackTester> m_tester;
    int m_passedOver = 0;
};

void RandomStacksTest::initTestCase()
{
    m_tester = std::make_unique<StackTester>();
}

void RandomStacksTest::cleanupTestCase()
{
    m_tester.reset();
    qInfo("%d stacks passed over", m_passedOver);
    QVERIFY(m_passedOver <= mostPassedOver);
}

void RandomStacksTest::everyStackMatchesItsCopyAndTheModel_data()
{
    QTest::addColumn<int>("number");
    for (int number = 0; number < stacks; ++number) {
        QTest::addRow("%d", number) << number;
    }
}

// A context for every row, since in one context the same pass serves hue and luminance masks.
void RandomStacksTest::everyStackMatchesItsCopyAndTheModel()
{
    QFETCH(int, number);
    const OffscreenGl gl;
    QVERIFY(gl.isValid());
    const QImage source =
        number % 2 == 0 ? opaquePicture(pictureSize) : translucentPicture(pictureSize);
    unsigned seed = firstSeed + unsigned(number);
    RandomStacks::Stack stack = RandomStacks(seed).next();
    StackPicture expected(stack.model, source);
    while (expected.leftOut() >= StackTester::mostLeftOut) {
        ++m_passedOver;
        seed += stacks;
        stack = RandomStacks(seed).next();
        expected = StackPicture(stack.model, source);
    }
    const OwnedEffects copy = readBack(stack.effects.list());
    QCOMPARE(copy.list().size(), stack.effects.list().size());
    const QImage drawn = renderTexture(stack.effects.list(), source);
    constexpr double none = 0.0;
    KORVEL_COMPARE_PICTURES(renderTexture(copy.list(), source), drawn, none);
    const QByteArray difference = m_tester->compare(drawn, expected, source);
    QVERIFY2(difference.isEmpty(), difference.constData());
}

KORVEL_TEST_MAIN(RandomStacksTest)
#include "tst_randomstacks.moc"
