#include "imagefx/model/DistanceAlphaMask.h"
#include "imagefx/model/HueAlphaMask.h"
#include "imagefx/model/LuminanceAlphaMask.h"
#include "imagefx/render/AlphaMaskState.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/SignalOrder.h"
#include "tests/support/TestMain.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QPointer>
#include <QtGui/QOpenGLFunctions>
#include <QtQml/QQmlEngine>
#include <QtQml/QQmlListReference>
#include <QtTest/QSignalSpy>

using namespace ko::imagefx;
using ko::imagefx::test::OffscreenGl;
using ko::imagefx::test::SignalOrder;

namespace
{

void listenToAll(SignalOrder &order, AlphaMask *mask)
{
    order.listen(mask, &AlphaMask::enabledChanged, "enabled");
    order.listen(mask, &AlphaMask::gradientStopsChanged, "stops");
    order.listen(mask, &AlphaMask::gradientInterpolationChanged, "interpolation");
    order.listen(mask, &AlphaMask::gradientChanged, "gradient");
    order.listen(mask, &AlphaMask::updateRequired, "update");
}

QVector<int> texels(const AlphaMask &mask)
{
    const QImage gradient = mask.gradient();
    QVector<int> values;
    for (int x = 0; x < gradient.width(); ++x) {
        values.append(gradient.constScanLine(0)[x]);
    }
    return values;
}

void destroyDeferred()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

class AlphaMaskTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_gl.isValid()); }

    void stopStartsOpaqueAtTheBeginning()
    {
        const AlphaGradientStop stop;
        QCOMPARE(stop.location(), 0.0F);
        QCOMPARE(stop.value(), 1.0F);
    }

    void stopSettersClampAndStaySilentOnEqualValues()
    {
        AlphaGradientStop stop;
        QSignalSpy located(&stop, &AlphaGradientStop::locationChanged);
        QSignalSpy valued(&stop, &AlphaGradientStop::valueChanged);
        stop.setLocation(3.0F);
        QCOMPARE(stop.location(), 1.0F);
        stop.setLocation(2.0F);
        stop.setLocation(1.000001F);
        QCOMPARE(located.count(), 1);
        stop.setLocation(-1.0F);
        QCOMPARE(stop.location(), 0.0F);
        QCOMPARE(located.count(), 2);
        stop.setValue(1.5F);
        QCOMPARE(valued.count(), 0);
        stop.setValue(-0.5F);
        QCOMPARE(stop.value(), 0.0F);
        QCOMPARE(valued.count(), 1);
    }

    void stopConstructorDoesNotClamp()
    {
        const AlphaGradientStop stop(4.0F, -2.0F, nullptr);
        QCOMPARE(stop.location(), 4.0F);
        QCOMPARE(stop.value(), -2.0F);
    }

    void newMaskIsOnWithoutStopsAndHermite()
    {
        const HueAlphaMask mask;
        QVERIFY(mask.enabled());
        QVERIFY(mask.gradientStopList().isEmpty());
        QCOMPARE(mask.gradientInterpolation(), AlphaMask::HermiteInterpolation);
        QCOMPARE(mask.gradient().size(), QSize(512, 1));
        QCOMPARE(mask.gradient().format(), QImage::Format_Grayscale8);
    }

    void kindsReportTheirIds()
    {
        QCOMPARE(HueAlphaMask().maskId(), QStringLiteral("ko.orvanto.alphamask.Hue"));
        QCOMPARE(DistanceAlphaMask().maskId(), QStringLiteral("ko.orvanto.alphamask.Distance"));
        QCOMPARE(LuminanceAlphaMask().maskId(), QStringLiteral("ko.orvanto.alphamask.Luminance"));
    }

    void luminanceStateCarriesTheHueId()
    {
        QCOMPARE(LuminanceAlphaMask().currentState()->maskId(),
                 QStringLiteral("ko.orvanto.alphamask.Hue"));
        QCOMPARE(HueAlphaMask().currentState()->maskId(),
                 QStringLiteral("ko.orvanto.alphamask.Hue"));
        QCOMPARE(DistanceAlphaMask().currentState()->maskId(),
                 QStringLiteral("ko.orvanto.alphamask.Distance"));
    }

    void settersSignalThenAskForAnUpdate()
    {
        HueAlphaMask mask;
        SignalOrder order;
        listenToAll(order, &mask);
        mask.setEnabled(false);
        QCOMPARE(order.taken(), QStringLiteral("enabled update"));
        mask.setEnabled(false);
        QCOMPARE(order.taken(), QString());
        mask.setGradientInterpolation(AlphaMask::LinearInterpolation);
        QCOMPARE(order.taken(), QStringLiteral("interpolation update"));
        mask.setGradientInterpolation(AlphaMask::LinearInterpolation);
        QCOMPARE(order.taken(), QString());
    }

    void addedStopBelongsToTheMaskAndIsNotClamped()
    {
        DistanceAlphaMask mask;
        SignalOrder order;
        listenToAll(order, &mask);
        AlphaGradientStop *stop = mask.addGradientStop(1.5F, -0.5F);
        QCOMPARE(order.taken(), QStringLiteral("stops update"));
        QCOMPARE(stop->parent(), &mask);
        QCOMPARE(stop->location(), 1.5F);
        QCOMPARE(stop->value(), -0.5F);
        QCOMPARE(QQmlEngine::objectOwnership(stop), QQmlEngine::CppOwnership);
        stop->setLocation(0.5F);
        QCOMPARE(order.taken(), QStringLiteral("update"));
        stop->setValue(0.5F);
        QCOMPARE(order.taken(), QStringLiteral("update"));
    }

    void removedStopLivesOnUnheard()
    {
        DistanceAlphaMask mask;
        AlphaGradientStop *stop = mask.addGradientStop(0.0F, 1.0F);
        SignalOrder order;
        listenToAll(order, &mask);
        mask.removeGradientStop(stop);
        QCOMPARE(order.taken(), QStringLiteral("stops update"));
        QVERIFY(mask.gradientStopList().isEmpty());
        QCOMPARE(stop->parent(), &mask);
        stop->setValue(0.25F);
        QCOMPARE(order.taken(), QString());
        mask.removeGradientStop(stop);
        mask.removeGradientStop(nullptr);
        QCOMPARE(order.taken(), QString());
    }

    void newListTakesItsStopsAndDeletesTheOldOnes()
    {
        DistanceAlphaMask mask;
        const QPointer<AlphaGradientStop> first = mask.addGradientStop(0.0F, 0.0F);
        auto *second = new AlphaGradientStop(0.5F, 1.0F, nullptr);
        SignalOrder order;
        listenToAll(order, &mask);
        mask.setGradientStopList({second});
        QCOMPARE(order.taken(), QStringLiteral("stops update"));
        QCOMPARE(second->parent(), &mask);
        first->setValue(0.75F);
        QCOMPARE(order.taken(), QString());
        second->setValue(0.75F);
        QCOMPARE(order.taken(), QStringLiteral("update"));
        destroyDeferred();
        QVERIFY(first.isNull());
    }

    void stopThatIsListedAgainIsDeletedAllTheSame()
    {
        DistanceAlphaMask mask;
        const QPointer<AlphaGradientStop> stop = mask.addGradientStop(0.0F, 0.0F);
        mask.setGradientStopList({stop.data()});
        QCOMPARE(mask.gradientStopList().size(), 1);
        destroyDeferred();
        QVERIFY(stop.isNull());
        QVERIFY(mask.gradientStopList().isEmpty());
    }

    void slotMayDestroyStopsWhileTheListIsSet()
    {
        DistanceAlphaMask mask;
        AlphaGradientStop *former = mask.addGradientStop(0.0F, 0.0F);
        QPointer<AlphaGradientStop> latter = new AlphaGradientStop(0.5F, 0.5F, nullptr);
        connect(&mask, &AlphaMask::gradientStopsChanged, &mask, [former, latter] {
            delete former;
            delete latter.data();
        });
        mask.setGradientStopList({latter.data()});
        QVERIFY(latter.isNull());
        QVERIFY(mask.gradientStopList().isEmpty());
        mask.currentState();
        QCOMPARE(texels(mask), QVector<int>(512, 255));
    }

    void listPropertyNeitherAdoptsNorDeletes()
    {
        HueAlphaMask mask;
        AlphaGradientStop stop;
        QQmlListProperty<AlphaGradientStop> list = mask.gradientStops();
        SignalOrder order;
        listenToAll(order, &mask);
        list.append(&list, &stop);
        QCOMPARE(order.taken(), QStringLiteral("stops update"));
        QCOMPARE(stop.parent(), nullptr);
        QCOMPARE(list.count(&list), 1);
        QCOMPARE(list.at(&list, 0), &stop);
        QCOMPARE(list.at(&list, 1), nullptr);
        QCOMPARE(list.at(&list, -1), nullptr);
        list.clear(&list);
        QCOMPARE(order.taken(), QStringLiteral("stops update"));
        stop.setValue(0.5F);
        QCOMPARE(order.taken(), QString());
        list.clear(&list);
        QCOMPARE(order.taken(), QString());
    }

    void destroyedStopLeavesTheListSilently()
    {
        HueAlphaMask mask;
        auto *stop = new AlphaGradientStop(0.0F, 0.0F, nullptr);
        QQmlListProperty<AlphaGradientStop> list = mask.gradientStops();
        list.append(&list, stop);
        list.append(&list, stop);
        mask.removeGradientStop(stop);
        SignalOrder order;
        listenToAll(order, &mask);
        delete stop;
        QCOMPARE(order.taken(), QStringLiteral("update"));
        QVERIFY(mask.gradientStopList().isEmpty());
        mask.currentState();
        QCOMPARE(texels(mask), QVector<int>(512, 255));
    }

    void gradientIsRebuiltByCurrentStateAlone()
    {
        DistanceAlphaMask mask;
        mask.setGradientInterpolation(AlphaMask::LinearInterpolation);
        SignalOrder order;
        listenToAll(order, &mask);
        mask.addGradientStop(0.25F, 0.5F);
        QCOMPARE(order.taken(), QStringLiteral("stops update"));
        QCOMPARE(texels(mask), QVector<int>(512, 255));
        QCOMPARE(mask.intensityAtLocation(0.5F), 1.0F);
        mask.currentState();
        QCOMPARE(order.taken(), QStringLiteral("gradient"));
        QCOMPARE(texels(mask), QVector<int>(512, 128));
        QCOMPARE(mask.intensityAtLocation(0.5F), 128.0F / 255.0F);
        mask.currentState();
        QCOMPARE(order.taken(), QString());
    }

    void intensityIsClampedToTheGradient()
    {
        DistanceAlphaMask mask;
        mask.addGradientStop(0.0F, 0.25F);
        mask.addGradientStop(1.0F, 0.75F);
        mask.currentState();
        QCOMPARE(mask.intensityAtLocation(-1.0F), mask.intensityAtLocation(0.0F));
        QCOMPARE(mask.intensityAtLocation(0.0F), 64.0F / 255.0F);
        QCOMPARE(mask.intensityAtLocation(1.0F), 191.0F / 255.0F);
        QCOMPARE(mask.intensityAtLocation(5.0F), mask.intensityAtLocation(1.0F));
    }

    void hueGradientIsCyclicAndTheOthersAreNot()
    {
        HueAlphaMask hue;
        DistanceAlphaMask distance;
        LuminanceAlphaMask luminance;
        for (AlphaMask *mask : {static_cast<AlphaMask *>(&hue), static_cast<AlphaMask *>(&distance),
                                static_cast<AlphaMask *>(&luminance)}) {
            mask->setGradientInterpolation(AlphaMask::LinearInterpolation);
            mask->addGradientStop(0.0F, 1.0F);
            mask->addGradientStop(0.5F, 0.0F);
            mask->currentState();
            QCOMPARE(texels(*mask).at(256), 0);
            QCOMPARE(texels(*mask).at(384), mask == &hue ? 128 : 0);
            QCOMPARE(texels(*mask).at(511), mask == &hue ? 255 : 0);
        }
    }

    void stateIsMadeOnceAndFollowsTheMask()
    {
        HueAlphaMask mask;
        const QSharedPointer<AlphaMaskState> state = mask.currentState();
        QVERIFY(!state->disabled());
        mask.setEnabled(false);
        QVERIFY(!state->disabled());
        QCOMPARE(mask.currentState(), state);
        QVERIFY(state->disabled());
    }

    void stateUploadsTheGradientOnUnitFour()
    {
        QOpenGLFunctions *gl = m_gl.context()->functions();
        DistanceAlphaMask mask;
        mask.addGradientStop(0.0F, 0.5F);
        const QSharedPointer<AlphaMaskState> state = mask.currentState();
        GLint unit = 0;
        GLint texture = 0;
        gl->glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
        QCOMPARE(unit, GL_TEXTURE0 + 4);
        gl->glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
        QVERIFY(texture != 0);
        QCOMPARE(uploadedTexels(), QByteArray(512, char(128)));
        gl->glBindTexture(GL_TEXTURE_2D, 0);
        gl->glActiveTexture(GL_TEXTURE0);
        state->updatePass({}, nullptr);
        GLint again = 0;
        gl->glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
        QCOMPARE(unit, GL_TEXTURE0 + 4);
        gl->glGetIntegerv(GL_TEXTURE_BINDING_2D, &again);
        QCOMPARE(again, texture);
    }

    void textureDiesWithItsStateWhenAContextIsCurrent()
    {
        QOpenGLFunctions *gl = m_gl.context()->functions();
        GLint texture = 0;
        {
            const DistanceAlphaMask mask;
            const auto state = mask.currentState();
            gl->glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
            QVERIFY(gl->glIsTexture(GLuint(texture)));
        }
        QVERIFY(!gl->glIsTexture(GLuint(texture)));
    }

    void stateOutlivesItsMaskAndItsContext()
    {
        auto *mask = new DistanceAlphaMask;
        const QSharedPointer<AlphaMaskState> state = mask->currentState();
        delete mask;
        m_gl.doneCurrent();
        QCOMPARE(state->maskId(), QStringLiteral("ko.orvanto.alphamask.Distance"));
        QVERIFY(m_gl.makeCurrent());
    }

    // An application closes its window and opens another: the table is made again there.
    void gradientFollowsToAnotherContext()
    {
        DistanceAlphaMask mask;
        mask.addGradientStop(0.0F, 0.25F);
        const QSharedPointer<AlphaMaskState> state = mask.currentState();
        {
            OffscreenGl other;
            QVERIFY(other.isValid());
            state->updatePass({}, nullptr);
            QCOMPARE(uploadedTexels(), QByteArray(512, char(64)));
        }
        QVERIFY(m_gl.makeCurrent());
        state->updatePass({}, nullptr);
        QCOMPARE(uploadedTexels(), QByteArray(512, char(64)));
    }

private:
    // The alpha channel of the texture bound on the active unit.
    static QByteArray uploadedTexels()
    {
        using GetTexImage = void(QOPENGLF_APIENTRYP)(GLenum, GLint, GLenum, GLenum, void *);
        const auto getTexImage = reinterpret_cast<GetTexImage>(
            QOpenGLContext::currentContext()->getProcAddress("glGetTexImage"));
        QByteArray bytes(512, '\0');
        getTexImage(GL_TEXTURE_2D, 0, GL_ALPHA, GL_UNSIGNED_BYTE, bytes.data());
        return bytes;
    }

    OffscreenGl m_gl;
};

KORVEL_TEST_MAIN(AlphaMaskTest)

#include "tst_alphamask.moc"
