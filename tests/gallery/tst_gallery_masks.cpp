#include "tests/gallery/GalleryFixture.h"
#include "tests/support/TestMain.h"

#include <cmath>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

int redness(const QColor &color)
{
    return color.red() - (color.green() + color.blue()) / 2;
}

const QString colorFill = QStringLiteral("ColorFill");
const QString brightnessContrast = QStringLiteral("BrightnessContrast");

} // namespace

// The masks with their gradients, and the picture before and after.
class GalleryMaskTest : public GalleryFixture
{
    Q_OBJECT

private Q_SLOTS:
    void everyMaskKindCanBeChosen();
    void everyEffectKeepsItsMasks();
    void maskIsSwitchedOff();
    void interpolationIsChosen();
    void clickOnTheGradientAddsAStop();
    void stopIsDragged();
    void stopDraggedOutIsRemoved();
    void stopIsRemovedByRightClickAndByKey();
    void wheelAndArrowKeysChangeAStop();
    void plotShowsTheGradientOfTheMask();
    void maskViewIsRedWhereTheMaskHoldsBack();

    void dividerHasBeforeOnTheLeftAndAfterOnTheRight();
    void dividerFollowsMouseAndKeys();
    void comparisonIsSwitchedOff();
};

void GalleryMaskTest::everyMaskKindCanBeChosen()
{
    m_gallery->chooseEffect(brightnessContrast);
    m_gallery->click(QStringLiteral("compare"));
    const QImage whole = after();
    for (const char *kind : {"Distance", "Hue", "Luminance"}) {
        const QString title = QString::fromLatin1(kind);
        const AlphaMask *mask = chooseMask(title);
        QVERIFY2(mask, kind);
        QCOMPARE(mask->maskId().section(QLatin1Char('.'), -1), title);
        QVERIFY2(after() != whole, kind);
        for (const QString &name : propertiesOf(mask, AlphaMask::staticMetaObject)) {
            QVERIFY2(
                m_gallery->find(QStringLiteral("mask.") + name),
                qPrintable(title + QLatin1Char(' ') + name + QLatin1String(" has no control")));
        }
        QVERIFY2(!chooseMask(QStringLiteral("None")), kind);
        QCOMPARE(after(), whole);
    }
}

void GalleryMaskTest::everyEffectKeepsItsMasks()
{
    const ImageEffect *first = m_gallery->chooseEffect(0);
    const AlphaMask *mask = chooseMask(QStringLiteral("Hue"));
    const ImageEffect *second = m_gallery->chooseEffect(1);
    QVERIFY(!second->alphaMask());
    QVERIFY(chooseMask(QStringLiteral("Hue")) != mask);
    m_gallery->chooseEffect(0);
    QCOMPARE(first->alphaMask(), mask);
}

void GalleryMaskTest::maskIsSwitchedOff()
{
    m_gallery->click(QStringLiteral("compare"));
    const QImage whole = after();
    const AlphaMask *mask = chooseMask(QStringLiteral("Distance"));
    m_gallery->click(QStringLiteral("mask.enabled"));
    QVERIFY(!mask->enabled());
    QCOMPARE(after(), whole);
}

void GalleryMaskTest::interpolationIsChosen()
{
    const AlphaMask *mask = chooseMask(QStringLiteral("Distance"));
    const QImage hermite = m_gallery->picture(QStringLiteral("gradientPlot"));
    m_gallery->find(QStringLiteral("mask.gradientInterpolation"))->forceActiveFocus();
    m_gallery->press(Qt::Key_Up);
    QCOMPARE(mask->gradientInterpolation(), AlphaMask::LinearInterpolation);
    QTRY_VERIFY(m_gallery->picture(QStringLiteral("gradientPlot")) != hermite);
    m_gallery->press(Qt::Key_Up);
    QCOMPARE(mask->gradientInterpolation(), AlphaMask::ConstantInterpolation);
}

