#include "HeadlessBackingStore.h"

#include "HeadlessWindow.h"

#include <QtGui/QPainter>

HeadlessBackingStore::~HeadlessBackingStore()
{
    if (m_shownIn)
        m_shownIn->setBackingStore(nullptr);
}

void HeadlessBackingStore::resize(const QSize &size, const QRegion &)
{
    const bool alpha = window()->requestedFormat().hasAlpha();
    const QImage::Format format =
        alpha ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
    if (m_image.size() == size && m_image.format() == format)
        return;
    m_image = QImage(size, format);
    m_image.fill(alpha ? Qt::transparent : Qt::black);
}

void HeadlessBackingStore::beginPaint(const QRegion &region)
{
    if (!m_image.hasAlphaChannel())
        return;
    QPainter painter(&m_image);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    for (const QRect &rect : region)
        painter.fillRect(rect, Qt::transparent);
}

// Child widgets with windows of their own flush this store too; only its own window shows it all.
void HeadlessBackingStore::flush(QWindow *target, const QRegion &, const QPoint &)
{
    if (target != window() || !target->handle())
        return;
    auto *shownIn = static_cast<HeadlessWindow *>(target->handle());
    if (shownIn == m_shownIn)
        return;
    m_shownIn = shownIn;
    m_shownIn->setBackingStore(this);
}
