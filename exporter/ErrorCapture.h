#pragma once

#include <QtCore/QString>

namespace ko::exporter
{

// Writes "korvel-image-exporter: TEXT" to the process's own standard error,
// past any ErrorCapture. Control characters become blanks, so it is always one
// line. Safe from any thread.
void reportLine(const QString &text);

// Keeps what libraries print to standard error from it while any object of this
// class lives, since a caller of the program expects our own words only.
// Process-wide; objects may live on several threads at once. Where it cannot
// work the text goes where it would have gone.
class ErrorCapture
{
public:
    ErrorCapture();
    ~ErrorCapture();

private:
    Q_DISABLE_COPY(ErrorCapture)
};

} // namespace ko::exporter
