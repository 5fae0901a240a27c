#pragma once

#include <QtCore/qglobal.h>

// Symbols of the library are hidden unless they carry this macro.
#ifdef KORVELIMAGEFX_LIBRARY
#define KORVELIMAGEFX_EXPORT Q_DECL_EXPORT
#else
#define KORVELIMAGEFX_EXPORT Q_DECL_IMPORT
#endif
