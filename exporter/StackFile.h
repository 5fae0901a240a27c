#pragma once

#include "exporter/Failure.h"

#include <QtCore/QJsonArray>
#include <QtCore/QString>

namespace ko::exporter
{

// A stack of effects as it lies on the disk: a file with one JSON array.
class StackFile
{
public:
    explicit StackFile(const QString &path);

    Outcome read();

    // Empty before read().
    QJsonArray array() const { return m_array; }

private:
    const QString m_path;
    QJsonArray m_array;
};

} // namespace ko::exporter
