#pragma once

#include "imagefx/model/ImageEffect.h"

#include <QtCore/QStringList>
#include <QtGui/QImage>
#include <QtQml/QQmlApplicationEngine>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>

#include <atomic>
#include <memory>

namespace ko::imagefx::test
{

// The gallery's window, worked as a user does: by mouse and keyboard. Items go by their objectName.
class GalleryWindow
{
public:
    // `engine` may have shown galleries before; it keeps what it compiled for them.
    explicit GalleryWindow(QQmlApplicationEngine *engine);
    // Returns when the render thread is gone for good: a program that ends earlier lets the driver
    // tidy up twice, by the thread and at exit.
    ~GalleryWindow();

    // False when the gallery did not load.
    bool isShown() const { return m_window != nullptr; }
    QQuickWindow *window() const { return m_window.get(); }

    // The visible item of that name; null when there is none.
    QQuickItem *find(const QString &name) const;
    // Whether a visible item has a text with `part` in it, tool tips too.
    bool showsText(const QString &part) const;
    // Clicks on the effect in the list; null when it is not there.
    ImageEffect *chooseEffect(int index);
    ImageEffect *chooseEffect(const QString &effectId);
    ImageEffect *effect() const;

    // Positions are relative to the item: (0, 0) is its top left corner, (1, 1) its bottom right
    // one. What is scrolled out of view is scrolled into view.
    QPoint point(const QString &item, const QPointF &position = QPointF(0.5, 0.5));
    void click(const QString &item, const QPointF &position = QPointF(0.5, 0.5),
               Qt::MouseButton button = Qt::LeftButton);
    void doubleClick(const QString &item, const QPointF &position = QPointF(0.5, 0.5));
    void drag(const QString &item, const QPointF &from, const QPointF &to);
    void wheel(const QString &item, const QPointF &position, int notches);
    void press(Qt::Key key);
    void type(const QString &text);

    // Where the middle of a slider's handle is, and would be for a value.
    QPointF handle(const QString &slider);
    QPointF handleAt(const QString &slider, qreal value);

    // What the item's place in the window shows.
    QImage picture(const QString &item);
    QColor color(const QString &item, const QPointF &position = QPointF(0.5, 0.5));

private:
    Q_DISABLE_COPY(GalleryWindow)

    ImageEffect *effectAt(int index) const;

    std::unique_ptr<QQuickWindow> m_window;
    std::atomic<long> m_renderThread{0}; // as the system numbers it
};

} // namespace ko::imagefx::test
