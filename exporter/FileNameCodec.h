#pragma once

namespace ko::exporter
{

// Makes file names and arguments as QString lossless, whatever the locale: UTF-8 reads as usual,
// and every byte that is not UTF-8 becomes the lone surrogate U+DC00 + byte, which is written as
// that byte again. From then on QFile, QDir, QFileInfo, QSaveFile, QFile::encodeName() and
// QFile::decodeName(), and the local 8-bit text of QString all take any name that a Linux file can
// have; JSON text of Qt's has the lone surrogate as an escape, as \udcff. QUrl does not keep them.
//
// To be called once, before any other thread and before any name is read.
void useLosslessFileNames();

} // namespace ko::exporter
