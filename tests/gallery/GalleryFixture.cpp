#include "tests/gallery/GalleryFixture.h"

#include <QtCore/QMetaProperty>
#include <QtCore/QMutex>
#include <QtTest/QTest>

namespace ko::imagefx::test
{

namespace
{

QMutex warningsMutex;
QStringList warnings;

void collectWarning(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    Q_UNUSED(context)
    if (type != QtDebugMsg && type != QtInfoMsg) {
        const QMutexLocker lock(&warningsMutex);
        warnings.append(message);
    }
}

} // namespace

// The properties that `object` has from its class and the classes up to `base`, that one included.
QStringList propertiesOf(const QObject *object, const QMetaObject &base)
{
    QStringList names;
    for (int i = base.propertyOffset(); i < object->metaObject()->propertyCount(); ++i) {
        names.append(QString::fromLatin1(object->metaObject()->property(i).name()));
    }
    return names;
}

void GalleryFixture::init()
{
    warnings.clear();
    qInstallMessageHandler(collectWarning);
    m_gallery = std::make_unique<GalleryWindow>(&m_engine);
    QVERIFY2(m_gallery->isShown(), qPrintable(warnings.join(QLatin1Char('\n'))));
}

void GalleryFixture::cleanup()
{
    // First what the render thread still has to tell: Qt forgets to free a signal whose sender is
    // gone when it arrives.
    QCoreApplication::processEvents();
    m_gallery.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    qInstallMessageHandler(nullptr);
    QCOMPARE(warnings, QStringList());
}

QStringList GalleryFixture::takeWarnings()
{
    const QMutexLocker lock(&warningsMutex);
    QStringList taken;
    taken.swap(warnings);
    return taken;
}

AlphaMask *GalleryFixture::chooseMask(const QString &title)
{
    m_gallery->click(QStringLiteral("alphaMask.") + title);
    return m_gallery->effect()->alphaMask();
}

// Relative to the gradient editor, so that it can be clicked on.
QPointF GalleryFixture::placeInPlot(float location, float value) const
{
    const QQuickItem *editor = m_gallery->find(QStringLiteral("mask.gradientStops"));
    QQuickItem *plot = m_gallery->find(QStringLiteral("gradientPlot"));
    QVariant x;
    QVariant y;
    QMetaObject::invokeMethod(plot, "xOf", Q_RETURN_ARG(QVariant, x), Q_ARG(QVariant, location));
    QMetaObject::invokeMethod(plot, "yOf", Q_RETURN_ARG(QVariant, y), Q_ARG(QVariant, value));
    return {x.toReal() / editor->width(), y.toReal() / editor->height()};
}

} // namespace ko::imagefx::test
