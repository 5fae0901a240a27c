#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/quick/PixelBuffer.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/ImageEffectState.h"
#include "tests/quick/QuickScene.h"
#include "tests/quick/TestWindow.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TestMain.h"

#include <QtTest/QSignalSpy>

#include <atomic>
#include <memory>
#include <random>
#include <vector>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr double none = 0.0;

const char *const everything = "EverythingBuffer { }";
// The same without the effects.
const char *const bare = "EverythingBuffer { imageEffects: []; maskViewLayer: null }";

PixelBuffer *bufferOf(const std::unique_ptr<QQuickItem> &item)
{
    return qobject_cast<PixelBuffer *>(item.get());
}

QList<ImageEffect *> effectsOf(PixelBuffer *buffer)
{
    QQmlListProperty<ImageEffect> list = buffer->imageEffects();
    QList<ImageEffect *> effects;
    for (int i = 0; i < list.count(&list); ++i) {
        effects.append(list.at(&list, i));
    }
    return effects;
}

std::atomic<int> usersOfState{0};
std::atomic<bool> stateWasUsedTwiceAtOnce{false};

// Takes its time whenever a render thread works with it, and notices a second one meanwhile.
class SlowState : public ImageEffectState
{
public:
    SlowState() : ImageEffectState(QStringLiteral("test.Slow")) {}

    void update(const ImageEffect *effect) override
    {
        const Use use;
        ImageEffectState::update(effect);
    }
    void updatePass(const QSharedPointer<ImageEffectPass> &pass,
                    const PixelBufferState *pbs) override
    {
        const Use use;
        ImageEffectState::updatePass(pass, pbs);
    }

private:
    struct Use {
        Use()
        {
            if (usersOfState++ != 0) {
                stateWasUsedTwiceAtOnce = true;
            }
            QThread::msleep(10);
        }
        ~Use() { --usersOfState; }
    };
};

// Leaves the picture as it is.
class SlowEffect : public ImageEffect
{
public:
    SlowEffect() : ImageEffect(QStringLiteral("test.Slow"), nullptr) {}

protected:
    ImageEffectState *createState() const override { return new SlowState; }
};

} // namespace

class PixelBufferWindowsTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_warnings = std::make_unique<WarningCollector>(); }
    void cleanup()
    {
        const QStringList warnings = m_warnings->warnings();
        m_warnings.reset();
        QCOMPARE(warnings.join('\n'), QString());
    }

    // Several at once

    void itemsOfOneWindowDoNotDisturbEachOther()
    {
        const QImage expected = fresh(everything);
        TestWindow window;
        std::vector<std::unique_ptr<QQuickItem>> items;
        for (int i = 0; i < 4; ++i) {
            items.push_back(create(everything, window));
            items.back()->setPosition(QPoint(50 * (i % 2), 50 * (i / 2)));
        }
        QVERIFY(window.show());
        for (const auto &item : items) {
            KORVEL_COMPARE_PICTURES(window.grab(item.get()), expected, none);
        }
        QCOMPARE(window.errors(), QString());
    }

    void windowsThatDrawAtOnceDoNotDisturbEachOther()
    {
        const QImage expected = fresh(everything);
        TestWindow windows[3];
        std::unique_ptr<QQuickItem> items[3];
        for (int i = 0; i < 3; ++i) {
            items[i] = create(everything, windows[i]);
            QVERIFY(windows[i].show());
        }
        for (int frame = 0; frame < 30; ++frame) {
            for (const auto &item : items) {
                bufferOf(item)->setImageEffectAlpha(float(frame + 1) / 30.0F);
            }
            QTest::qWait(5);
        }
        for (int i = 0; i < 3; ++i) {
            KORVEL_COMPARE_PICTURES(windows[i].grab(items[i].get()), expected, none);
            QCOMPARE(windows[i].errors(), QString());
        }
    }

    // From window to window

    void anItemIsDrawnRightInTheWindowItMovesTo()
    {
        const QImage expected = fresh(everything);
        TestWindow first;
        TestWindow second;
        const auto item = create(everything, first);
        QVERIFY(first.show());
        QVERIFY(second.show());
        for (TestWindow *window : {&second, &first, &second}) {
            item->setParentItem(window->root());
            KORVEL_COMPARE_PICTURES(window->grab(item.get()), expected, none);
        }
        QImage white(expected.size(), expected.format());
        white.fill(Qt::white);
        KORVEL_COMPARE_PICTURES(first.grab().copy(white.rect()), white, none);
        QCOMPARE(first.errors() + second.errors(), QString());
    }

    // The old window's thread may draw the item once more while the new one takes it over.
    void anItemMovesWhileItsOldWindowStillDrawsIt()
    {
        const QImage expected = fresh(everything);
        SlowEffect slow;
        TestWindow windows[2];
        std::atomic<int> pause{0}; // in milliseconds
        std::atomic<bool> paused{false};
        for (TestWindow &window : windows) {
            connect(
                window.operator->(), &QQuickWindow::beforeRendering, window.operator->(),
                [&] {
                    if (const int duration = pause.exchange(0)) {
                        paused = true;
                        QThread::msleep(unsigned(duration));
                    }
                },
                Qt::DirectConnection);
        }
        const auto item = create(everything, windows[0]);
        bufferOf(item)->insertEffect(&slow);
        for (TestWindow &window : windows) {
            QVERIFY(window.show());
        }
        for (int i = 1; i <= 10; ++i) {
            TestWindow &next = windows[i % 2];
            paused = false;
            pause = 5 * i;
            Q_EMIT slow.updateRequired();
            QTRY_VERIFY(paused);
            // Asked first the new window does not wait for the old one.
            next->update();
            item->setParentItem(next.root());
            const int frames = next.watch().frames();
            while (next.watch().frames() < frames + 3) {
                Q_EMIT slow.updateRequired();
                QCoreApplication::processEvents();
            }
            KORVEL_COMPARE_PICTURES(next.grab(item.get()), expected, none);
        }
        QVERIFY(!stateWasUsedTwiceAtOnce);
        QCOMPARE(windows[0].errors() + windows[1].errors(), QString());
    }

    void anItemSurvivesItsWindow()
    {
        const QImage expected = fresh(everything);
        auto first = std::make_unique<TestWindow>();
        const auto item = create(everything, *first);
        QVERIFY(first->show());
        QCOMPARE(first->errors(), QString());
        first.reset();
        QCOMPARE(item->window(), nullptr);
        TestWindow second;
        item->setParentItem(second.root());
        QVERIFY(second.show());
        KORVEL_COMPARE_PICTURES(second.grab(item.get()), expected, none);
        QCOMPARE(second.errors(), QString());
    }

    void effectsMoveToTheItemOfAnotherWindow_data()
    {
        QTest::addColumn<bool>("closedFirst");
        QTest::newRow("the first is closed before") << true;
        QTest::newRow("the first stays open") << false;
    }
    void effectsMoveToTheItemOfAnotherWindow()
    {
        QFETCH(bool, closedFirst);
        const QImage expected = fresh(everything);
        QObject owner;
        auto first = std::make_unique<TestWindow>();
        auto item = create(everything, *first);
        QVERIFY(first->show());
        KORVEL_COMPARE_PICTURES(first->grab(item.get()), expected, none);
        QCOMPARE(first->errors(), QString());

        const QList<ImageEffect *> effects = effectsOf(bufferOf(item));
        ImageEffect *maskViewLayer = bufferOf(item)->maskViewLayer();
        for (ImageEffect *effect : effects) {
            effect->setParent(&owner);
            if (effect->alphaMask() != nullptr) {
                effect->alphaMask()->setParent(&owner);
            }
        }
        if (closedFirst) {
            item.reset();
            first.reset();
        } else {
            bufferOf(item)->clearEffects();
            QVERIFY(first->settle());
        }

        TestWindow second;
        const auto other = create(bare, second);
        for (ImageEffect *effect : effects) {
            bufferOf(other)->insertEffect(effect);
        }
        bufferOf(other)->setMaskViewLayer(maskViewLayer);
        QVERIFY(second.show());
        KORVEL_COMPARE_PICTURES(second.grab(other.get()), expected, none);
        QCOMPARE(second.errors(), QString());
    }

    void twoWindowsShowTheSameEffectsInTurns()
    {
        const QImage expected = fresh(everything);
        TestWindow first;
        TestWindow second;
        const auto item = create(everything, first);
        const auto other = create(bare, second);
        const QList<ImageEffect *> effects = effectsOf(bufferOf(item));
        for (ImageEffect *effect : effects) {
            bufferOf(other)->insertEffect(effect);
        }
        bufferOf(other)->setMaskViewLayer(bufferOf(item)->maskViewLayer());
        QVERIFY(first.show() && second.show());
        for (int i = 0; i < 4; ++i) {
            KORVEL_COMPARE_PICTURES(first.grab(item.get()), expected, none);
            KORVEL_COMPARE_PICTURES(second.grab(other.get()), expected, none);
            for (ImageEffect *effect : effects) {
                Q_EMIT effect->updateRequired();
            }
        }
        QCOMPARE(first.errors() + second.errors(), QString());
    }

    // What becomes of the scene graph

    void aWindowThatGaveItsResourcesBackDrawsRightAgain_data()
    {
        QTest::addColumn<bool>("another");
        QTest::newRow("alone") << false;
        QTest::newRow("beside another window") << true;
    }
    void aWindowThatGaveItsResourcesBackDrawsRightAgain()
    {
        QFETCH(bool, another);
        const QImage expected = fresh(everything);
        TestWindow other;
        const auto otherItem = create(everything, other);
        if (another) {
            QVERIFY(other.show());
        }
        TestWindow window;
        window->setPersistentSceneGraph(false);
        window->setPersistentOpenGLContext(false);
        QSignalSpy invalidated(window.operator->(), &QQuickWindow::sceneGraphInvalidated);
        const auto item = create(everything, window);
        for (int i = 0; i < 3; ++i) {
            QVERIFY(window.show());
            KORVEL_COMPARE_PICTURES(window.grab(item.get()), expected, none);
            window->hide();
            window->releaseResources();
            QCoreApplication::processEvents();
        }
        // The render loop on the GUI thread keeps the context for the next window.
        QCOMPARE(invalidated.size(), qgetenv("QSG_RENDER_LOOP") == "basic" ? 0 : 3);
        if (another) {
            KORVEL_COMPARE_PICTURES(other.grab(otherItem.get()), expected, none);
        }
        QCOMPARE(window.errors() + other.errors(), QString());
    }

    void aWindowIsResizedWhileItDraws()
    {
        TestWindow window;
        const auto item = create(everything, window);
        QVERIFY(window.show());
        QSize size;
        for (int i = 0; i < 40; ++i) {
            size = QSize(20 + i * 37 % 150, 20 + i * 53 % 130);
            window->resize(size);
            item->setSize(size);
            QTest::qWait(3);
        }
        const QImage resized = window.grab();
        QCOMPARE(resized.size(), size);
        QCOMPARE(window.errors(), QString());
        KORVEL_COMPARE_PICTURES(resized, fresh(everything, size), none);
    }

    void anItemWithoutAPixelIsDrawnRightOnceItHasSome_data()
    {
        QTest::addColumn<QSizeF>("size");
        QTest::newRow("narrower than a pixel") << QSizeF(0.4, 40);
        QTest::newRow("lower than a pixel") << QSizeF(40, 0.4);
        QTest::newRow("height 0") << QSizeF(40, 0);
        QTest::newRow("width 0") << QSizeF(0, 40);
        QTest::newRow("nothing") << QSizeF(0, 0);
        QTest::newRow("negative") << QSizeF(-5, -5);
    }
    void anItemWithoutAPixelIsDrawnRightOnceItHasSome()
    {
        QFETCH(QSizeF, size);
        const QImage expected = fresh(everything);
        TestWindow window;
        const auto item = create(everything, window);
        item->setSize(size);
        QVERIFY(window.show());
        for (int i = 0; i < 2; ++i) {
            item->setSize(QSizeF(40, 40));
            KORVEL_COMPARE_PICTURES(window.grab(item.get()), expected, none);
            item->setSize(size);
            item->update();
            QVERIFY(window.settle());
        }
        QCOMPARE(window.errors(), QString());
    }

    // While frames are in flight

    void effectsAreDeletedWhileTheyAreShown()
    {
        const QImage expected = fresh(bare);
        TestWindow window;
        const auto item = create(everything, window);
        QVERIFY(window.show());
        for (ImageEffect *effect : effectsOf(bufferOf(item))) {
            item->update();
            QTest::qWait(10);
            item->update();
            delete effect;
        }
        QCOMPARE(effectsOf(bufferOf(item)), QList<ImageEffect *>());
        KORVEL_COMPARE_PICTURES(window.grab(item.get()), expected, none);
        QCOMPARE(window.errors(), QString());
    }

    void itemsComeAndGoAndChangeWindowsForTwoHundredFrames()
    {
        const QImage expected = fresh(everything);
        const QImage expectedBare = fresh(bare);
        TestWindow windows[2];
        // What QML creates and destroys by itself.
        std::unique_ptr<QQuickItem> crowds[2];
        for (int i = 0; i < 2; ++i) {
            crowds[i] =
                create("Item { property alias count: crowd.model\n"
                       "property alias active: one.active\n"
                       "Repeater { id: crowd; model: 1; EverythingBuffer { x: 9 * index } }\n"
                       "Loader { id: one; y: 50; sourceComponent: EverythingBuffer { } } }",
                       windows[i]);
            QVERIFY(windows[i].show());
        }
        std::vector<std::unique_ptr<QQuickItem>> items;
        std::mt19937 random(7);
        const auto below = [&random](int end) { return int(random() % unsigned(end)); };
        while (windows[0].watch().frames() < 200 || windows[1].watch().frames() < 200) {
            QQuickItem *root = windows[below(2)].root();
            const size_t chosen = items.empty() ? 0 : random() % items.size();
            switch (items.empty() ? 0 : below(9)) {
            case 0:
                if (items.size() < 6) {
                    items.push_back(create(below(3) == 0 ? bare : everything, windows[below(2)]));
                }
                break;
            case 1:
                items.erase(items.begin() + ptrdiff_t(chosen));
                break;
            case 2:
            case 3:
                items[chosen]->setParentItem(root);
                break;
            case 4:
                items[chosen]->setSize(QSizeF(below(60), below(60)));
                break;
            case 5:
                bufferOf(items[chosen])->setFrozen(below(2) == 0);
                items[chosen]->setVisible(below(4) != 0);
                break;
            case 6:
                if (ImageEffect *effect = effectsOf(bufferOf(items[chosen])).value(below(6))) {
                    delete effect;
                }
                break;
            case 7:
                crowds[below(2)]->setProperty("count", below(4));
                break;
            default:
                crowds[below(2)]->setProperty("active", below(2) == 0);
                break;
            }
            for (TestWindow &window : windows) {
                window->update();
            }
            for (const auto &item : items) {
                item->update();
            }
            QTest::qWait(below(6));
        }
        // Whatever is left is drawn as if nothing had happened.
        for (const auto &crowd : crowds) {
            crowd->setProperty("count", 0);
            crowd->setProperty("active", true);
        }
        items.clear();
        for (TestWindow &window : windows) {
            const auto last = create(everything, window);
            const auto plain = create(bare, window);
            plain->setX(60);
            KORVEL_COMPARE_PICTURES(window.grab(last.get()), expected, none);
            KORVEL_COMPARE_PICTURES(window.grab(plain.get()), expectedBare, none);
            KORVEL_COMPARE_PICTURES(window.grab().copy(0, 50, 40, 40), expected, none);
            QCOMPARE(window.errors(), QString());
        }
    }

private:
    std::unique_ptr<QQuickItem> create(const QByteArray &qml, TestWindow &window)
    {
        auto item = m_stage.create(qml);
        item->setParentItem(window.root());
        return item;
    }

    // What an item shows that is alone in its window.
    QImage fresh(const QByteArray &qml, const QSize &size = QSize(40, 40))
    {
        TestWindow window(size);
        const auto item = create(qml, window);
        item->setSize(size);
        return window.show() ? window.grab(item.get()) : QImage();
    }

    Stage m_stage;
    std::unique_ptr<WarningCollector> m_warnings;
};

// Contexts share their textures, or do not, for all the life of a program.
int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "headless");
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts,
                                   qEnvironmentVariableIsSet("KORVEL_SHARE_CONTEXTS"));
    QSurfaceFormat format;
    format.setOption(QSurfaceFormat::DebugContext);
    QSurfaceFormat::setDefaultFormat(format);
    const QGuiApplication application(argc, argv);
    PixelBufferWindowsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_pixelbufferwindows.moc"
