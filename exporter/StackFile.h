#pragma once

#include "exporter/Failure.h"

#include <QtCore/QByteArray>
#include <QtCore/QJsonArray>
#include <QtCore/QString>

namespace ko::exporter
{

// A stack of effects as it lies on the disk: a file with one JSON array. A pipe will do, as that of
// a shell's process substitution.
//
// Whatever the file holds, reading it takes bounded time and memory: it is refused beyond the
// limits here, none of which a stack that someone made comes near.
class StackFile
{
public:
    static constexpr int largestFile = 64 * 1024 * 1024;
    // Arrays and objects inside each other: 15 batches deep.
    static constexpr int deepestNesting = 32;
    // Keys, numbers, texts, and so on, all together.
    static constexpr int mostValues = 100000;
    // Those inside batches, too.
    static constexpr int mostEffects = 1000;

    explicit StackFile(const QString &path);

    Outcome read();

    // Empty before read().
    QJsonArray array() const { return m_array; }
    // The file itself, as far as it was read.
    QByteArray text() const { return m_text; }
    // The byte of the file that read() stumbled over; -1 when it is not about one.
    int mistakeOffset() const { return m_mistakeOffset; }

private:
    Outcome readText();
    Outcome checkShape() const;
    Failure unreadable(const QString &reason) const;
    Failure tooLarge(const QString &reason) const;

    const QString m_path;
    QByteArray m_text;
    QJsonArray m_array;
    int m_mistakeOffset = -1;
};

} // namespace ko::exporter
