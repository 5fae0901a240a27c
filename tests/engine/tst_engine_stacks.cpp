#include "tests/engine/EngineTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/RandomStack.h"
#include "tests/support/TestMain.h"

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr unsigned firstSeed = 5000001;
constexpr int stacks = 500;
// A stack may amplify a rounding that may go either way until the model says too little about its
// picture; the next seed stands in for it then. In a picture of a few pixels one of them is enough.
constexpr int mostPassedOver = stacks / 4;

// Single pixels, rows and columns, sizes around those of vectors and strips, and now and then a
// picture that is larger than either: wider than any strip, or of many bands.
const QVector<QSize> &sizes()
{
    static const QVector<QSize> list = {{1, 1},    {43, 31}, {1, 37},  {61, 1},  {97, 61},
                                        {2, 3},    {65, 17}, {31, 43}, {16, 16}, {5, 50},
                                        {1200, 7}, {63, 20}, {64, 19}, {3, 200}, {1, 2},
                                        {33, 33},  {9, 700}, {130, 9}, {7, 7},   {24, 41}};
    return list;
}

} // namespace

// Stacks of everything that there is, drawn by both engines.
class EngineStacksTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void everyStackMatchesGlAndTheModel_data();
    void everyStackMatchesGlAndTheModel();

private:
    std::unique_ptr<EngineTester> m_tester;
    int m_passedOver = 0;
};

void EngineStacksTest::initTestCase()
{
    m_tester = std::make_unique<EngineTester>(EngineTester::aStack);
}

void EngineStacksTest::cleanupTestCase()
{
    m_tester.reset();
    qInfo("%d stacks passed over", m_passedOver);
    QVERIFY(m_passedOver <= mostPassedOver);
}

void EngineStacksTest::everyStackMatchesGlAndTheModel_data()
{
    QTest::addColumn<int>("number");
    for (int number = 0; number < stacks; ++number) {
        QTest::addRow("%d", number) << number;
    }
}

// A context for every row, since in one context the same pass serves hue and luminance masks.
void EngineStacksTest::everyStackMatchesGlAndTheModel()
{
    QFETCH(int, number);
    const OffscreenGl gl;
    QVERIFY(gl.isValid());
    const QSize size = sizes().at(number % sizes().size());
    const bool opaque = number / sizes().size() % 2 == 0;
    const QImage source = opaque ? opaquePicture(size) : translucentPicture(size);
    unsigned seed = firstSeed + unsigned(number);
    RandomStacks::Stack stack = RandomStacks(seed).next();
    StackPicture expected(stack.model, source);
    while (expected.leftOut() >= StackTester::mostLeftOut) {
        ++m_passedOver;
        seed += stacks;
        stack = RandomStacks(seed).next();
        expected = StackPicture(stack.model, source);
    }
    const QList<ImageEffect *> &effects = stack.effects.list();
    const QImage drawn = renderWithEngine(effects, source, {}, 1 + number % 3);
    const QByteArray difference =
        m_tester->compare(drawn, renderTexture(effects, source), expected, source);
    QVERIFY2(difference.isEmpty(), difference.constData());
}

KORVEL_TEST_MAIN(EngineStacksTest)
#include "tst_engine_stacks.moc"