void GalleryMaskTest::clickOnTheGradientAddsAStop()
{
    const AlphaMask *mask = chooseMask(QStringLiteral("Distance"));
    const QImage former = after();
    m_gallery->click(QStringLiteral("mask.gradientStops"), placeInPlot(0.5F, 0.25F));
    QCOMPARE(mask->gradientStopList().size(), 3);
    const AlphaGradientStop *stop = mask->gradientStopList().constLast();
    QVERIFY(std::abs(stop->location() - 0.5F) < 0.01F);
    QVERIFY(std::abs(stop->value() - 0.25F) < 0.03F);
    QVERIFY(after() != former);
}

void GalleryMaskTest::stopIsDragged()
{
    const AlphaMask *mask = chooseMask(QStringLiteral("Distance"));
    const AlphaGradientStop *stop = mask->gradientStopList().constFirst();
    const QImage former = after();
    m_gallery->drag(QStringLiteral("mask.gradientStops"),
                    placeInPlot(stop->location(), stop->value()), placeInPlot(0.6F, 0.5F));
    QCOMPARE(mask->gradientStopList().size(), 2);
    QVERIFY(std::abs(stop->location() - 0.6F) < 0.01F);
    QVERIFY(std::abs(stop->value() - 0.5F) < 0.03F);
    QVERIFY(after() != former);
}

void GalleryMaskTest::stopDraggedOutIsRemoved()
{
    const AlphaMask *mask = chooseMask(QStringLiteral("Distance"));
    const AlphaGradientStop *kept = mask->gradientStopList().constLast();
    m_gallery->drag(QStringLiteral("stop.0"), {0.5, 0.5}, {0.5, -12.0});
    QCOMPARE(mask->gradientStopList(),
             QList<AlphaGradientStop *>({const_cast<AlphaGradientStop *>(kept)}));
    // Without any stop the whole effect shows.
    m_gallery->drag(QStringLiteral("stop.0"), {0.5, 0.5}, {0.5, -12.0});
    QVERIFY(mask->gradientStopList().isEmpty());
    QVERIFY(m_gallery->find(QStringLiteral("stop.0")) == nullptr);
}

void GalleryMaskTest::stopIsRemovedByRightClickAndByKey()
{
    const AlphaMask *mask = chooseMask(QStringLiteral("Hue"));
    QCOMPARE(mask->gradientStopList().size(), 3);
    m_gallery->click(QStringLiteral("stop.1"), {0.5, 0.5}, Qt::RightButton);
    QCOMPARE(mask->gradientStopList().size(), 2);
    m_gallery->click(QStringLiteral("stop.1"));
    QCOMPARE(mask->gradientStopList().size(), 2);
    m_gallery->press(Qt::Key_Delete);
    QCOMPARE(mask->gradientStopList().size(), 1);
}

void GalleryMaskTest::wheelAndArrowKeysChangeAStop()
{
    const AlphaMask *mask = chooseMask(QStringLiteral("Distance"));
    const AlphaGradientStop *stop = mask->gradientStopList().constFirst();
    QCOMPARE(stop->value(), 0.0F);
    m_gallery->wheel(QStringLiteral("stop.0"), {0.5, 0.5}, 2);
    QCOMPARE(stop->value(), 0.1F);
    m_gallery->find(QStringLiteral("stop.0"))->forceActiveFocus();
    m_gallery->press(Qt::Key_Up);
    QCOMPARE(stop->value(), 0.11F);
    m_gallery->press(Qt::Key_Right);
    QCOMPARE(stop->location(), 0.21F);
}

void GalleryMaskTest::plotShowsTheGradientOfTheMask()
{
    // Also of an effect that is off, which draws nothing.
    m_gallery->click(QStringLiteral("enabled"));
    const AlphaMask *mask = chooseMask(QStringLiteral("Distance"));
    m_gallery->click(QStringLiteral("mask.gradientStops"), placeInPlot(0.5F, 0.9F));
    for (const float location : {0.1F, 0.3F, 0.4F, 0.6F, 0.9F}) {
        const QQuickItem *plot = m_gallery->find(QStringLiteral("gradientPlot"));
        const qreal strip = plot->property("stripCentre").toReal() / plot->height();
        const QPointF place(placeInPlot(location, 0.0F).x(), strip);
        const int expected = qRound(255 * mask->intensityAtLocation(location));
        // A pixel of the plot to either side, on the steepest slope.
        QTRY_VERIFY(std::abs(m_gallery->color(QStringLiteral("gradientPlot"), place).red() -
                             qRound(255 * mask->intensityAtLocation(location))) <= 6);
        QVERIFY(location != 0.4F || (expected > 100 && expected < 230));
    }
}

