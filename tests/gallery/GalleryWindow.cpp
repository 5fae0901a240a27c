#include "tests/gallery/GalleryWindow.h"

#include "examples/gallery/Gallery.h"

#include <QtCore/QFileInfo>
#include <QtCore/QThread>
#include <QtGui/QWheelEvent>
#include <QtTest/QTest>

#include <algorithm>

#include <unistd.h>

namespace ko::imagefx::test
{

namespace
{

constexpr int longestWait = 5000; // ms, for a machine that does much else

bool isRunning(long thread)
{
    return QFileInfo::exists(QStringLiteral("/proc/self/task/%1").arg(thread));
}

QQuickItem *findBelow(QQuickItem *item, const QString &name)
{
    if (!item->isVisible()) {
        return nullptr;
    }
    if (item->objectName() == name) {
        return item;
    }
    const QList<QQuickItem *> children = item->childItems();
    for (QQuickItem *child : children) {
        if (QQuickItem *found = findBelow(child, name)) {
            return found;
        }
    }
    return nullptr;
}

bool isShownBelow(const QQuickItem *item, const QString &part)
{
    if (!item->isVisible()) {
        return false;
    }
    const QList<QQuickItem *> children = item->childItems();
    return item->property("text").toString().contains(part) ||
           std::any_of(children.begin(), children.end(),
                       [&](const QQuickItem *child) { return isShownBelow(child, part); });
}

QPointF within(const QQuickItem *item, const QPointF &position)
{
    return {item->width() * position.x(), item->height() * position.y()};
}

} // namespace

GalleryWindow::GalleryWindow(QQmlApplicationEngine *engine)
{
    loadGallery(engine);
    if (engine->rootObjects().isEmpty()) {
        return;
    }
    m_window.reset(qobject_cast<QQuickWindow *>(engine->rootObjects().constLast()));
    if (!m_window) {
        return;
    }
    QObject::connect(
        m_window.get(), &QQuickWindow::afterRendering, m_window.get(),
        [this] { m_renderThread = gettid(); }, Qt::DirectConnection);
    if (!QTest::qWaitForWindowExposed(m_window.get())) {
        m_window.reset();
    }
}

GalleryWindow::~GalleryWindow()
{
    m_window.reset();
    const bool threaded = m_renderThread != 0 && m_renderThread != gettid();
    for (int i = 0; threaded && isRunning(m_renderThread) && i < longestWait; ++i) {
        QThread::msleep(1);
    }
}

QQuickItem *GalleryWindow::find(const QString &name) const
{
    return findBelow(m_window->contentItem(), name);
}

bool GalleryWindow::showsText(const QString &part) const
{
    return isShownBelow(m_window->contentItem(), part);
}

ImageEffect *GalleryWindow::chooseEffect(int index)
{
    const QString item = QStringLiteral("effect.%1").arg(index);
    if (find(item) == nullptr) {
        return nullptr;
    }
    click(item);
    return effect();
}

ImageEffect *GalleryWindow::chooseEffect(const QString &effectId)
{
    for (int i = 0; const ImageEffect *effect = effectAt(i); ++i) {
        if (effect->effectId().endsWith(QLatin1Char('.') + effectId)) {
            return chooseEffect(i);
        }
    }
    return nullptr;
}

ImageEffect *GalleryWindow::effectAt(int index) const
{
    const QQuickItem *item = find(QStringLiteral("effect.%1").arg(index));
    const QObject *entry = item ? item->property("modelData").value<QObject *>() : nullptr;
    return entry ? entry->property("effect").value<ImageEffect *>() : nullptr;
}

ImageEffect *GalleryWindow::effect() const
{
    return m_window->property("effect").value<ImageEffect *>();
}

QPoint GalleryWindow::point(const QString &name, const QPointF &position)
{
    QQuickItem *item = find(name);
    if (item == nullptr) {
        qWarning().noquote() << "there is no" << name;
        return {};
    }
    const QRect inside(QPoint(), m_window->size());
    if (!inside.contains(item->mapToScene(within(item, position)).toPoint())) {
        item->forceActiveFocus();
        m_window->grabWindow();
    }
    return item->mapToScene(within(item, position)).toPoint();
}

void GalleryWindow::click(const QString &item, const QPointF &position, Qt::MouseButton button)
{
    QTest::mouseClick(m_window.get(), button, {}, point(item, position));
}

void GalleryWindow::doubleClick(const QString &item, const QPointF &position)
{
    QTest::mouseDClick(m_window.get(), Qt::LeftButton, {}, point(item, position));
    // What the gallery puts off to the next turn of the event loop.
    QCoreApplication::processEvents();
}

void GalleryWindow::drag(const QString &item, const QPointF &from, const QPointF &to)
{
    const QPoint start = point(item, from);
    const QPoint end = point(item, to);
    QTest::mousePress(m_window.get(), Qt::LeftButton, {}, start);
    // A few steps, as of a hand: a drag begins only some pixels away from its start.
    for (int step = 1; step <= 4; ++step) {
        QTest::mouseMove(m_window.get(), start + (end - start) * step / 4);
    }
    QTest::mouseRelease(m_window.get(), Qt::LeftButton, {}, end);
}

void GalleryWindow::wheel(const QString &item, const QPointF &position, int notches)
{
    const QPoint place = point(item, position);
    QWheelEvent event(place, m_window->mapToGlobal(place), QPoint(), QPoint(0, 120 * notches),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(m_window.get(), &event);
}

void GalleryWindow::press(Qt::Key key)
{
    QTest::keyClick(m_window.get(), key);
}

void GalleryWindow::type(const QString &text)
{
    for (const QChar character : text) {
        QTest::keyClick(m_window.get(), character.toLatin1());
    }
}

QPointF GalleryWindow::handle(const QString &slider)
{
    return handleAt(slider, find(slider)->property("value").toReal());
}

QPointF GalleryWindow::handleAt(const QString &name, qreal value)
{
    const QQuickItem *slider = find(name);
    const qreal from = slider->property("from").toReal();
    const qreal share = (value - from) / (slider->property("to").toReal() - from);
    const qreal radius = slider->property("handle").value<QQuickItem *>()->width() / 2;
    return {(radius + share * (slider->width() - 2 * radius)) / slider->width(), 0.5};
}

QImage GalleryWindow::picture(const QString &name)
{
    const QImage shown = m_window->grabWindow();
    const QQuickItem *item = find(name);
    const QRectF place = item->mapRectToScene(QRectF(QPointF(), item->size()));
    const qreal ratio = shown.devicePixelRatio();
    return shown.copy(QRectF(place.topLeft() * ratio, place.size() * ratio).toRect());
}

QColor GalleryWindow::color(const QString &item, const QPointF &position)
{
    const QImage image = picture(item);
    return image.pixelColor(int((image.width() - 1) * position.x()),
                            int((image.height() - 1) * position.y()));
}

} // namespace ko::imagefx::test
