#pragma once

#include <QtCore/QJsonArray>
#include <QtCore/QList>
#include <QtCore/QStringList>

namespace ko::imagefx
{
class EffectRegistry;
class ImageEffect;
} // namespace ko::imagefx

namespace ko::exporter
{

// Owner of a stack of effects, of those nested in batches, and of all their
// masks, which effects do not own. Its effects hold GL objects once they were
// brought to rest: it must then be destroyed while that context is current.
class EffectStack
{
public:
    EffectStack() = default;
    ~EffectStack();

    // Reads every kind of effect that the library has; to be called once. What
    // cannot be drawn is left out: elements that are no objects, ids that no
    // class has, blend modes that do not exist, lookup tables that cannot be
    // loaded. Relative URLs of tables are taken relative to `folder`, that of the
    // stack's file.
    void read(const QJsonArray &array, const QString &folder);
    // The same with other kinds of effects.
    void read(const QJsonArray &array, const QString &folder,
              const imagefx::EffectRegistry &registry);
    // One entry for each thing that read() left out, without the file's name.
    QStringList complaints() const { return m_complaints; }

    bool isEmpty() const { return m_effects.isEmpty(); }
    // Those effects that show once their states are at rest, as after some
    // frames on a screen: a live item draws no others. The stack keeps them.
    QList<imagefx::ImageEffect *> visibleEffects() const;
    // Brings the state of every effect to rest, for those who draw with the
    // states. Needs a current GL context.
    void bringToRest() const;

private:
    Q_DISABLE_COPY(EffectStack)

    QJsonArray drawableElements(const QJsonArray &array, const QString &parent);
    void checkLookupTables(const QList<imagefx::ImageEffect *> &effects);

    QString m_folder;
    QList<imagefx::ImageEffect *> m_effects;
    QStringList m_complaints;
};

} // namespace ko::exporter
