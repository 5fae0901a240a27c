#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/LookupTableImageEffect.h"
#include "tests/gallery/GalleryFixture.h"
#include "tests/support/TestMain.h"

#include <QtCore/QFile>
#include <QtCore/QMetaEnum>
#include <QtCore/QRegularExpression>
#include <QtCore/QSet>

#include <cmath>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr int effectCount = 11;

float number(const QObject *object, const QString &property)
{
    return object->property(property.toLatin1().constData()).toFloat();
}

QString nameOf(const ImageEffect *effect, const QString &property)
{
    return effect->effectId() + QLatin1Char(' ') + property;
}

QStringList slidersOf(const ImageEffect *effect)
{
    QStringList names;
    for (const QString &name : propertiesOf(effect, *effect->metaObject())) {
        if (effect->property(name.toLatin1().constData()).userType() == QMetaType::Float) {
            names.append(name);
        }
    }
    return names;
}

const QString colorFill = QStringLiteral("ColorFill");
const QString brightnessContrast = QStringLiteral("BrightnessContrast");

} // namespace

// The list of effects, their properties and the photographs.
class GalleryTest : public GalleryFixture
{
    Q_OBJECT

private Q_SLOTS:
    void everyEffectOfTheModuleIsListed();
    void everyPropertyHasAControl();
    void everySliderMovesItsPropertyAndThePicture();
    void doubleClickResetsASlider_data();
    void doubleClickResetsASlider();
    void deleteKeyResetsASlider();
    void arrowKeysMoveASlider();
    void switchTurnsTheEffectOff();
    void everyBlendModeCanBeChosen();
    void colourIsTypedAndMixed();
    void everyPresetTableLoads();
    void nestedEffectsAreSwitchedAndFaded();
    void resetMakesTheEffectNeutral();
    void photographIsChosen();
    void arrowKeysChooseTheEffect();
    void tabKeyReachesEveryControl();
};

void GalleryTest::everyEffectOfTheModuleIsListed()
{
    QFile description(QStringLiteral(QML_FOLDER "/Korvel/ImageFx/plugins.qmltypes"));
    QVERIFY(description.open(QIODevice::ReadOnly));
    QSet<QString> expected;
    const QRegularExpression type(QStringLiteral("\"Korvel.ImageFx/(\\w+ImageEffect) 1.0\""));
    auto types = type.globalMatch(QString::fromUtf8(description.readAll()));
    while (types.hasNext()) {
        expected.insert(types.next().captured(1));
    }
    QSet<QString> listed;
    for (int i = 0; const ImageEffect *effect = m_gallery->chooseEffect(i); ++i) {
        listed.insert(
            QString::fromLatin1(effect->metaObject()->className()).section(QLatin1Char(':'), -1));
    }
    QCOMPARE(listed, expected);
    QCOMPARE(listed.size(), effectCount);
}

void GalleryTest::everyPropertyHasAControl()
{
    for (int i = 0; i < effectCount; ++i) {
        const ImageEffect *effect = m_gallery->chooseEffect(i);
        QVERIFY(effect);
        for (const QString &name : propertiesOf(effect, ImageEffect::staticMetaObject)) {
            QVERIFY2(m_gallery->find(name),
                     qPrintable(nameOf(effect, name) + QLatin1String(" has no control")));
        }
    }
}

void GalleryTest::everySliderMovesItsPropertyAndThePicture()
{
    m_gallery->click(QStringLiteral("compare"));
    for (int i = 0; i < effectCount; ++i) {
        ImageEffect *effect = m_gallery->chooseEffect(i);
        QVERIFY(effect);
        QImage formerPicture = after();
        for (const QString &name : slidersOf(effect)) {
            const float former = number(effect, name);
            const qreal from = m_gallery->find(name)->property("from").toReal();
            const qreal to = m_gallery->find(name)->property("to").toReal();
            const qreal target = from + (former - from > to - former ? 0.1 : 0.9) * (to - from);
            m_gallery->drag(name, m_gallery->handle(name), m_gallery->handleAt(name, target));
            const float moved = number(effect, name);
            // A pixel of the slider.
            QVERIFY2(std::abs(moved - target) < (to - from) / 150,
                     qPrintable(nameOf(effect, name)));
            const QImage picture = after();
            QVERIFY2(picture != formerPicture, qPrintable(nameOf(effect, name)));
            formerPicture = picture;
        }
    }
}

void GalleryTest::doubleClickResetsASlider_data()
{
    QTest::addColumn<QString>("effectId");
    QTest::addColumn<QString>("property");
    QTest::addColumn<float>("value");
    QTest::newRow("neutral value") << brightnessContrast << QStringLiteral("contrast") << 0.0F;
    QTest::newRow("neutral, not default")
        << QStringLiteral("Sharpen") << QStringLiteral("strength") << 0.0F;
    QTest::newRow("default, for want of a neutral value")
        << QStringLiteral("Blur") << QStringLiteral("radius") << 1.0F;
    QTest::newRow("opacity") << colorFill << QStringLiteral("alpha") << 1.0F;
    QTest::newRow("scrolled out of view")
        << QStringLiteral("SelectiveSaturation") << QStringLiteral("alpha") << 1.0F;
}

