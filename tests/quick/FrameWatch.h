#pragma once

#include <QtCore/QList>
#include <QtCore/QMutex>
#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtGui/QImage>

#include <atomic>

class QQuickWindow;

namespace ko::imagefx::test
{

// Watches the frames of a window, whichever thread draws them. Made before the window is shown it
// sees the first one. The window has to be gone, or hidden, before its watch. GUI thread.
class FrameWatch
{
public:
    // Copies the first `pictures` frames.
    explicit FrameWatch(QQuickWindow *window, int pictures = 0);
    ~FrameWatch();

    // Since the watch was made.
    int frames() const { return m_frames; }
    // True when as many frames came within a few seconds.
    bool waitFor(int frames) const;
    // Lets events pass until no frame has come for a while, or a few seconds are over.
    void waitForQuiet() const;

    // The first frames as they were sent to the screen, scan line 0 at the top, RGBA.
    QList<QImage> pictures() const;
    // What OpenGL had to complain about, one entry a frame; empty when all went well.
    QStringList glErrors() const;

private:
    Q_DISABLE_COPY(FrameWatch)

    void look();

    QQuickWindow *const m_window;
    const int m_wantedPictures;
    QObject m_context;
    std::atomic<int> m_frames{0};
    mutable QMutex m_mutex; // guards what follows
    QList<QImage> m_pictures;
    QStringList m_glErrors;
};

} // namespace ko::imagefx::test
