#pragma once

#include <QtCore/QJsonArray>
#include <QtCore/QList>
#include <QtCore/QStringList>

namespace ko::imagefx
{
class ImageEffect;
}

namespace ko::exporter
{

// Owner of a stack of effects, of those nested in batches, and of all their masks, which effects do
// not own. Its effects hold GL
// objects once they were brought to rest: it must then be destroyed while that context is current.
class EffectStack
{
public:
    EffectStack() = default;
    ~EffectStack();

    // Reads every kind of effect that the library has; to be called once. What cannot be drawn is
    // left out: elements that are no objects, ids that no class has, blend modes that do not exist,
    // lookup tables that cannot be loaded.
    void read(const QJsonArray &array);
    // One entry for each thing that read() left out, without the file's name.
    QStringList complaints() const { return m_complaints; }

    bool isEmpty() const { return m_effects.isEmpty(); }
    // Brings the state of every effect to rest, as after some frames on a screen, and returns those
    // that show: a live item draws no others. Needs a current GL context; the stack keeps the
    // effects.
    QList<imagefx::ImageEffect *> visibleEffects() const;

private:
    Q_DISABLE_COPY(EffectStack)

    QJsonArray drawableElements(const QJsonArray &array, const QString &parent);
    void checkLookupTables(const QList<imagefx::ImageEffect *> &effects);

    QList<imagefx::ImageEffect *> m_effects;
    QStringList m_complaints;
};

} // namespace ko::exporter
