#pragma once

#include <QtCore/QtGlobal>

namespace ko::exporter
{

// While any object of this class lives, on any thread, a wish that the program
// end (SIGINT, SIGTERM, SIGHUP) is not heard where it would end the program at
// once; a handler that the program has set is not touched.
class SignalPause
{
public:
    SignalPause();
    ~SignalPause();

private:
    Q_DISABLE_COPY(SignalPause)
};

} // namespace ko::exporter
