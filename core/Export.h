#pragma once

#include <QtCore/qglobal.h>

// Symbols of the library are hidden unless they carry this macro.
#ifdef KORVELCORE_LIBRARY
#define KORVELCORE_EXPORT Q_DECL_EXPORT
#else
#define KORVELCORE_EXPORT Q_DECL_IMPORT
#endif