void GalleryTest::doubleClickResetsASlider()
{
    QFETCH(QString, effectId);
    QFETCH(QString, property);
    QFETCH(float, value);
    const ImageEffect *effect = m_gallery->chooseEffect(effectId);
    QVERIFY(effect);
    m_gallery->click(property, {0.4, 0.5});
    QVERIFY(number(effect, property) != value);
    m_gallery->doubleClick(property, {0.7, 0.5});
    QCOMPARE(number(effect, property), value);
    QCOMPARE(number(m_gallery->find(property), QStringLiteral("value")), value);
}

void GalleryTest::deleteKeyResetsASlider()
{
    const ImageEffect *effect = m_gallery->chooseEffect(brightnessContrast);
    m_gallery->click(QStringLiteral("contrast"), {0.9, 0.5});
    QVERIFY(number(effect, QStringLiteral("contrast")) > 0.5F);
    m_gallery->press(Qt::Key_Delete);
    QCOMPARE(number(effect, QStringLiteral("contrast")), 0.0F);
}

void GalleryTest::arrowKeysMoveASlider()
{
    const ImageEffect *effect = m_gallery->chooseEffect(brightnessContrast);
    m_gallery->doubleClick(QStringLiteral("contrast"));
    m_gallery->press(Qt::Key_Right);
    m_gallery->press(Qt::Key_Right);
    QCOMPARE(number(effect, QStringLiteral("contrast")), 0.02F);
    m_gallery->press(Qt::Key_Left);
    QCOMPARE(number(effect, QStringLiteral("contrast")), 0.01F);
}

void GalleryTest::switchTurnsTheEffectOff()
{
    const ImageEffect *effect = m_gallery->chooseEffect(brightnessContrast);
    m_gallery->click(QStringLiteral("compare"));
    const QImage on = after();
    m_gallery->click(QStringLiteral("enabled"));
    QVERIFY(!effect->enabled());
    const QImage off = after();
    QVERIFY(off != on);
    m_gallery->click(QStringLiteral("enabled"));
    QVERIFY(effect->enabled());
    QCOMPARE(after(), on);
}

void GalleryTest::everyBlendModeCanBeChosen()
{
    ImageEffect *effect = m_gallery->chooseEffect(colorFill);
    m_gallery->click(QStringLiteral("compare"));
    const QMetaEnum modes = QMetaEnum::fromType<ImageEffect::BlendMode>();
    const QString control = QStringLiteral("blendMode");
    m_gallery->find(control)->forceActiveFocus();
    for (int i = 0; i < modes.keyCount(); ++i) {
        m_gallery->press(Qt::Key_Up);
    }
    QCOMPARE(effect->blendMode(), ImageEffect::Normal);
    QSet<int> chosen{effect->blendMode()};
    QImage former = after();
    for (int i = 1; i < modes.keyCount(); ++i) {
        m_gallery->press(Qt::Key_Down);
        chosen.insert(effect->blendMode());
        const QImage picture = after();
        QVERIFY2(picture != former, modes.valueToKey(effect->blendMode()));
        former = picture;
    }
    QCOMPARE(chosen.size(), modes.keyCount());
}

void GalleryTest::colourIsTypedAndMixed()
{
    const ImageEffect *effect = m_gallery->chooseEffect(colorFill);
    m_gallery->click(QStringLiteral("color"));
    QTest::keyClick(m_gallery->window(), Qt::Key_A, Qt::ControlModifier);
    m_gallery->type(QStringLiteral("#0000ff"));
    m_gallery->press(Qt::Key_Return);
    QCOMPARE(effect->property("color").value<QColor>(), QColor(Qt::blue));
    const QColor formerColor = after({0.9, 0.5});
    m_gallery->click(QStringLiteral("color.g"), {1.0, 0.5});
    QCOMPARE(effect->property("color").value<QColor>(), QColor(Qt::cyan));
    QVERIFY(after({0.9, 0.5}).green() > formerColor.green());
    m_gallery->doubleClick(QStringLiteral("color.b"));
    QCOMPARE(effect->property("color").value<QColor>(), QColor(Qt::red));
}

