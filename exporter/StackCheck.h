#pragma once

#include "exporter/EffectCatalogue.h"
#include "exporter/JsonText.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <memory>

namespace ko::imagefx
{
class EffectRegistry;
}

namespace ko::exporter
{

struct StackMistake {
    // As "$[2].alphaMask.gradientStops[0].value"; "$" is the stack.
    QString path;
    // In the file: the byte, and where that is.
    int offset = 0;
    TextPlace place;
    // One sentence without a full stop.
    QString message;
};

// Tells everything in a stack that would be left out or read differently, by the same objects that
// read it. Renders nothing and needs no OpenGL.
class StackCheck
{
public:
    // `folder`: that of the stack's file, for relative tables.
    explicit StackCheck(const QString &folder);
    ~StackCheck();

    // For the text of a stack that StackFile has read. In the order of the text.
    QVector<StackMistake> check(const QByteArray &text);

private:
    Q_DISABLE_COPY(StackCheck)

    void checkEffects(const JsonNode &array, const QString &path);
    void checkEffect(const JsonNode &node, const QString &path);
    void checkMask(const JsonNode &node, const QString &path);
    void checkStops(const JsonNode &array, const QString &path);
    QString idOf(const JsonNode &object, const char *key, const QString &path,
                 const QStringList &known);
    void checkMembers(const JsonNode &object, QObject *target, const char *idKey,
                      const QString &path);
    void checkMember(const JsonNode &member, QObject *target, const QMetaProperty &property,
                     const QString &path);
    void checkNumber(const JsonNode &member, QObject *target, const QMetaProperty &property,
                     const QString &path);
    void checkEnumerator(const JsonNode &member, const QMetaProperty &property,
                         const QString &path);
    void checkTable(const JsonNode &member, QObject *target, const QString &path);
    void report(const QString &path, int offset, const QString &message);
    void placeMistakes();

    const QString m_folder;
    const std::unique_ptr<const imagefx::EffectRegistry> m_registry;
    QByteArray m_text;
    QVector<StackMistake> m_mistakes;
};

} // namespace ko::exporter
