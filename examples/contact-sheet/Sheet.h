#pragma once

#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtGui/QImage>

namespace ko::contactsheet
{

// One look on all photographs, in the same order and sizes in every strip.
struct Strip {
    QString label;
    QVector<QImage> pictures;
};

struct Column {
    QString heading;
    QVector<Strip> strips;
};

// The columns side by side on neutral grey, below each heading the captions of the photographs. All
// strips hold as many pictures as there are captions; there is at least one column with a strip.
QImage drawSheet(const QStringList &captions, const QVector<Column> &columns);

} // namespace ko::contactsheet
