#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace ko::exporter
{

// Writes "korvel-image-exporter: TEXT" to the process's own standard error, past any ErrorCapture.
// Control characters become blanks, so it is always one line.
void reportLine(const QString &text);

// Takes in what libraries print to standard error while it lives, since codecs and drivers report
// damage in no other way and a caller of the program expects our own words only. Process-wide and
// not to be nested. Where it cannot work nothing is captured, and the text goes where it would have
// gone.
class ErrorCapture
{
public:
    ErrorCapture();
    ~ErrorCapture();

    // What was printed since the beginning.
    QByteArray text() const;

private:
    Q_DISABLE_COPY(ErrorCapture)

    int m_sink = -1;
};

} // namespace ko::exporter
