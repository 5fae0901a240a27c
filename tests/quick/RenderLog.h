#pragma once

#include <QtCore/QStringList>

namespace ko::imagefx::test
{

// While it lives it collects the messages of category "korvel.imageeffect.time", which it switches
// on, from all threads; other messages pass. One at a time.
class RenderLog
{
public:
    enum Level { AsDelivered, DebugOn };

    explicit RenderLog(Level level = DebugOn);
    ~RenderLog();

    // The messages since the last call.
    QStringList taken();
    // The numbers of the passes in messages about one pass each, in order, then after a "/" the
    // number in the message about the whole frame. Text that is neither comes as it is.
    QStringList takenShort();
    // How many frames of how many items were rendered since the last call.
    int takenFrames();

private:
    Q_DISABLE_COPY(RenderLog)
};

} // namespace ko::imagefx::test
