#include "tests/engine/EngineTester.h"
#include "tests/support/KnownStacks.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/TestMain.h"

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr unsigned firstSeed = 5000001;
constexpr int stacks = 500;

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
    KnownStacks m_stacks{firstSeed, stacks};
};

void EngineStacksTest::initTestCase()
{
    m_tester = std::make_unique<EngineTester>(EngineTester::aStack);
}

void EngineStacksTest::cleanupTestCase()
{
    m_tester.reset();
    QVERIFY(m_stacks.arePassedOverFew());
}

void EngineStacksTest::everyStackMatchesGlAndTheModel_data()
{
    addStackNumbers(stacks);
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
    const KnownStacks::Known known = m_stacks.at(number, source);
    const QList<ImageEffect *> &effects = known.stack.effects.list();
    const QImage drawn = renderWithEngine(effects, source, {}, 1 + number % 3);
    const QByteArray difference =
        m_tester->compare(drawn, renderTexture(effects, source), known.expected, source);
    QVERIFY2(difference.isEmpty(), difference.constData());
}

KORVEL_TEST_MAIN(EngineStacksTest)
#include "tst_engine_stacks.moc"
