#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/GrayScaleImageEffect.h"
#include "tests/support/EffectRendering.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/TestMain.h"

#include <QtTest/QSignalSpy>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

void append(BatchImageEffect *batch, ImageEffect *effect)
{
    auto list = batch->imageEffects();
    list.append(&list, effect);
}

void clear(BatchImageEffect *batch)
{
    auto list = batch->imageEffects();
    list.clear(&list);
}

} // namespace

// The nested effects of a batch as a list, and who listens to whom.
class BatchListTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void appendingAndClearingSignal();
    void appendedEffectsAreListenedTo();
    void clearedEffectsAreNotListenedTo();
    void settingTheListSignalsAlwaysAndListensToNobody();
    void aDestroyedEffectLeavesTheList();
    void aBatchNeverHoldsItself();

private:
    OffscreenGl m_gl;
};

void BatchListTest::initTestCase()
{
    QVERIFY(m_gl.isValid());
}

void BatchListTest::appendingAndClearingSignal()
{
    BatchImageEffect batch;
    GrayScaleImageEffect first;
    GrayScaleImageEffect second;
    const QSignalSpy changed(&batch, &BatchImageEffect::imageEffectsChanged);
    const QSignalSpy updates(&batch, &ImageEffect::updateRequired);
    append(&batch, nullptr);
    clear(&batch);
    QCOMPARE(changed.count(), 0);
    QCOMPARE(updates.count(), 0);
    append(&batch, &first);
    append(&batch, &second);
    QCOMPARE(changed.count(), 2);
    QCOMPARE(updates.count(), 2);
    QCOMPARE(batch.imageEffectList(), QList<ImageEffect *>({&first, &second}));
    auto list = batch.imageEffects();
    QCOMPARE(list.count(&list), 2);
    QCOMPARE(list.at(&list, 0), static_cast<ImageEffect *>(&first));
    QCOMPARE(list.at(&list, 1), static_cast<ImageEffect *>(&second));
    clear(&batch);
    QCOMPARE(changed.count(), 3);
    QCOMPARE(updates.count(), 3);
    QVERIFY(batch.isNeutral());
    clear(&batch);
    QCOMPARE(changed.count(), 3);
    QCOMPARE(updates.count(), 3);
}

void BatchListTest::appendedEffectsAreListenedTo()
{
    BatchImageEffect outer;
    BatchImageEffect batch;
    GrayScaleImageEffect gray;
    append(&batch, &gray);
    append(&outer, &batch);
    const QSignalSpy changed(&outer, &BatchImageEffect::imageEffectsChanged);
    const QSignalSpy updates(&outer, &ImageEffect::updateRequired);
    gray.setRed(0.9F);
    QCOMPARE(updates.count(), 1);
    QCOMPARE(changed.count(), 0);
}

void BatchListTest::clearedEffectsAreNotListenedTo()
{
    BatchImageEffect batch;
    GrayScaleImageEffect gray;
    append(&batch, &gray);
    clear(&batch);
    const QSignalSpy updates(&batch, &ImageEffect::updateRequired);
    gray.setRed(0.9F);
    QCOMPARE(updates.count(), 0);
}

void BatchListTest::settingTheListSignalsAlwaysAndListensToNobody()
{
    BatchImageEffect batch;
    GrayScaleImageEffect appended;
    GrayScaleImageEffect set;
    append(&batch, &appended);
    const QSignalSpy changed(&batch, &BatchImageEffect::imageEffectsChanged);
    const QSignalSpy updates(&batch, &ImageEffect::updateRequired);
    batch.setImageEffectList({&set});
    QCOMPARE(batch.imageEffectList(), QList<ImageEffect *>({&set}));
    QCOMPARE(changed.count(), 1);
    QCOMPARE(updates.count(), 1);
    batch.setImageEffectList(batch.imageEffectList());
    QCOMPARE(changed.count(), 2);
    QCOMPARE(updates.count(), 2);
    set.setRed(0.9F);
    QCOMPARE(updates.count(), 2);
    appended.setRed(0.9F);
    QCOMPARE(updates.count(), 3);
    batch.setImageEffectList({});
    batch.setImageEffectList({});
    QCOMPARE(changed.count(), 4);
    QVERIFY(batch.isNeutral());
}

void BatchListTest::aDestroyedEffectLeavesTheList()
{
    BatchImageEffect batch;
    GrayScaleImageEffect kept;
    auto appended = std::make_unique<GrayScaleImageEffect>();
    append(&batch, appended.get());
    append(&batch, &kept);
    const QSignalSpy changed(&batch, &BatchImageEffect::imageEffectsChanged);
    const QSignalSpy updates(&batch, &ImageEffect::updateRequired);
    appended.reset();
    QCOMPARE(batch.imageEffectList(), QList<ImageEffect *>({&kept}));
    QCOMPARE(changed.count(), 0);
    QCOMPARE(updates.count(), 1);
    auto set = std::make_unique<GrayScaleImageEffect>();
    batch.setImageEffectList({set.get(), &kept, set.get()});
    set.reset();
    QCOMPARE(batch.imageEffectList(), QList<ImageEffect *>({&kept}));
    KORVEL_CHECK(checkAlphaUntouched(&batch));
}

void BatchListTest::aBatchNeverHoldsItself()
{
    BatchImageEffect batch;
    BatchImageEffect middle;
    BatchImageEffect inner;
    append(&batch, &middle);
    append(&middle, &inner);
    const QSignalSpy changed(&inner, &BatchImageEffect::imageEffectsChanged);
    append(&inner, &inner);
    append(&inner, &middle);
    append(&inner, &batch);
    QCOMPARE(changed.count(), 0);
    QVERIFY(inner.isNeutral());
    inner.setImageEffectList({&batch, &inner, nullptr});
    QVERIFY(inner.isNeutral());
    QCOMPARE(changed.count(), 1);
    KORVEL_CHECK(checkIdentity({&batch}, opaquePicture()));
}

KORVEL_TEST_MAIN(BatchListTest)
#include "tst_batchlist.moc"
