#pragma once

#include "headless/HeadlessScreen.h"

#include <QtGui/QScreen>
#include <qpa/qwindowsysteminterface.h>

#include <atomic>

// Another screen, to the right of the one that every program on the headless platform has, for as
// long as this object lives. Qt takes its ratio from its resolution where the application has the
// attribute Qt::AA_EnableHighDpiScaling, and multiplies QT_SCALE_FACTOR by it.
class SecondScreen
{
public:
    explicit SecondScreen(int ratio)
    {
        QWindowSystemInterface::handleScreenAdded(m_handle);
        setRatio(ratio); // Qt scales nothing until a resolution is announced that needs it
    }
    ~SecondScreen() { QWindowSystemInterface::handleScreenRemoved(m_handle); }
    Q_DISABLE_COPY(SecondScreen)

    QScreen *screen() const { return m_handle->screen(); }

    // What a user does in the settings of a desktop: the windows of the screen stay on it.
    void setRatio(int ratio)
    {
        m_handle->m_ratio = ratio;
        const QDpi dpi = m_handle->logicalDpi();
        QWindowSystemInterface::handleScreenLogicalDotsPerInchChange(screen(), dpi.first,
                                                                     dpi.second);
        QWindowSystemInterface::flushWindowSystemEvents();
    }

private:
    class Handle : public HeadlessScreen
    {
    public:
        Handle() : HeadlessScreen(QSize(800, 600)) {}
        QRect geometry() const override { return HeadlessScreen::geometry().translated(1920, 0); }
        QString name() const override { return QStringLiteral("second"); }
        QDpi logicalBaseDpi() const override { return HeadlessScreen::logicalDpi(); }
        QDpi logicalDpi() const override
        {
            const QDpi base = logicalBaseDpi();
            return {base.first * m_ratio, base.second * m_ratio};
        }

        std::atomic_int m_ratio{1}; // render threads ask for the resolution at any time
    };

    Handle *m_handle = new Handle; // Qt owns it between the two announcements
};
