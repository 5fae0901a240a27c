#include "HeadlessScreen.h"

#include "HeadlessBackingStore.h"
#include "HeadlessWindow.h"

#include <QtGui/QGuiApplication>
#include <QtGui/QPainter>
#include <QtGui/QPixmap>
#include <qpa/qwindowsysteminterface.h>

#include <algorithm>

QSizeF HeadlessScreen::physicalSize() const
{
    const qreal millimetresPerPixel = 25.4 / 96;
    return QSizeF(m_size) * millimetresPerPixel;
}

QWindow *HeadlessScreen::topLevelAt(const QPoint &point) const
{
    for (auto it = m_stack.crbegin(); it != m_stack.crend(); ++it) {
        QWindow *window = (*it)->window();
        if (window->isTopLevel() && (*it)->isExposed() && (*it)->geometry().contains(point) &&
            !(window->flags() & Qt::WindowTransparentForInput)) {
            return window;
        }
    }
    return nullptr;
}

QPixmap HeadlessScreen::grabWindow(WId id, int x, int y, int width, int height) const
{
    const auto target = std::find_if(m_stack.cbegin(), m_stack.cend(),
                                     [id](const HeadlessWindow *w) { return w->winId() == id; });
    if (id != 0 && target == m_stack.cend())
        return QPixmap();
    const QSize size = id == 0 ? m_size : (*target)->geometry().size();
    QImage image(width < 0 ? size.width() - x : width, height < 0 ? size.height() - y : height,
                 QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return QPixmap();
    image.fill(id == 0 ? Qt::black : Qt::transparent);
    QPainter painter(&image);
    painter.translate(-x, -y);
    for (const HeadlessWindow *window : m_stack) {
        if (!window->backingStore() || !window->isExposed() || (id != 0 && window != *target))
            continue;
        const QPoint origin = id == 0 ? window->mapToGlobal(QPoint()) : QPoint();
        painter.drawImage(origin, window->backingStore()->image());
    }
    painter.end();
    return QPixmap::fromImage(std::move(image));
}

void HeadlessScreen::add(HeadlessWindow *window)
{
    m_stack.append(window);
}

void HeadlessScreen::remove(HeadlessWindow *window)
{
    if (!m_stack.removeOne(window) || QGuiApplication::focusWindow() != window->window())
        return;
    const auto next = std::find_if(m_stack.crbegin(), m_stack.crend(),
                                   [](const HeadlessWindow *w) { return w->wantsActivation(); });
    QWindowSystemInterface::handleWindowActivated(next == m_stack.crend() ? nullptr
                                                                          : (*next)->window());
}

void HeadlessScreen::raise(HeadlessWindow *window)
{
    if (m_stack.removeOne(window))
        m_stack.append(window);
}

void HeadlessScreen::lower(HeadlessWindow *window)
{
    if (m_stack.removeOne(window))
        m_stack.prepend(window);
}
