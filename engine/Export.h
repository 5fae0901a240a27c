#pragma once

#include <QtCore/qglobal.h>

// Symbols of the library are hidden unless they carry this macro.
#ifdef KORVELIMAGEENGINE_LIBRARY
#define KORVELIMAGEENGINE_EXPORT Q_DECL_EXPORT
#else
#define KORVELIMAGEENGINE_EXPORT Q_DECL_IMPORT
#endif