void GalleryTest::everyPresetTableLoads()
{
    const auto *effect =
        qobject_cast<LookupTableImageEffect *>(m_gallery->chooseEffect(QStringLiteral("LUT")));
    QVERIFY(effect);
    m_gallery->click(QStringLiteral("compare"));
    m_gallery->find(QStringLiteral("table.preset"))->forceActiveFocus();
    for (int i = 0; i < 7; ++i) {
        m_gallery->press(Qt::Key_Up);
    }
    const QImage identity = after();
    m_gallery->click(QStringLiteral("enabled"));
    const QImage plain = after();
    m_gallery->click(QStringLiteral("enabled"));
    QCOMPARE(identity, plain);
    m_gallery->find(QStringLiteral("table.preset"))->forceActiveFocus();
    QSet<QString> tables;
    for (int i = 0; i < 6; ++i) {
        m_gallery->press(Qt::Key_Down);
        QCOMPARE(effect->lut().size(), QSize(256, 1));
        tables.insert(effect->table().toString());
        QCOMPARE(m_gallery->find(QStringLiteral("table"))->property("text").toString(),
                 effect->table().toString());
    }
    QCOMPARE(tables.size(), 6);

    m_gallery->click(QStringLiteral("table"));
    QTest::keyClick(m_gallery->window(), Qt::Key_A, Qt::ControlModifier);
    m_gallery->type(QStringLiteral("qrc:/imagefx/lib/lut/fargo.png"));
    m_gallery->press(Qt::Key_Return);
    QCOMPARE(effect->table(), QUrl(QStringLiteral("qrc:/imagefx/lib/lut/fargo.png")));
}

void GalleryTest::nestedEffectsAreSwitchedAndFaded()
{
    const auto *batch =
        qobject_cast<BatchImageEffect *>(m_gallery->chooseEffect(QStringLiteral("Batch")));
    QVERIFY(batch);
    const ImageEffect *first = batch->imageEffectList().constFirst();
    const QImage all = after();
    m_gallery->drag(QStringLiteral("imageEffects.0.alpha"),
                    m_gallery->handle(QStringLiteral("imageEffects.0.alpha")), {0.2, 0.5});
    QVERIFY(first->alpha() < 0.3F);
    const QImage faded = after();
    QVERIFY(faded != all);
    m_gallery->click(QStringLiteral("imageEffects.0.enabled"));
    QVERIFY(!first->enabled());
    QVERIFY(after() != faded);
}

void GalleryTest::resetMakesTheEffectNeutral()
{
    ImageEffect *effect = m_gallery->chooseEffect(brightnessContrast);
    effect->setName(QStringLiteral("mine"));
    chooseMask(QStringLiteral("Hue"));
    m_gallery->click(QStringLiteral("alpha"), {0.5, 0.5});
    m_gallery->find(QStringLiteral("blendMode"))->forceActiveFocus();
    m_gallery->press(Qt::Key_Down);
    m_gallery->click(QStringLiteral("enabled"));
    m_gallery->click(QStringLiteral("reset"));
    QVERIFY(effect->isNeutral());
    QVERIFY(effect->enabled());
    QVERIFY(!effect->alphaMask());
    QCOMPARE(effect->alpha(), 1.0F);
    QCOMPARE(effect->blendMode(), ImageEffect::Normal);
    QCOMPARE(effect->name(), QString());
}

void GalleryTest::photographIsChosen()
{
    m_gallery->click(QStringLiteral("compare"));
    const QImage mountains = after();
    QVERIFY(mountains.width() > mountains.height());
    m_gallery->click(QStringLiteral("photograph.room"));
    const QImage room = after();
    QVERIFY(room.width() < room.height());
    m_gallery->click(QStringLiteral("photograph.friends"));
    QTRY_VERIFY(after() != room);
    m_gallery->click(QStringLiteral("photograph.mountains"));
    // A frame later: the picture is drawn again when the new photograph has become a texture.
    QTRY_COMPARE(after(), mountains);
}

void GalleryTest::arrowKeysChooseTheEffect()
{
    const ImageEffect *second = m_gallery->chooseEffect(1);
    const ImageEffect *first = m_gallery->chooseEffect(0);
    m_gallery->press(Qt::Key_Down);
    QCOMPARE(m_gallery->effect(), second);
    m_gallery->press(Qt::Key_Up);
    QCOMPARE(m_gallery->effect(), first);
}

void GalleryTest::tabKeyReachesEveryControl()
{
    m_gallery->chooseEffect(QStringLiteral("SelectiveSaturation"));
    chooseMask(QStringLiteral("Distance"));
    QSet<QString> reached;
    const QRectF inside(QPointF(), m_gallery->window()->size());
    for (int i = 0; i < 60; ++i) {
        m_gallery->press(Qt::Key_Tab);
        const QQuickItem *item = m_gallery->window()->activeFocusItem();
        reached.insert(item->objectName());
        QVERIFY2(inside.contains(item->mapRectToScene(QRectF(QPointF(), item->size()))),
                 qPrintable(item->objectName()));
    }
    QStringList controls = slidersOf(m_gallery->effect());
    for (const char *name :
         {"effect.3", "photograph.room", "compare", "reset", "export", "divider", "alphaMask.None",
          "alphaMask.Hue", "showMask", "mask.gradientInterpolation", "mask.enabled", "stop.0",
          "stop.1", "enabled", "alpha", "blendMode", "name"}) {
        controls.append(QString::fromLatin1(name));
    }
    for (const QString &name : qAsConst(controls)) {
        QVERIFY2(reached.contains(name), qPrintable(name));
    }
}

KORVEL_TEST_MAIN(GalleryTest)

#include "tst_gallery.moc"
