#pragma once

#include "imagefx/model/AlphaMask.h"
#include "tests/gallery/GalleryWindow.h"

#include <memory>

namespace ko::imagefx::test
{

// The properties that `object` has from its class and the classes up to `base`, that one included.
QStringList propertiesOf(const QObject *object, const QMetaObject &base);

// A fresh gallery for each test function, worked by mouse and keyboard. No step may cause a
// warning.
class GalleryFixture : public QObject
{
    Q_OBJECT

protected Q_SLOTS:
    void init();
    void cleanup();

protected:
    // What has been warned of so far in this test function, which is not held against it any more.
    static QStringList takeWarnings();
    // The whole picture with both sides of the divider, and the side of the effect.
    QImage frame() const { return m_gallery->picture(QStringLiteral("before")); }
    QColor frame(const QPointF &at) const { return m_gallery->color(QStringLiteral("before"), at); }
    QImage after() const { return m_gallery->picture(QStringLiteral("after")); }
    QColor after(const QPointF &at) const { return m_gallery->color(QStringLiteral("after"), at); }
    AlphaMask *chooseMask(const QString &title);
    QPointF placeInPlot(float location, float value) const;

    std::unique_ptr<GalleryWindow> m_gallery;

private:
    QQmlApplicationEngine m_engine;
};

} // namespace ko::imagefx::test
