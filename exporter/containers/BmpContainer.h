#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QSize>

namespace ko::exporter
{

// Of the picture, as the header tells, which the decoder only does with all the pixels at hand;
// empty where the header is too short.
QSize bmpSize(const QByteArray &file);
// True when the file ends before its pixels do. The decoder does not tell: it leaves the rest
// black.
bool isTruncatedBmp(const QByteArray &file);

} // namespace ko::exporter
