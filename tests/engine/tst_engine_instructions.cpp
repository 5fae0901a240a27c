#include "engine/EffectEngine.h"
#include "imagefx/model/AlphaMask.h"
#include "tests/engine/EngineTester.h"
#include "tests/support/EffectCases.h"
#include "tests/support/RandomStack.h"
#include "tests/support/TestMain.h"

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr unsigned firstSeed = 7000001;
constexpr int stacks = 150;

const QString scalar = QStringLiteral("scalar");

} // namespace

// Every set of processor instructions that this machine has, against code that uses none. All of
// them run the same operations in the same order on every pixel, and none is contracted, so that
// pictures are equal to the bit: integer and floating-point sums alike.
class EngineInstructionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void theFastestSetIsInUse();
    void unknownSetsAreRefused();
    void aSetCountsForRenderingsThatBeginLater();
    void everySetDrawsEveryEffectAlike_data() { addSets(); }
    void everySetDrawsEveryEffectAlike();
    void everySetDrawsRandomStacksAlike_data() { addSets(); }
    void everySetDrawsRandomStacksAlike();

private:
    void addSets() const;

    const QString m_fastest = EffectEngine::instructionSet();
};

void EngineInstructionsTest::cleanup()
{
    QVERIFY(EffectEngine::setInstructionSet(m_fastest));
}

void EngineInstructionsTest::addSets() const
{
    QTest::addColumn<QString>("set");
    const QStringList sets = EffectEngine::instructionSets();
    for (const QString &set : sets) {
        QTest::newRow(qPrintable(set)) << set;
    }
}

void EngineInstructionsTest::theFastestSetIsInUse()
{
    const QStringList sets = EffectEngine::instructionSets();
    QCOMPARE(sets.first(), scalar);
    QCOMPARE(m_fastest, sets.last());
#if defined(__x86_64__)
    QCOMPARE(sets.at(1), QStringLiteral("sse2"));
#elif defined(__aarch64__)
    QCOMPARE(sets.at(1), QStringLiteral("neon"));
#endif
    qInfo("%s", qPrintable(sets.join(QLatin1String(", "))));
}

void EngineInstructionsTest::unknownSetsAreRefused()
{
    for (const char *name : {"", "AVX2", "avx3", "scalar ", "sse"}) {
        QVERIFY(!EffectEngine::setInstructionSet(QLatin1String(name)));
        QCOMPARE(EffectEngine::instructionSet(), m_fastest);
    }
    QVERIFY(EffectEngine::setInstructionSet(scalar));
    QVERIFY(!EffectEngine::setInstructionSet(QStringLiteral("mmx")));
    QCOMPARE(EffectEngine::instructionSet(), scalar);
}

void EngineInstructionsTest::aSetCountsForRenderingsThatBeginLater()
{
    const std::unique_ptr<ImageEffect> effect = engineCases().first().create();
    const EffectEngine engine({effect.get()});
    const QImage source = opaquePicture();
    const QImage expected = engine.render(source);
    QCOMPARE(expected.size(), source.size());
    const QStringList sets = EffectEngine::instructionSets();
    for (const QString &set : sets) {
        QVERIFY(EffectEngine::setInstructionSet(set));
        QCOMPARE(EffectEngine::instructionSet(), set);
        QCOMPARE(engine.render(source), expected);
    }
}

void EngineInstructionsTest::everySetDrawsEveryEffectAlike()
{
    QFETCH(QString, set);
    const QVector<EngineCase> cases = engineCases();
    const QVector<QImage> pictures = {opaquePicture(), translucentPicture()};
    for (const EngineCase &made : cases) {
        for (int kind = 0; kind < 4; ++kind) {
            const std::unique_ptr<ImageEffect> effect = made.create();
            const std::unique_ptr<AlphaMask> mask = maskCases(ModelMaskKind(kind)).first().create();
            effect->setAlphaMask(mask.get());
            for (int mode = ImageEffect::Normal; mode <= ImageEffect::DarkenOnly; ++mode) {
                effect->setBlendMode(ImageEffect::BlendMode(mode));
                effect->setAlpha(mode % 2 == 0 ? 1.0F : 0.6F);
                for (const QImage &source : pictures) {
                    QVERIFY(EffectEngine::setInstructionSet(scalar));
                    const QImage expected = renderWithEngine({effect.get()}, source);
                    QCOMPARE(expected.size(), source.size());
                    QVERIFY(EffectEngine::setInstructionSet(set));
                    const QImage drawn = renderWithEngine({effect.get()}, source);
                    QVERIFY2(drawn == expected,
                             qPrintable(QStringLiteral("%1, mask %2, blend mode %3")
                                            .arg(made.name)
                                            .arg(kind)
                                            .arg(mode)));
                }
            }
        }
    }
}

void EngineInstructionsTest::everySetDrawsRandomStacksAlike()
{
    QFETCH(QString, set);
    const QVector<QSize> sizes = {{43, 31}, {1, 1}, {97, 61}, {1, 29}, {17, 1}, {600, 9}, {9, 300}};
    for (int number = 0; number < stacks; ++number) {
        const RandomStacks::Stack stack = RandomStacks(firstSeed + unsigned(number)).next();
        const QSize size = sizes.at(number % sizes.size());
        const QImage source = number % 2 == 0 ? opaquePicture(size) : translucentPicture(size);
        QVERIFY(EffectEngine::setInstructionSet(scalar));
        const QImage expected = renderWithEngine(stack.effects.list(), source);
        QCOMPARE(expected.size(), source.size());
        QVERIFY(EffectEngine::setInstructionSet(set));
        QVERIFY2(renderWithEngine(stack.effects.list(), source) == expected,
                 qPrintable(QString::number(number)));
    }
}

KORVEL_TEST_MAIN(EngineInstructionsTest)
#include "tst_engine_instructions.moc"