void GalleryMaskTest::maskViewIsRedWhereTheMaskHoldsBack()
{
    m_gallery->click(QStringLiteral("compare"));
    chooseMask(QStringLiteral("Distance"));
    const QColor centre = after({0.5, 0.5});
    const QColor corner = after({0.0, 0.0});
    m_gallery->click(QStringLiteral("showMask"));
    QVERIFY(redness(after({0.5, 0.5})) > redness(centre) + 60);
    QCOMPARE(after({0.0, 0.0}), corner);

    // The next effect shows its mask, too; without a mask there is nothing to show.
    m_gallery->chooseEffect(QStringLiteral("Exposure"));
    const int plain = redness(after({0.5, 0.5}));
    chooseMask(QStringLiteral("Distance"));
    QVERIFY(redness(after({0.5, 0.5})) > plain + 60);
}

void GalleryMaskTest::dividerHasBeforeOnTheLeftAndAfterOnTheRight()
{
    m_gallery->chooseEffect(brightnessContrast);
    m_gallery->click(QStringLiteral("enabled"));
    const QImage plain = frame();
    m_gallery->click(QStringLiteral("enabled"));
    const QImage both = frame();
    // Below the captions.
    const int top = plain.height() / 10;
    const QRect left(0, top, plain.width() / 2 - 30, plain.height() - top);
    const QRect right = left.translated(plain.width() / 2 + 30, 0);
    QCOMPARE(both.copy(left), plain.copy(left));
    QVERIFY(both.copy(right) != plain.copy(right));
    m_gallery->click(QStringLiteral("compare"));
    QCOMPARE(both.copy(right), frame().copy(right));
}

void GalleryMaskTest::dividerFollowsMouseAndKeys()
{
    const ImageEffect *fill = m_gallery->chooseEffect(colorFill);
    m_gallery->doubleClick(QStringLiteral("alpha"));
    m_gallery->find(QStringLiteral("blendMode"))->forceActiveFocus();
    for (int i = 0; i < 16; ++i) {
        m_gallery->press(Qt::Key_Up);
    }
    const auto color = fill->property("color").value<QColor>();
    QVERIFY(frame({0.3, 0.8}) != color);
    QCOMPARE(frame({0.7, 0.8}), color);

    m_gallery->drag(QStringLiteral("divider"), {0.5, 0.8}, {0.2, 0.8});
    QCOMPARE(frame({0.3, 0.8}), color);
    QVERIFY(frame({0.15, 0.8}) != color);

    m_gallery->drag(QStringLiteral("divider"), {0.2, 0.8}, {0.8, 0.8});
    QVERIFY(frame({0.7, 0.8}) != color);
    QCOMPARE(frame({0.9, 0.8}), color);

    for (int i = 0; i < 10; ++i) {
        m_gallery->press(Qt::Key_Left);
    }
    QCOMPARE(frame({0.7, 0.8}), color);
}

void GalleryMaskTest::comparisonIsSwitchedOff()
{
    m_gallery->click(QStringLiteral("enabled"));
    const QImage plain = frame();
    m_gallery->click(QStringLiteral("enabled"));
    m_gallery->click(QStringLiteral("compare"));
    const QImage compared = frame();
    const QRect left(0, 100, plain.width() / 4, plain.height() / 2);
    QVERIFY(compared.copy(left) != plain.copy(left));
    QVERIFY(!m_gallery->find(QStringLiteral("divider")));
}

KORVEL_TEST_MAIN(GalleryMaskTest)

#include "tst_gallery_masks.moc"
