#pragma once

#include <QtCore/qglobal.h>

#include <array>

namespace ko::imagefx
{

// For every input level the level that a control of the exposure effect makes of it at full
// strength.
using ToneTable = std::array<uchar, 256>;

extern const ToneTable exposureUp;
extern const ToneTable exposureDown;
extern const ToneTable shadowsUp;
extern const ToneTable shadowsDown;
extern const ToneTable highlightsUp;
extern const ToneTable highlightsDown; // ends at 235: it takes white down

} // namespace ko::imagefx
