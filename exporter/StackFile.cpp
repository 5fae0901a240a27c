#include "exporter/StackFile.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>

namespace ko::exporter
{

StackFile::StackFile(const QString &path) : m_path(path) {}

Outcome StackFile::read()
{
    if (QFileInfo(m_path).isDir()) {
        return Failure{ExitCode::EffectsUnreadable,
                       QStringLiteral("the effects file %1 is a folder").arg(m_path)};
    }
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly)) {
        return Failure{ExitCode::EffectsUnreadable,
                       QStringLiteral("the effects file %1 cannot be read: %2")
                           .arg(m_path, file.errorString())};
    }
    const QByteArray text = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return Failure{ExitCode::EffectsUnreadable,
                       QStringLiteral("the effects file %1 cannot be read: %2")
                           .arg(m_path, file.errorString())};
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError) {
        return Failure{ExitCode::EffectsInvalid,
                       QStringLiteral("the effects file %1 is not valid JSON: %2 at byte %3")
                           .arg(m_path, error.errorString(), QString::number(error.offset))};
    }
    if (!document.isArray()) {
        return Failure{
            ExitCode::EffectsInvalid,
            QStringLiteral("the effects file %1 is not a JSON array of effects").arg(m_path)};
    }
    m_array = document.array();
    return {};
}

} // namespace ko::exporter
