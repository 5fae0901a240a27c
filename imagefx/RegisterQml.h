#pragma once

#include "imagefx/Export.h"

// Registers the QML types of the library under `uri`, version 1.0. A QML plug-in, or an application
// without one, calls it before it loads QML that imports `uri`.
extern "C" KORVELIMAGEFX_EXPORT void imagefx_register_qml(const char *uri);
