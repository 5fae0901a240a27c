#pragma once

#include "core/Export.h"

// Registers RenderScope under `uri`, version 1.0. A QML plug-in, or an application without one,
// calls it before it loads QML that imports `uri`.
extern "C" KORVELCORE_EXPORT void korvelcore_register_qml(const char *uri);
