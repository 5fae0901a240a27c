#pragma once

#include <QtCore/QLoggingCategory>

namespace ko::imagefx
{

// "korvel.imageeffect": what went wrong while tables are loaded and pictures exported.
Q_DECLARE_LOGGING_CATEGORY(lcImageEffect)
// "korvel.imageeffect.time": how long the passes of a frame took; debug messages, off by default.
Q_DECLARE_LOGGING_CATEGORY(lcImageEffectTime)

} // namespace ko::imagefx
