#pragma once

#include "exporter/folder/Tally.h"

#include <QtCore/QByteArray>

namespace ko::exporter
{

// The bar, the counts, the rate and the time left, in ASCII and at most `width` columns; what does
// not fit is left out, the least important first. `seconds`: since the first picture began.
QByteArray progressText(const Tally &tally, double seconds, int width);

// One line on standard error, drawn over itself, so that it does not flicker.
class ProgressBar
{
public:
    // Keeps the standard error of now, which may be redirected later for what libraries print.
    ProgressBar();
    ~ProgressBar();

    // In the terminal's present width; less its last column, where some terminals break the line.
    void draw(const Tally &tally, double seconds);
    // Leaves the cursor at the start of an empty line, for other text.
    void clear();

    // Whether standard error is a terminal that can draw it.
    static bool isUseful();

private:
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    void write(const QByteArray &text) const;

    const int m_output;
    QByteArray m_shown;
};

} // namespace ko::exporter
