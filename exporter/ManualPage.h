#pragma once

#include <QtCore/QByteArray>

namespace ko::exporter
{

// The manual page in roff, from the texts of --help. `date` stands in its foot, as 2024-05-31.
QByteArray manualPage(const QByteArray &version, const QByteArray &date);

} // namespace ko::exporter
