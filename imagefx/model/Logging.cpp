#include "imagefx/model/Logging.h"

namespace ko::imagefx
{

Q_LOGGING_CATEGORY(lcImageEffect, "korvel.imageeffect", QtWarningMsg)
Q_LOGGING_CATEGORY(lcImageEffectTime, "korvel.imageeffect.time", QtWarningMsg)

} // namespace ko::imagefx
