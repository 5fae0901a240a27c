#pragma once

#include "imagefx/render/ImageEffectPass.h"

#include <QtCore/QHash>
#include <QtCore/QMutex>
#include <QtCore/QPair>
#include <QtCore/QSet>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <list>

class QOpenGLContext;

namespace ko::imagefx
{

// The compiled passes of the process, by variant key. It holds the 50 passes used last; one that
// falls off lives on as long as a state or a frame holds it, and is found again meanwhile. A pass
// is found only from the context it was created in and is dropped when that context is about to be
// destroyed, so two render threads never share a program. Any thread; find() and insert() need a
// current GL context.
class PassCache
{
public:
    static constexpr std::size_t capacity = 50;

    static PassCache &instance();

    // The live pass under `key`, which becomes the one used last; null when there is none.
    QSharedPointer<ImageEffectPass> find(const QString &key);
    // Replaces an older pass under the same key.
    void insert(const QString &key, const QSharedPointer<ImageEffectPass> &pass);

private:
    using Key = QPair<const QOpenGLContext *, QString>;
    struct Entry {
        const QOpenGLContext *context;
        QSharedPointer<ImageEffectPass> pass;
    };

    void watch(QOpenGLContext *context);
    void forget(const QOpenGLContext *context);

    QMutex m_mutex; // guards what follows
    QHash<Key, QWeakPointer<ImageEffectPass>> m_index;
    std::list<Entry> m_recent; // newest first
    QSet<const QOpenGLContext *> m_watched;
};

} // namespace ko::imagefx
